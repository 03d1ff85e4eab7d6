#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

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

/// A client that asks for something and then reads no more than the beginning of the answer.
class StalledClient {
  public:
    StalledClient(int port, std::string const &path, std::string const &body)
        : _socket(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in server{};
        server.sin_family = AF_INET;
        server.sin_port = htons(static_cast<std::uint16_t>(port));
        server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        std::string const request =
            "POST " + path + " HTTP/1.0\r\nHost: device\r\nContent-Length: " + std::to_string(body.size()) +
            "\r\nContent-Type: application/x-www-form-urlencoded\r\n\r\n" + body;
        auto const *const address = reinterpret_cast<sockaddr *>(&server);
        char beginning = 0;
        if (connect(_socket, address, sizeof(server)) != 0 ||
            send(_socket, request.data(), request.size(), 0) < 0 || recv(_socket, &beginning, 1, 0) != 1)
            ADD_FAILURE() << "no answer";
    }
    ~StalledClient() { close(_socket); }
    StalledClient(StalledClient const &) = delete;
    StalledClient &operator=(StalledClient const &) = delete;

  private:
    int _socket;
};

}  // namespace

TEST(SaveTest, SavesAtTheSameTimeDoNotMixWhatIsStoredAndWhatIsInEffect) {
    device::KeptStore const store;
    store.Set({{"net/wifi/vendor", "laird"}, {"net/wifi/region_code", "FCC"}, {"net/wifi/country", "US"}});
    std::string const account = device::Shell("getent shadow root | cut -d: -f1,2");
    for (int round = 0; round < 8; ++round) {
        std::string const number = std::to_string(round);
        auto one = PostLater(advancedPage, RootPassword("one-password-" + number));
        auto other = PostLater(advancedPage, RootPassword("other-password-" + number));
        for (auto *answer : {&one, &other})
            EXPECT_EQ(Html(answer->get().body).One(successMessage), saved);
        EXPECT_EQ(device::Shell("getent shadow root | cut -d: -f2"),
                  device::Shell("prm get system/digest/root"))
            << "round " << round;
    }
    for (int round = 0; round < 3; ++round) {
        auto one = PostLater(wlanPage, Wlan("plant"));
        auto twice = PostLater(wlanPage, Wlan("plant"));
        auto other = PostLater(wlanPage, Wlan("field"));
        for (auto *answer : {&one, &twice, &other})
            EXPECT_EQ(Html(answer->get().body).One(successMessage), "Configuration saved successfully");
        EXPECT_EQ(device::Shell("sed -n 's/ *ssid=//p' /etc/wpa_supplicant.conf"),
                  device::Shell("prm get net/wifi/client/essid | tr -d '\\n' | od -An -tx1 | tr -d ' '"));
    }
    device::ReplacedFile const before("/tmp/account", account);
    device::Shell("chpasswd --encrypted </tmp/account");
    device::Shell("prm set net/wifi/client/enabled no; /etc/init.d/network_funcs.sh wifi_client");
}

TEST(SaveTest, PagesThatShowNeverWaitForASave) {
    device::KeptStore const store;
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
    device::Process const process(device::Configuration(port));
    Browser browser = device::Up("http://127.0.0.1:" + std::to_string(port));
    StalledClient const stalled(port, advancedPage, "submit=Download");
    EXPECT_EQ(browser.Post(advancedPage, Fields{{"submit", "Nothing"}}).status, 200);
}

}  // namespace pages
