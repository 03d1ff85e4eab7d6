#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include "running_service.h"

namespace {

class HttpFront : public testing::Test {
  protected:
    int const port_ = FreePort();
    cppcms::json::value settings_ = HttpSettings(port_);
    LogLines log_;

    std::string Post(std::string const &target, std::string const &type, std::string const &body) const {
        return Ask(port_, "POST " + target + " HTTP/1.1\r\nContent-Type: " + type +
                              "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    }
};

constexpr char error_page_headers[] =
    "Content-Type: text/html; charset=utf-8\r\nX-Powered-By: CppCMS/2.0.1\r\n\r\n<!DOCTYPE HTML PUBLIC";

TEST_F(HttpFront, AnswersPages) {
    settings_.set("security.display_error_message", false);
    RunningService const service(settings_);
    struct {
        char const *target;
        char const *begin;  // of the answer
        char const *part;
    } const cases[] = {
        {"/pages/hello",
         "HTTP/1.1 200 Ok\r\nServer: CppCMS-Embedded/2.0.1\r\nConnection: close\r\nContent-Length: 5\r\n",
         "X-Powered-By: CppCMS/2.0.1\r\n\r\nhello"},
        {"/pages/redirect", "HTTP/1.1 302 Found\r\n", "Location: /elsewhere\r\n"},
        {"/pages/fail", "HTTP/1.1 500 Internal Server Error\r\n", error_page_headers},
        {"/pages/fail_late", "HTTP/1.1 200 Ok\r\n", "\r\n\r\nbegun"},
        {"/pages/none", "HTTP/1.1 404 Not Found\r\n", error_page_headers},
        {"/status/x", "HTTP/1.1 200 Ok\r\n", "\r\n\r\nstatus /x 1"},
        {"/nowhere", "HTTP/1.1 404 Not Found\r\n", "Connection: close\r\nContent-Length: 233\r\n"},
    };
    for (auto const &c : cases) {
        std::string const answer = Get(port_, c.target);
        EXPECT_EQ(answer.substr(0, std::string_view(c.begin).size()), c.begin) << c.target;
        EXPECT_NE(answer.find(c.part), std::string::npos) << c.target << '\n' << answer;
        EXPECT_EQ(answer.find("it failed"), std::string::npos) << "details are not for everybody";
    }
    EXPECT_TRUE(log_.Contains("Caught exception [it failed]\n"));
}

TEST_F(HttpFront, GivesEveryAnswerTheConfiguredHeadersAndReadsNoBodyOfARefusedRequest) {
    cppcms::json::object headers;
    headers["X-Frame-Options"] = "DENY";
    headers["Server"] = headers["X-Powered-By"] = "";
    settings_.set("http.headers", headers);
    settings_.set("http.hosts", std::vector<std::string>());
    RunningService const service(settings_);
    std::pair<char const *, char const *> const cases[] = {
        {"200", "GET /status/x HTTP/1.0\r\n\r\n"},
        {"400", "GET http://evil/pages/hello HTTP/1.1\r\n\r\n"},
        {"411", "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n"},
        {"421", "POST / HTTP/1.1\r\nContent-Length: 9\r\nHost: ::1\r\nHost: evil\r\n\r\n"},
        {"500", "GET /pages/fail HTTP/1.1\r\n\r\n"},
    };
    for (auto const &[status, request] : cases) {
        std::string const answer = Ask(port_, request);
        EXPECT_EQ(answer.substr(8, 5), std::string(" ") + status + ' ') << request << answer;
        EXPECT_NE(answer.find("\r\nX-Frame-Options: DENY\r\n"), std::string::npos) << request << answer;
        EXPECT_EQ(answer.find("CppCMS"), std::string::npos) << request << answer;
    }
}

TEST_F(HttpFront, GivesVariables) {
    settings_.set("http.script_names", std::vector<std::string>{"/app", "/stat"});
    RunningService const service(settings_);
    std::string const answer =
        Get(port_, "/app/pages/%76ariables+?a=%20&b", "X-Some: 1\r\nCookie: a\r\nCookie: b\r\nX-Some: 2\r\n");
    for (char const *line :
         {"\nSCRIPT_NAME=/app\n", "\nPATH_INFO=/pages/variables+\n", "\nQUERY_STRING=a=%20&b\n",
          "\nHTTP_X_SOME=1, 2\n", "\nHTTP_COOKIE=a; b\n", "\nREQUEST_METHOD=GET\n",
          "\nREMOTE_ADDR=127.0.0.1\n", "\nSERVER_PROTOCOL=HTTP/1.1\n"})
        EXPECT_NE(answer.find(line), std::string::npos) << line << answer;
    EXPECT_NE(Get(port_, "/status/x").find("status /x"), std::string::npos) << "no part of the path is /stat";
}

TEST_F(HttpFront, TellsWhereAnAnswerEnds) {
    RunningService const service(settings_);
    std::string const body(30000, 'x');
    std::string const closed = Get(port_, "/pages/big");
    EXPECT_EQ(closed.find("Content-Length"), std::string::npos);
    EXPECT_TRUE(closed.ends_with("\r\n\r\n" + body));

    Client client(port_);
    for (int i = 0; i < 3; ++i) {
        client.Send("GET /pages/big HTTP/1.1\r\nConnection: keep-alive\r\n\r\n");
        std::string const chunked = client.ReadUntil("\r\n0\r\n\r\n");
        EXPECT_NE(chunked.find("Transfer-Encoding: chunked\r\n"), std::string::npos);
        EXPECT_NE(chunked.find("\r\n\r\n4000\r\nx"), std::string::npos);
    }
    client.Send(
        "GET /pages/hello HTTP/1.0\r\nConnection: keep-alive\r\n\r\nGET /pages/text HTTP/1.0\r\n\r\n");
    std::string const pipelined = client.ReadAll();
    EXPECT_NE(pipelined.find("hello"), std::string::npos);
    EXPECT_TRUE(pipelined.ends_with(std::string(5000, 't'))) << "sent at once with the request before it";
}

TEST_F(HttpFront, CompressesTextWhereTheClientTakesIt) {
    RunningService const service(settings_);
    std::string const packed = Get(port_, "/pages/big", "Accept-Encoding: deflate, gzip\r\n");
    EXPECT_NE(packed.find("Content-Encoding: gzip\r\n"), std::string::npos);
    EXPECT_LT(packed.size(), 1000u);
    EXPECT_EQ(Get(port_, "/status/x", "Accept-Encoding: gzip\r\n").find("gzip"), std::string::npos);
    EXPECT_EQ(Get(port_, "/pages/image", "Accept-Encoding: gzip\r\n").find("gzip"), std::string::npos);
    EXPECT_EQ(Get(port_, "/pages/big").find("gzip"), std::string::npos);
}

TEST_F(HttpFront, RefusesBadBodiesWithoutTheApplication) {
    settings_.set("security.content_length_limit", 1);
    settings_.set("security.multipart_form_data_limit", 4);
    RunningService const service(settings_);
    std::string const form = "application/x-www-form-urlencoded";
    std::string const multipart = "multipart/form-data; boundary=B";
    std::string const head = "--B\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n";
    std::string const file_head =
        "--B\r\nContent-Disposition: form-data; name=\"a\"\r\nContent-Type: a/b\r\n\r\n";
    std::string const end = "\r\n--B--\r\n";
    struct {
        char const *name;
        std::string type;
        std::string body;
        char const *status;
        char const *log;
    } const cases[] = {
        {"at the limit", form, "a=" + std::string(1022, 'x'), "200", ""},
        {"over the limit", form, "a=" + std::string(1023, 'x'), "413", "too large"},
        {"multipart over the limit", multipart, std::string(5000, 'x'), "413", "too large"},
        {"field over the limit", multipart, head + std::string(1025, 'x') + end, "413",
         "fields are too large"},
        {"file of that size", multipart, file_head + std::string(1025, 'x') + end, "200", ""},
        {"no boundary", "multipart/form-data", head + end, "400", "no usable boundary"},
        {"no line end", multipart, head + "x\r\n--B--", "400", "the last boundary is missing"},
    };
    for (auto const &c : cases) {
        std::string const answer = Post("/pages/echo", c.type, c.body);
        EXPECT_EQ(answer.substr(0, 12), std::string("HTTP/1.1 ") + c.status) << c.name << '\n' << answer;
        EXPECT_TRUE(!*c.log || log_.Contains(c.log)) << c.name;
    }
}

TEST_F(HttpFront, LimitsFieldsAndAnswersBeforeAnOversizedBodyHasCome) {
    RunningService const service(settings_);
    std::string many;
    for (int i = 0; i < 10001; ++i)
        many += "a=&";
    EXPECT_EQ(Post("/pages/echo", "application/x-www-form-urlencoded", many).substr(0, 12), "HTTP/1.1 413");
    EXPECT_EQ(Get(port_, "/pages/echo?" + many).substr(0, 12), "HTTP/1.1 400");
    EXPECT_EQ(Ask(port_, "POST /pages/echo HTTP/1.1\r\nContent-Length: 100000000\r\n\r\n").substr(0, 12),
              "HTTP/1.1 413");
}

TEST_F(HttpFront, StreamsLargeFilesToDiskAndRefusesWhatItCannotStore) {
    auto const directory =
        std::filesystem::path(testing::TempDir()) / ("uploads-" + std::to_string(getpid()));
    std::filesystem::create_directory(directory);
    settings_.set("security.uploads_path", directory.string());
    settings_.set("security.file_in_memory_limit", 1000);
    std::string content;
    while (content.size() < 3 << 20)
        content += std::string(59, 'x') + "\r\n--C";
    auto const upload = [&] {
        return Post("/pages/echo", "multipart/form-data; boundary=B",
                    "--B\r\nContent-Disposition: form-data; name=\"f\"; filename=\"big\"\r\n"
                    "Content-Type: application/octet-stream\r\n\r\n" +
                        content + "\r\n--B--\r\n");
    };
    std::ofstream(directory / "cppcms_uploads_0123456789abcdef0123456789abcdef.tmp")
        << "left by a process that was killed";
    {
        RunningService const service(settings_);
        EXPECT_NE(upload().find("file f big " + std::to_string(content.size()) + '\n'), std::string::npos);
    }
    EXPECT_TRUE(std::filesystem::is_empty(directory));
    std::filesystem::remove(directory);
    RunningService const service(settings_);
    EXPECT_EQ(upload().substr(0, 12), "HTTP/1.1 413");
    EXPECT_TRUE(log_.Contains("no room for an uploaded file"));
}

TEST_F(HttpFront, SurvivesGarbage) {
    RunningService const service(settings_);
    for (std::string const &bytes :
         {std::string("\0\1\2\xff garbage\r\n\r\n", 16), std::string("GET\r\n\r\n"),
          std::string("GET x HTTP/1.1\r\n\r\n"), std::string("GET http://a/b HTTP/1.1\r\n\r\n"),
          std::string("GET / HTTP/9.9\r\n\r\n"), std::string("GET / HTTP/1.1\r\nno colon\r\n\r\n"),
          std::string("POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n"),
          std::string("POST / HTTP/1.1\r\nContent-Length: 99999999999999999999999\r\n\r\n"),
          "GET / HTTP/1.1\r\nX: " + std::string(70000, 'x') + "\r\n\r\n"})
        EXPECT_TRUE(Ask(port_, bytes).starts_with("HTTP/1.0 400 Bad Request\r\n\r\n")) << bytes.substr(0, 40);
    EXPECT_TRUE(Ask(port_, "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n")
                    .starts_with("HTTP/1.0 411"));
    EXPECT_NE(Get(port_, "/pages/hello", "X: " + std::string(20000, 'x') + "\r\n").find("hello"),
              std::string::npos);
    EXPECT_TRUE(log_.Contains("HTTP request refused"));
}

TEST_F(HttpFront, KeepsNoThreadForClientsWhoseRequestHasNotCome) {
    auto service = std::make_unique<RunningService>(settings_);
    constexpr std::array begun{"", "GET /pages/hello HT",
                               "POST /pages/echo HTTP/1.1\r\nContent-Length: 9\r\n\r\na"};
    std::vector<std::unique_ptr<Client>> slow;
    for (int i = 0; i < 40; ++i) {
        slow.push_back(std::make_unique<Client>(port_));
        slow.back()->Send(begun.at(i % 3));
    }
    EXPECT_NE(Get(port_, "/pages/hello").find("hello"), std::string::npos);
    slow[1]->Send("TP/1.1\r\n\r\n");
    EXPECT_NE(slow[1]->ReadAll().find("hello"), std::string::npos) << "whenever the rest comes";
    slow[2]->Send("bcdef");
    slow.erase(slow.begin() + 6, slow.end());  // the last one's body never comes
    auto const stop = std::chrono::steady_clock::now();
    auto stopped = std::async(std::launch::async, [&] { service.reset(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    slow[2]->Send("ghi");
    EXPECT_NE(slow[2]->ReadAll().find("raw 9"), std::string::npos) << "also when the service stops meanwhile";
    stopped.wait();
    EXPECT_LT(std::chrono::steady_clock::now() - stop, std::chrono::seconds(6))
        << "the others are not waited for";
}

TEST_F(HttpFront, AnswersAtItsEndWhomItHadLetIn) {
    auto service = std::make_unique<RunningService>(settings_);
    Client silent(port_);
    Client begun(port_);
    begun.Send("GET /pages/hello HT");
    EXPECT_NE(Get(port_, "/pages/hello").find("hello"), std::string::npos) << "behind the other two";
    auto stopped = std::async(std::launch::async, [&] { service.reset(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    silent.Send("GET /pages/hello HTTP/1.1\r\n\r\n");
    begun.Send("TP/1.1\r\n\r\n");
    EXPECT_NE(silent.ReadAll().find("hello"), std::string::npos);
    EXPECT_NE(begun.ReadAll().find("hello"), std::string::npos);
}

TEST_F(HttpFront, BoundsTheTimeOfABodyAndHowManyLargeOnesComeAtOnce) {
    settings_.set("http.body_seconds", 1);
    settings_.set("http.large_body", 2);
    settings_.set("http.large_bodies", 1);
    RunningService const service(settings_);
    auto const post = [](int size) {
        return "POST /pages/echo HTTP/1.1\r\nContent-Length: " + std::to_string(size) + "\r\n\r\n";
    };
    Client dripping(port_);
    Client first(port_);
    dripping.Send(post(1000));
    first.Send(post(4096) + std::string(4000, 'x'));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    std::string const refused = Ask(port_, post(2048));
    EXPECT_EQ(refused.substr(0, 12), "HTTP/1.1 503");
    EXPECT_NE(refused.find("Retry-After: 30\r\n"), std::string::npos);
    EXPECT_NE(Ask(port_, post(2047) + std::string(2047, 'x')).find("raw 2047"), std::string::npos);
    for (int i = 0; i < 12; ++i) {
        dripping.Send("x");
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    EXPECT_EQ(dripping.ReadAll().substr(0, 12), "HTTP/1.1 408");
    first.Send(std::string(96, 'x'));
    EXPECT_NE(first.ReadAll().find("raw 4096"), std::string::npos) << "more time for more bytes";
    EXPECT_NE(Ask(port_, post(2048) + std::string(2048, 'x')).find("raw 2048"), std::string::npos);
}

TEST_F(HttpFront, DropsClientsThatStaySilent) {
    settings_.set("http.timeout", 1);
    RunningService const service(settings_);
    Client silent(port_);
    Client stalled(port_);
    stalled.Send("POST /pages/echo HTTP/1.1\r\nContent-Length: 10\r\n\r\nabc");
    EXPECT_EQ(stalled.ReadAll().substr(0, 12), "HTTP/1.1 400");
    auto const begin = std::chrono::steady_clock::now();
    EXPECT_EQ(silent.ReadAll(), "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(HttpFront, ServesStatusCallsOneAtATimeBesidesThePages) {
    RunningService service(settings_);
    std::vector<std::future<std::string>> calls;
    calls.reserve(4);
    for (int i = 0; i < 4; ++i)
        calls.push_back(std::async(std::launch::async, [this] { return Get(port_, "/status/slow"); }));
    while (service.counters.status_calls == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    for (int i = 0; i < 10; ++i)
        EXPECT_NE(Get(port_, "/pages/hello").find("hello"), std::string::npos);
    EXPECT_LT(service.counters.status_calls, 3) << "pages wait for no status call";
    for (auto &call : calls)
        EXPECT_NE(call.get().find("status /slow 1"), std::string::npos);
    EXPECT_EQ(service.counters.most_status_calls_at_once, 1);
}

}  // namespace
