#include "tests/pages/support/Page.h"

namespace pages {

TEST(HardeningTest, ValuesStandInCommandsAsTheyAreUnlessHardened) {
    device::KeptStore const store;
    store.Set({{"net/wifi/vendor", "laird"}, {"net/wifi/region_code", "FCC"}});
    device::RecordingProgram const nat("/etc/nat_setup.sh");
    device::RecordingProgram const cryptpw("/usr/bin/cryptpw", "cat >>/tmp/given");
    std::string configuration = device::Configuration(9106);
    configuration.insert(configuration.find("\"media_root"), R"("hardening":{"shell":false},)");
    device::Process process(configuration);
    device::Process byDefault(device::Configuration(9107));
    Browser plain = device::Up("http://127.0.0.1:9106");
    Browser hardened = device::Up("http://127.0.0.1:9107");
    std::string const password = "-5 $((6 * 7))";
    Fields const root = {
        {"passwordRoot", password}, {"passwordConfirmRoot", password}, {"submit", "Save Root Password"}};
    struct {
        Browser &browser;
        std::string argument;
        std::string given;
        std::string result;
    } const cases[] = {{plain, " -5 42", "", "42"}, {hardened, "", password + '\n', "$((6 * 7))"}};
    for (auto const &[browser, argument, given, result] : cases) {
        device::TakeCommands();
        browser.Post("/config/settings/advanced", root);
        browser.Post("/config/regulatory/wifi", Fields{{"hidden_domain", "X$((6 * 7))"}, {"Save", "Save"}});
        EXPECT_EQ(device::TakeCommands(),
                  (Strings{"/usr/bin/cryptpw" + argument, "/usr/sbin/lmu -r X" + result}));
        EXPECT_EQ(device::Shell("cat /tmp/given; rm /tmp/given"), given);
    }
    device::RecordingProgram const noHash("/usr/bin/md5sum", "echo 'Usage: hash'");
    Html const html(plain
                        .Post("/config/settings/advanced", Fields{{"passwordWeb", "secret"},
                                                                  {"passwordConfirmWeb", "secret"},
                                                                  {"submit", "Save Web Password"}})
                        .body);
    EXPECT_EQ(html.One(failureMessage), "Error: The web password could not be changed");
}

TEST(HardeningTest, NoPageHasAStoredSecretWhereTheyAreHidden) {
    device::KeptStore const store;
    Settings secrets = {{"gprs/sim_type", "other"}, {"cellular/use_sim_pin", "yes"}};
    for (char const *key : {"gprs/password", "cdma/password", "cellular/sim_pin", "net/wifi/ap/wpa_psk",
                            "net/wifi/client/wpa_psk", "net/wifi/client/eap/password", "system/digest/root"})
        secrets[key] = "s3cret";
    store.Set(secrets);
    device::Process process(device::Configuration(9108));
    auto const leaks = [](Browser browser) {
        Strings pages;
        for (char const *path :
             {"", "settings/firmware", "settings/reboot", "settings/advanced", "settings/about",
              "network/ethernet1", "network/openvpn", "network/orvane", "network/port_forwarding",
              "network/cellular", "network/ntp", "network/dns_server", "network/access_point", "network/wlan",
              "service/assemblysn", "regulatory/wifi"})
            pages.push_back(std::string("/config/") + path);
        std::erase_if(pages, [&](auto const &path) {
            Answer const answer = browser.Get(path);
            EXPECT_EQ(answer.status, 200) << path;
            return answer.body.find("s3cret") == std::string::npos;
        });
        return pages;
    };
    EXPECT_EQ(leaks(device::Up("http://127.0.0.1:9108")), Strings{"/config/network/cellular"});
    EXPECT_EQ(leaks(Browser(device::address)), Strings());
}

}  // namespace pages
