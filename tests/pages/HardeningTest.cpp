#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr int port = 9106;

std::string Key(std::string const &passPhrase) {
    return device::Shell("wpa_passphrase field " + passPhrase + " | sed -n 's/^\tpsk=//p'");
}

}  // namespace

TEST(HardeningTest, WithoutItValuesStandInCommandsAsTheyAre) {
    device::KeptStore const store;
    store.Set(
        {{"net/wifi/vendor", "laird"}, {"net/wifi/region_code", "FCC"}, {"net/wifi/ap/essid", "field"}});
    device::RecordingProgram const nat("/etc/nat_setup.sh");
    device::RecordingProgram const setPassword("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    device::Process process(device::Configuration(port));
    Browser browser("http://127.0.0.1:" + std::to_string(port));
    ASSERT_TRUE(browser.WaitUntilUp());
    device::TakeCommands();

    browser.Post("/config/regulatory/wifi", Fields{{"hidden_domain", "X$((1+1))"}, {"Save", "Save"}});
    EXPECT_EQ(device::TakeCommands(), Strings{"/usr/sbin/lmu -r X2"});

    std::string const typed = "secrets$((1+1))";
    browser.Post(
        "/config/settings/advanced",
        Fields{{"passwordWeb", typed}, {"passwordConfirmWeb", typed}, {"submit", "Save Web Password"}});
    EXPECT_EQ(device::Shell("prm get webman/digest/admin"),
              device::Shell("printf 'admin:Orvane Configuration Tool:secrets2' | md5sum | cut -d' ' -f1"));

    browser.Post("/config/network/access_point", Fields{{"apEnabled", "y"},
                                                        {"apCountryCode", "US"},
                                                        {"apChannel", "11:2462"},
                                                        {"apEssId", "field"},
                                                        {"apPassPhrase", typed},
                                                        {"apSubmit", "Save"}});
    EXPECT_EQ(device::Shell("prm get net/wifi/ap/wpa_psk"), Key("secrets2"));
    store.Set({});
    device::Shell("/etc/init.d/network_funcs.sh wifi_ap");
}

}  // namespace pages
