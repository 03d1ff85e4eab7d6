#include <gtest/gtest.h>

#include <filesystem>

#include "fastcgi_client.h"
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
    std::string Ask(std::string const &path, std::string const &body = "") const {
        Client client(path_);
        client.Send(Request(path, body));
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

TEST_F(FastcgiFront, AnswersAsCgi) {
    RunningService const service(settings_);
    EXPECT_EQ(Ask("/pages/hello"), headers + std::string("hello"));
    EXPECT_EQ(Ask("/pages/big"), headers + std::string(30000, 'x'));
    EXPECT_EQ(Ask("/pages/echo", "a=1&b=2"), headers + std::string("post a=1\npost b=2\nraw 7\n"));
    EXPECT_EQ(Ask("/status/x"), headers + std::string("status /x 1"));
    EXPECT_EQ(Ask("/nowhere").substr(0, 19), "Connection: close\r\n");
    EXPECT_NE(Ask("/pages/redirect").find("Location: /elsewhere\r\nStatus: 302 Found\r\n"),
              std::string::npos);
}

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

TEST_F(FastcgiFront, RefusesABodyThatIsCutShort) {
    RunningService const service(settings_);
    Client client(path_);
    client.Send(fastcgi::Request({{"PATH_INFO", "/pages/echo"}, {"CONTENT_LENGTH", "10"}}, "abc", false));
    EXPECT_NE(client.ReadAll().find("Status: 400 Bad Request"), std::string::npos);
}

}  // namespace
