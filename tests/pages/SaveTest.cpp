#include <chrono>
#include <future>
#include <thread>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char advancedPage[] = "/config/settings/advanced";
constexpr char wlanPage[] = "/config/network/wlan";
constexpr long unavailable = 503;

std::future<Answer> PostLater(std::string const &path, Fields const &fields) {
    return std::async(std::launch::async, [=] { return Browser(device::address).Post(path, fields); });
}

Fields Wlan(std::string const &ssid) {
    return {{"wlanEnabled", "y"}, {"wlanEssId", ssid},    {"wlanCountryCode", "US"}, {"wlanSecurity", "none"},
            {"wlanIdentity", ""}, {"wlanPassPhrase", ""}, {"wlanSubmit", "Save"}};
}

Fields RootPassword(std::string const &password) {
    return {{"passwordRoot", password}, {"passwordConfirmRoot", password}, {"submit", "Save Root Password"}};
}

}  // namespace

TEST(SaveTest, SavesAtTheSameTimeDoNotMixWhatIsStoredAndWhatIsInEffect) {
    device::KeptStore const store;
    std::string const account = device::Shell("getent shadow root | cut -d: -f1,2");
    for (int round = 0; round < 4; ++round) {
        std::string const number = std::to_string(round);
        auto one = PostLater(advancedPage, RootPassword("one-password-" + number));
        auto other = PostLater(advancedPage, RootPassword("other-password-" + number));
        for (auto *answer : {&one, &other})
            EXPECT_EQ(Html(answer->get().body).One(successMessage), saved);
        EXPECT_EQ(device::Shell("getent shadow root | cut -d: -f2"),
                  device::Shell("prm get system/digest/root"))
            << "round " << round;
    }
    device::ReplacedFile const before("/tmp/account", account);
    device::Shell("chpasswd --encrypted </tmp/account");
}

TEST(SaveTest, PagesThatShowNeverWaitForASave) {
    device::KeptStore const store;
    store.Set({{"net/wifi/vendor", "laird"}, {"net/wifi/region_code", "FCC"}, {"net/wifi/country", "US"}});
    device::RecordingProgram const held("/etc/init.d/network_funcs.sh",
                                        "until [ -e /tmp/applied ]; do sleep 0.05; done");
    Browser browser(device::address);
    std::vector<std::future<Answer>> saves;
    for (char const *ssid : {"a", "b", "c"})
        saves.push_back(PostLater(wlanPage, Wlan(ssid)));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(browser.Get("/config/").status, 200);
    EXPECT_EQ(browser.Post(wlanPage, Wlan("d")).status, unavailable) << "the last worker is for pages";
    device::ReplacedFile const applied("/tmp/applied", "");
    for (auto &save : saves)
        EXPECT_EQ(save.get().status, 200);
    EXPECT_EQ(browser.Post(wlanPage, Wlan("e")).status, 200) << "all have had their turn";
    EXPECT_EQ(device::Shell("prm get net/wifi/client/essid"), "e\n");
}

TEST(SaveTest, ADownloadThatStallsHoldsNoSave) {
    constexpr int port = 9103;
    device::KeptStore const store;
    store.Set({{"syslogd/persistent", "yes"}});
    device::ReplacedFile const log("/home/root/log/messages", std::string(32 << 20, '\n'));
    device::ReplacedFile const begun("/tmp/stalled", "");
    device::Process const process(device::Configuration(port));
    std::string const address = "http://127.0.0.1:" + std::to_string(port);
    Browser browser = device::Up(address);
    // It reads no more than the beginning.
    std::string const client =
        device::Shell("curl -sN -d submit=Download " + address + advancedPage +
                      " | { head -c 1 >/tmp/stalled; exec sleep 60; } >/dev/null 2>&1 & echo $!");
    EXPECT_TRUE(device::WaitForText("/tmp/stalled", "\n"));
    EXPECT_EQ(browser.Post(advancedPage, Fields{{"submit", "Nothing"}}).status, 200);
    device::Shell("kill " + client);
}

}  // namespace pages
