#include <cppcms/rpc_json.h>
#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "tests/unit/framework/fake_request.h"
#include "tests/unit/util/LogCapture.h"

namespace json = cppcms::json;
namespace rpc = cppcms::rpc;

namespace {

constexpr char json_type[] = "application/json; charset=utf-8";
constexpr char html_type[] = "text/html; charset=utf-8";

class Methods : public rpc::json_rpc_server {
  public:
    explicit Methods(cppcms::service &srv) : json_rpc_server(srv) {
        bind("none", rpc::json_method(&Methods::None, this), method_role);
        bind("one", rpc::json_method(&Methods::One, this), method_role);
        bind("four", rpc::json_method(&Methods::Four, this), method_role);
        Bind("silent", [] {});
        Bind("error", [this] { return_error(json::object{{"code", 5}}); });
        Bind("refuse", [] { throw rpc::call_error("my call error"); });
        Bind(
            "fail", [] { throw std::runtime_error("broken"); }, any_role);
        Bind(
            "note", [this] { ++notes; }, notification_role);
    }

    int notes = 0;

  private:
    void Bind(char const *name, std::function<void()> const &method, role_type role = method_role) {
        bind(
            name, [method](json::array const &) { method(); }, role);
    }
    void None() { return_result("ok"); }
    void One(std::string const &text) { return_result("got " + text); }
    void Four(int n, double d, json::object const &members, json::value const &any) {
        return_result(json::array{n, d, static_cast<int>(members.size()), any});
    }
};

class Rpc : public testing::Test {
  protected:
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

    cppcms::service service{QuietSettings()};
    Methods methods{service};
};

TEST_F(Rpc, Calls) {
    struct {
        char const *method;
        char const *params;
        char const *answer;  // without its id
    } const cases[] = {
        {"none", "[]", R"("error":null,"result":"ok"})"},
        {"one", R"(["a"])", R"("error":null,"result":"got a"})"},
        {"four", R"([-1,2,{"a":1},null])", R"("error":null,"result":[-1,2,1,null]})"},
        {"error", "[]", R"("error":{"code":5},"result":null})"},
        {"nope", "[]", R"("error":"Method not found","result":null})"},
        {"one", "[]", R"("error":"Invalid parametres number","result":null})"},
        {"none", "[1]", R"("error":"Invalid parametres number","result":null})"},
        {"one", "[1]", R"("error":"Invalid parameters","result":null})"},
        {"four", "[1.5,2,{},1]", R"("error":"Invalid parameters","result":null})"},
        {"refuse", "[]", R"("error":"my call error","result":null})"},
        {"fail", "[]", R"("error":"Internal Service Error","result":null})"},
        {"note", "[]", R"("error":"The request should be notification","result":null})"},
    };
    for (auto const &[method, params, answer] : cases)
        EXPECT_EQ(Call(R"({"method":")" + std::string(method) + R"(","params":)" + params + R"(,"id":1})"),
                  std::string(json_type) + R"(|{"id":1,)" + answer);
    EXPECT_EQ(Call(R"({"id":["x"],"params":[],"method":"none","jsonrpc":"2.0"})"),
              json_type + std::string(R"(|{"id":["x"],"error":null,"result":"ok"})"));
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
    std::string const json = "application/json";
    std::tuple<char const *, std::string, std::string, char const *> const cases[] = {
        {"GET", json, "", "Invalid request method"},
        {"POST", "text/json", good, "Invalid content type"},
        {"POST", json, "", "Invalid JSON"},
        {"POST", json, good + "x", "Invalid JSON"},
        {"POST", json, "[1]", "Invalid JSON-RPC"},
        {"POST", json, R"({"method":1,"params":[],"id":1})", "Invalid JSON-RPC"},
        {"POST", json, R"({"method":"none","id":1})", "Invalid JSON-RPC"},
        {"POST", json, R"({"method":"none","params":{},"id":1})", "Invalid JSON-RPC"},
        {"POST", json, R"({"method":"none","params":[]})", "Invalid JSON-RPC"},
    };
    for (auto const &[method, type, body, problem] : cases) {
        EXPECT_EQ(Answered({.method = method, .content_type = type, .body = body}),
                  std::string("text/plain; charset=utf-8|") + problem + '\n')
            << method << ' ' << type << ' ' << body;
    }
    for (auto const *type :
         {"Application/JSON ; charset=x", "application/jsonrequest", "application/json-rpc"})
        EXPECT_TRUE(Answered({.content_type = type, .body = good}).ends_with(R"("ok"})")) << type;
}

TEST_F(Rpc, CallsAreLoggedWithoutControlCharacters) {
    LogCapture log(booster::log::debug, "cppcms");
    Call(R"({"method":"a\nb","params":[],"id":1})");
    EXPECT_TRUE(log.Contains("JSON-RPC Method call:a\\nb ("));
}

}  // namespace
