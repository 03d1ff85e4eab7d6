#include "WebApps/webconfig/security/Headers.h"
#include "tests/pages/support/Page.h"

namespace pages {

namespace {

using webconfig::security::policyHeader;

constexpr char address[] = "http://127.0.0.1:9107";
constexpr char form[] = "application/x-www-form-urlencoded";
constexpr char advanced[] = "/config/settings/advanced";

/// With all that a hostile network makes necessary, or none of it.
std::string Guarded(bool on) {
    std::string const security = R"("security":{"same_origin":true,"hosts":[],"headers":true},)";
    return device::Configuration(
        9107, R"("plugins":{"enable":true},"plugin_media_root":"plugins",)" + (on ? security : ""));
}

/// What the answer has of a header; "(several)" where it has it more than once.
std::string Value(Answer const &answer, std::string const &name) {
    std::string const start = '\n' + name + ": ";
    auto const found = answer.headers.find(start);
    if (found == std::string::npos)
        return "";
    auto const begin = found + start.size();
    return answer.headers.find(start, begin) == std::string::npos
               ? answer.headers.substr(begin, answer.headers.find('\r', begin) - begin)
               : "(several)";
}

class HeadersTest : public testing::Test {
  protected:
    void Expect(std::string const &what, Answer const &answer, long status,
                std::string const &others = {}) const {
        EXPECT_EQ(answer.status, status) << what;
        for (auto const &[name, value] : webconfig::security::headers) {
            if (others != name) {
                EXPECT_EQ(Value(answer, name), value) << what << ": " << name;
            }
        }
    }

    /// A page's inline scripts are its own, and nothing else in it is one. Returns its nonce.
    std::string ExpectPage(std::string const &path, Answer const &answer) const {
        Expect(path, answer, 200, policyHeader);
        std::string const policy = Value(answer, policyHeader);
        auto const at = policy.find("'nonce-") + 7;
        std::string const nonce = policy.substr(at, policy.find('\'', at) - at);
        EXPECT_EQ(nonce.size(), 32U) << path;
        EXPECT_EQ(policy.find("unsafe"), std::string::npos) << path;
        EXPECT_TRUE(policy.starts_with("default-src 'none'; script-src 'self' 'nonce-")) << policy;
        Html const html(answer.body);
        EXPECT_EQ(html.Count("//script[not(@src) and not(@nonce='" + nonce + "')]"), 0U) << path;
        EXPECT_EQ(html.All("//@style | //@*[starts-with(name(),'on')]"), Strings()) << path;
        return nonce;
    }
};

}  // namespace

// What the web server makes of them, tests/device/test_front.py sees.
TEST_F(HeadersTest, EveryAnswerBindsTheBrowser) {
    device::KeptStore const store;
    store.Set({{"net/wifi/vendor", "laird"}});
    device::Process const process(Guarded(true));
    Browser browser = device::Up(address);
    for (auto const &page : DeclaredPages()) {
        std::string const path = "/config" + page;
        Answer const answer = browser.Get(path);
        if (answer.status == 302)
            Expect(path, answer, 302);
        else
            EXPECT_NE(ExpectPage(path, answer), ExpectPage(path, browser.Get(path)));
    }
    for (char const *submit : {"Backup Configuration", "Download"})
        Expect(submit, browser.Post(advanced, Fields{{"submit", submit}}), 200, policyHeader);
    Expect("status", browser.Call("dns_server_status"), 200);
    Expect("unknown status", browser.Get("/status/rpc/x"), 200);
    Expect("not found", browser.Get("/config/nothing"), 404);
    Expect("malformed", browser.Post(advanced, "x", "multipart/form-data"), 400);
    Expect("too large", browser.Post(advanced, std::string(1 << 21, 'x'), form), 413);
    browser.headers = {"Origin: http://evil.example"};
    Expect("foreign", browser.Post("/config/settings/reboot", Fields{{"_1", "Reboot"}}), 403);
    Expect("foreign poll", browser.Get("/status/rpc"), 403);
    browser.headers = {"Host: evil.example"};
    Expect("by another name", browser.Get("/config/"), 421);
    browser.headers.clear();
    EXPECT_TRUE(process.WaitForLog(R"(403: "POST" "/config/settings/reboot" from "127.0.0.1": sent by )"
                                   R"(another site, "http://evil.example")"));
    EXPECT_TRUE(
        process.WaitForLog(R"(421: "GET" "/config/" from "127.0.0.1": asked by the name "evil.example")"));
    Expect("start", browser.Get("/"), 302);
    Expect("status of a plug-in", browser.Post("/status/traffic", "{}", "application/json"), 200);
    ExpectPage("page of a plug-in", browser.Get("/config/traffic/interfaces"));
    Expect("not found", browser.Get("/nowhere"), 404);
    Expect("not found", browser.Get("/media/nothing"), 404);
    for (char const *media :
         {"/media/css/screen.css", "/service_imgs/js/onload.js", "/plugins/traffic/head/traffic.css"}) {
        Answer const answer = browser.Get(media);
        Expect(media, answer, 200, "Cache-Control");
        EXPECT_EQ(Value(answer, "Cache-Control"), "") << media;
    }
}

TEST_F(HeadersTest, NothingOfItIsThereWithoutItsKeys) {
    device::Process const process(Guarded(false));
    Browser browser = device::Up(address);
    browser.headers = {"Origin: http://evil.example", "Host: evil.example"};
    Answer const answer = browser.Post(advanced, Fields{{"submit", "Nothing"}});
    EXPECT_EQ(answer.status, 200);
    for (auto const &[name, value] : webconfig::security::headers)
        EXPECT_EQ(Value(answer, name).empty(), std::string(value) != "") << name;
    EXPECT_EQ(answer.body.find("nonce"), std::string::npos);
    EXPECT_EQ(answer.body.find("defaultPasswordAlert"), std::string::npos);
    EXPECT_EQ(
        Html(browser.Get("/config/network/wlan").body).Count("//select[@onchange='wlanSecurityChange()']"),
        1U);
}

}  // namespace pages
