#include <arpa/inet.h>
#include <booster/intrusive_ptr.h>
#include <booster/log.h>
#include <cppcms/applications_pool.h>
#include <cppcms/json.h>
#include <cppcms/mount_point.h>
#include <cppcms/rpc_json.h>
#include <cppcms/service.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <sstream>
#include <thread>

#include "tests/unit/framework/fake_request.h"

namespace json = cppcms::json;
namespace rpc = cppcms::rpc;

namespace {

constexpr char json_type[] = "application/json; charset=utf-8";
constexpr char text_type[] = "text/plain; charset=utf-8";
constexpr char html_type[] = "text/html; charset=utf-8";

class Methods : public rpc::json_rpc_server {
  public:
    explicit Methods(cppcms::service &srv) : json_rpc_server(srv) {
        bind("none", rpc::json_method(&Methods::None, this), method_role);
        bind("one", rpc::json_method(&Methods::One, this), method_role);
        bind("four", rpc::json_method(&Methods::Four, this), method_role);
        bind("silent", rpc::json_method(&Methods::Silent, this), method_role);
        bind("twice", rpc::json_method(&Methods::Twice, this), method_role);
        bind("late failure", rpc::json_method(&Methods::LateFailure, this), method_role);
        bind("error", rpc::json_method(&Methods::Error, this), method_role);
        bind("refuse", rpc::json_method(&Methods::Refuse, this), method_role);
        bind("fail", rpc::json_method(&Methods::Fail, this));
        bind("undefined", rpc::json_method(&Methods::Undefined, this), method_role);
        bind("note", rpc::json_method(&Methods::Note, this), notification_role);
        bind("any", rpc::json_method(&Methods::None, this));
        bind("release", rpc::json_method(&Methods::Release, this), method_role);
    }

    int notes = 0;

  private:
    void None() { return_result("ok"); }
    void One(std::string const &text) { return_result("got " + text); }
    void Four(int n, double d, json::object const &members, json::value const &any) {
        json::value result;
        result["n"] = n;
        result["d"] = d;
        result["members"] = static_cast<int>(members.size());
        result["any"] = any;
        return_result(result);
    }
    void Silent() {}
    void Twice() {
        return_result(1);
        return_result(2);
    }
    void LateFailure() {
        return_result("x");
        throw std::runtime_error("late");
    }
    void Error() {
        json::value error;
        error["code"] = 5;
        return_error(error);
    }
    void Refuse() { throw rpc::call_error("my call error"); }
    void Fail() { throw std::runtime_error("broken"); }
    void Undefined() {
        json::value result;
        result["a"] = 1;
        result["b"];
        return_result(result);
    }
    void Note() { ++notes; }
    void Release() {
        service().post([call = release_call()] { call->return_result("later"); });
    }
};

/// Keeps the log lines that are written while it lives.
class LogCapture : public booster::log::sink {
  public:
    void log(booster::log::message const &msg) override { text += msg.log_message() + "\n"; }
    std::string text;
};

class Rpc : public testing::Test {
  protected:
    static json::value Settings() {
        json::value settings;
        settings.set("logging.stderr", false);
        settings.set("localization.locales", std::vector<std::string>{"en_US.UTF-8"});
        return settings;
    }

    /// Sends a request; returns the media type and the body of the answer as "TYPE|BODY".
    std::string Answered(FakeInput const &input) {
        FakeRequest request(service, input);
        methods.assign_context(request.shared_context());
        methods.main("/rpc");
        methods.release_context();
        auto const answer = request.Answer();
        std::istringstream header(answer.substr(0, answer.find("\r\n\r\n")));
        std::string type = "no type";
        for (std::string line; std::getline(header, line);)
            if (line.starts_with("Content-Type: "))
                type = line.substr(14, line.find('\r') - 14);
        return type + '|' + answer.substr(answer.find("\r\n\r\n") + 4);
    }

    std::string Call(std::string const &body) {
        return Answered({.content_type = "application/json", .body = body});
    }

    cppcms::service service{Settings()};
    Methods methods{service};
};

TEST_F(Rpc, Calls) {
    struct {
        char const *call;
        std::string body;
    } const cases[] = {
        {R"({"method":"none","params":[],"id":1})", R"({"id":1,"error":null,"result":"ok"})"},
        {R"({"id":"x","params":["a"],"method":"one","jsonrpc":"2.0"})",
         R"({"id":"x","error":null,"result":"got a"})"},
        {R"({"method":"four","params":[-1,2,{"a":1},null],"id":[1]})",
         R"({"id":[1],"error":null,"result":{"any":null,"d":2,"members":1,"n":-1}})"},
        {R"({"method":"error","params":[],"id":1})", R"({"id":1,"error":{"code":5},"result":null})"},
        {R"({"method":"nope","params":[],"id":1})", R"({"id":1,"error":"Method not found","result":null})"},
        {R"({"method":"one","params":[],"id":1})",
         R"({"id":1,"error":"Invalid parametres number","result":null})"},
        {R"({"method":"none","params":[1],"id":1})",
         R"({"id":1,"error":"Invalid parametres number","result":null})"},
        {R"({"method":"one","params":[1],"id":1})", R"({"id":1,"error":"Invalid parameters","result":null})"},
        {R"({"method":"four","params":[1.5,2,{},1],"id":1})",
         R"({"id":1,"error":"Invalid parameters","result":null})"},
        {R"({"method":"refuse","params":[],"id":1})", R"({"id":1,"error":"my call error","result":null})"},
        {R"({"method":"fail","params":[],"id":1})",
         R"({"id":1,"error":"Internal Service Error","result":null})"},
        {R"({"method":"note","params":[],"id":1})",
         R"({"id":1,"error":"The request should be notification","result":null})"},
        {R"({"method":"twice","params":[],"id":1})",
         R"({"id":1,"error":null,"result":1}{"id":1,"error":null,"result":2})"},
        {R"({"method":"late failure","params":[],"id":1})",
         R"({"id":1,"error":null,"result":"x"}{"id":1,"error":"Internal Service Error","result":null})"},
        {R"({"method":"undefined","params":[],"id":1})",
         R"({"id":1,"error":null,"result":{"a":1,"b":{"id":1,"error":"Invalid parameters","result":null})"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(Call(c.call), json_type + ("|" + c.body)) << c.call;
    EXPECT_EQ(methods.notes, 0);
}

TEST_F(Rpc, CallsWithoutAnAnswer) {
    for (auto const *call : {
             R"({"method":"silent","params":[],"id":1})",
             R"({"method":"note","params":[],"id":null})",
             R"({"method":"none","params":[],"id":null})",
             R"({"method":"nope","params":[],"id":null})",
             R"({"method":"fail","params":[],"id":null})",
         })
        EXPECT_EQ(Call(call), html_type + std::string("|")) << call;
    EXPECT_EQ(methods.notes, 1);
}

TEST_F(Rpc, RequestsThatAreNoCalls) {
    std::string const good = R"({"method":"none","params":[],"id":1})";
    struct {
        FakeInput input;
        char const *problem;
    } const cases[] = {
        {{.method = "GET", .content_type = "application/json"}, "Invalid request method"},
        {{.method = "PUT", .content_type = "application/json", .body = good}, "Invalid request method"},
        {{.method = "GET", .content_type = ""}, "Invalid content type"},
        {{.content_type = "text/json", .body = good}, "Invalid content type"},
        {{.content_type = "application/jsonx", .body = good}, "Invalid content type"},
        {{.content_type = "application/json", .body = ""}, "Invalid JSON"},
        {{.content_type = "application/json", .body = good + "x"}, "Invalid JSON"},
        {{.content_type = "application/json", .body = "[1]"}, "Invalid JSON-RPC"},
        {{.content_type = "application/json", .body = R"({"method":1,"params":[],"id":1})"},
         "Invalid JSON-RPC"},
        {{.content_type = "application/json", .body = R"({"method":"none","id":1})"}, "Invalid JSON-RPC"},
        {{.content_type = "application/json", .body = R"({"method":"none","params":{},"id":1})"},
         "Invalid JSON-RPC"},
        {{.content_type = "application/json", .body = R"({"method":"none","params":[]})"},
         "Invalid JSON-RPC"},
    };
    for (auto const &c : cases) {
        EXPECT_EQ(Answered(c.input), text_type + std::string("|") + c.problem + '\n')
            << c.input.method << ' ' << c.input.content_type << ' ' << c.input.body;
        EXPECT_THROW(methods.method(), cppcms::cppcms_error);
    }
    for (auto const *type :
         {"Application/JSON ; charset=x", "application/jsonrequest", "application/json-rpc"})
        EXPECT_TRUE(Answered({.content_type = type, .body = good}).ends_with(R"("ok"})")) << type;
}

TEST_F(Rpc, AGetIsAnsweredWithTheServiceDescription) {
    json::value description;
    description["service"] = "test";
    methods.smd(description);
    EXPECT_EQ(Answered({.method = "GET", .content_type = ""}),
              json_type + std::string(R"(|{"service":"test"})"));
    methods.smd_raw("raw text");
    EXPECT_EQ(Answered({.method = "GET"}), json_type + std::string("|raw text"));
    EXPECT_THROW(methods.smd_from_file("/nonexistent/description"), cppcms::cppcms_error);
}

TEST_F(Rpc, TheCurrentCallIsKeptButCannotBeAnsweredLate) {
    EXPECT_THROW(methods.return_result(1), cppcms::cppcms_error);
    Call(R"({"method":"one","params":["a"],"id":1})");
    EXPECT_EQ(methods.method(), "one");
    EXPECT_EQ(methods.params().at(0), json::value("a"));
    EXPECT_FALSE(methods.notification());
    EXPECT_THROW(methods.return_result(1), cppcms::cppcms_error);
}

TEST_F(Rpc, CallsAreLoggedWithoutControlCharacters) {
    auto const capture = std::make_shared<LogCapture>();
    auto &logger = booster::log::logger::instance();
    logger.add_sink(capture);
    logger.set_log_level(booster::log::debug, "cppcms");
    Call(R"({"method":"none","params":[],"id":1})");
    Call(R"({"method":"a\nb","params":[],"id":1})");
    logger.reset_log_level("cppcms");
    logger.remove_sink(capture);
    EXPECT_EQ(capture->text, "JSON-RPC Method call:none\nJSON-RPC Method call:a\\nb\n");
}

/// Sends a call to a service on this host once it listens; the whole answer, "" where there is none.
std::string PostTo(sockaddr_in const &address, std::string const &call) {
    for (int attempt = 0; attempt < 500; ++attempt) {
        int const client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (connect(client, reinterpret_cast<sockaddr const *>(&address), sizeof(address)) == 0) {
            std::string const request =
                "POST /rpc HTTP/1.0\r\nContent-Type: application/json\r\nContent-Length: " +
                std::to_string(call.size()) + "\r\n\r\n" + call;
            send(client, request.data(), request.size(), MSG_NOSIGNAL);
            std::string answer;
            char part[1024];
            for (ssize_t size = 0; (size = recv(client, part, sizeof(part), 0)) > 0;)
                answer.append(part, static_cast<std::size_t>(size));
            close(client);
            return answer;
        }
        close(client);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return "";
}

/// An address of this host that is free right now.
sockaddr_in FreeAddress() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    int const probe = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(bind(probe, reinterpret_cast<sockaddr *>(&address), size), 0);
    EXPECT_EQ(getsockname(probe, reinterpret_cast<sockaddr *>(&address), &size), 0);
    close(probe);
    return address;
}

TEST(RpcService, AReleasedCallIsAnsweredAfterItsMethodReturned) {
    sockaddr_in const address = FreeAddress();
    json::value settings;
    settings.set("logging.stderr", false);
    settings.set("service.api", "http");
    settings.set("service.port", ntohs(address.sin_port));
    settings.set("service.worker_threads", 2);
    cppcms::service service(settings);
    booster::intrusive_ptr<cppcms::application> const root(new Methods(service));
    service.applications_pool().mount(root, cppcms::mount_point("/rpc", 0));
    std::thread runner([&] { service.run(); });

    auto const answer = PostTo(address, R"({"method":"release","params":[],"id":7})");
    service.shutdown();
    runner.join();
    EXPECT_TRUE(answer.ends_with("\r\n\r\n{\"id\":7,\"error\":null,\"result\":\"later\"}")) << answer;
}

}  // namespace
