#include <gtest/gtest.h>

#include <filesystem>

#include "fastcgi_client.h"
#include "fronts/fastcgi_head.h"
#include "running_service.h"

namespace {

class FastcgiFront : public testing::Test {
  protected:
    void SetUp() override {
        settings_ = HttpSettings(0);
        settings_.set("service", cppcms::json::value());
        settings_.set("service.api", "fastcgi");
        settings_.set("service.socket", path_);
        settings_.set("service.worker_threads", 3);
    }
    void TearDown() override { std::filesystem::remove(path_); }

    static std::string Request(std::string const &path, std::string const &body = "", bool keep = false) {
        return fastcgi::Request({{"REQUEST_METHOD", body.empty() ? "GET" : "POST"},
                                 {"PATH_INFO", path},
                                 {"CONTENT_TYPE", "application/x-www-form-urlencoded"},
                                 {"CONTENT_LENGTH", std::to_string(body.size())}},
                                body, keep);
    }
    std::string Ask(std::string const &path) const {
        Client client(path_);
        client.Send(Request(path));
        std::string bytes = client.ReadAll();
        auto const answer = fastcgi::TakeAnswer(bytes);
        EXPECT_TRUE(answer.ended) << path;
        EXPECT_EQ(bytes, "");
        return answer.output;
    }

    std::string const path_ =
        std::filesystem::path(testing::TempDir()) / ("fastcgi-" + std::to_string(getpid()) + ".sock");
    cppcms::json::value settings_;
    LogLines log_;
};

constexpr char headers[] = "Content-Type: text/html; charset=utf-8\r\nX-Powered-By: CppCMS/2.0.1\r\n\r\n";

TEST_F(FastcgiFront, KeepsConnectionsWhereAsked) {
    RunningService const service(settings_);
    Client client(path_);
    for (char const *path : {"/pages/hello", "/status/y", "/pages/echo"}) {
        client.Send(Request(path, std::string(path) == "/pages/echo" ? "a=1" : "", true));
        std::string bytes = client.ReadUntil(fastcgi::Record(fastcgi::end_request, std::string(8, '\0')));
        auto const answer = fastcgi::TakeAnswer(bytes);
        EXPECT_TRUE(answer.ended) << path;
        EXPECT_TRUE(answer.output.starts_with(headers)) << path;
    }
}

TEST_F(FastcgiFront, DropsWhatIsNoRequest) {
    RunningService const service(settings_);
    std::pair<std::string, char const *> const cases[] = {
        {"garbage garbage garbage", "malformed records"},
        {Request("/" + std::string(17000, 'x')), "too many variables"},
    };
    for (auto const &[bytes, line] : cases) {
        Client client(path_);
        client.Send(bytes);
        EXPECT_EQ(client.ReadAll(), "") << line;
        EXPECT_TRUE(log_.Contains(line));
    }
    Client filter(path_);
    filter.Send(fastcgi::BeginRequest(false, 3) + fastcgi::Record(fastcgi::params, ""));
    std::string bytes = filter.ReadAll();
    EXPECT_EQ(fastcgi::TakeAnswer(bytes).protocol_status, 3);
    EXPECT_EQ(Ask("/pages/hello"), headers + std::string("hello"));
}

TEST_F(FastcgiFront, AnswersAQuestionAboutItselfAndARequestThatComesInPieces) {
    RunningService const service(settings_);
    Client client(path_);
    std::string const sent = fastcgi::Record(fastcgi::get_values, fastcgi::Pair("FCGI_MPXS_CONNS", ""), 0) +
                             Request("/pages/echo", "a=1");
    for (std::size_t at = 0; at < sent.size(); at += 40) {
        client.Send(std::string_view(sent).substr(at, 40));
        std::this_thread::sleep_for(std::chrono::milliseconds(3));
    }
    std::string const answer = client.ReadAll();
    EXPECT_NE(answer.find(fastcgi::Pair("FCGI_MPXS_CONNS", "0")), std::string::npos);
    EXPECT_NE(answer.find("post a=1\n"), std::string::npos);
}

TEST_F(FastcgiFront, AnswersWhenTheEndOfTheBodyHasCome) {
    RunningService const service(settings_);
    std::string const end = fastcgi::Record(fastcgi::standard_input, "");
    Client client(path_);
    for (char const *body : {"", "a=1"}) {
        std::string const request = Request("/pages/echo", body, true);
        client.Send(std::string_view(request).substr(0, request.size() - end.size()));
        EXPECT_FALSE(client.ComesWithin(std::chrono::milliseconds(100))) << body;
        client.Send(end);
        client.ReadUntil(fastcgi::Record(fastcgi::end_request, std::string(8, '\0')));
    }
}

TEST_F(FastcgiFront, RefusesABodyThatIsCutShort) {
    RunningService const service(settings_);
    Client client(path_);
    client.Send(fastcgi::Request({{"PATH_INFO", "/pages/echo"}, {"CONTENT_LENGTH", "10"}}, "abc", false));
    EXPECT_NE(client.ReadAll().find("Status: 400 Bad Request"), std::string::npos);
}

using State = cppcms::impl::fastcgi_head::state;

State StateOf(std::string_view bytes) {
    return cppcms::impl::fastcgi_head().take(bytes);
}

TEST(FastcgiHead, IsCheckedBeforeItIsBelieved) {
    using namespace fastcgi;
    std::string const begin = BeginRequest(true);
    std::string const end = Record(params, "");
    std::string const pair = Pair("A", "b");
    std::string const long_pair = Pair("A", std::string(300, 'x'));
    std::string many;
    for (int i = 0; i < 3000; ++i)
        many += Record(params, Pair("A", "b"));
    struct {
        char const *name;
        std::string bytes;
        State state;
    } const cases[] = {
        {"usual", begin + Record(params, pair + long_pair) + end + Record(standard_input, ""),
         State::complete},
        {"a pair over two records",
         begin + Record(params, long_pair.substr(0, 50)) + Record(params, long_pair.substr(50)) + end,
         State::complete},
        {"question first", Record(get_values, Pair("FCGI_MPXS_CONNS", ""), 0) + begin + end, State::complete},
        {"nothing", "", State::incomplete},
        {"no end", begin + Record(params, pair), State::incomplete},
        {"half a record", begin.substr(0, 11), State::incomplete},
        {"wrong version", '\2' + begin.substr(1), State::malformed},
        {"variables without a beginning", Record(params, pair), State::malformed},
        {"begun twice", begin + begin, State::malformed},
        {"body before the end", begin + Record(standard_input, "x"), State::malformed},
        {"length beyond the records", begin + Record(params, std::string("\xff\xff\xff\xff\x01x", 6)) + end,
         State::malformed},
        {"cut length", begin + Record(params, std::string("\xff", 1)) + end, State::malformed},
        {"length beyond a question", Record(get_values, "\x7f\x7f", 0), State::malformed},
        {"filter", BeginRequest(true, 3), State::unknown_role},
        {"large variables", begin + Record(params, std::string(16385, 'x')), State::too_large},
        {"many small records", begin + many, State::too_large},
    };
    for (auto const &c : cases)
        EXPECT_EQ(StateOf(c.bytes), c.state) << c.name;
    std::string const head = begin + Record(params, pair) + end;
    for (std::size_t size = 0; size < head.size(); ++size)
        EXPECT_EQ(StateOf(std::string_view(head).substr(0, size)), State::incomplete) << size;
}

}  // namespace
