#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr int port = 9106;

Fields Password(std::string const &word, std::string const &password) {
    return {{"password" + word, password},
            {"passwordConfirm" + word, password},
            {"submit", "Save " + word + " Password"}};
}

}  // namespace

TEST(HardeningTest, ValuesStandInCommandsAsTheyAreUnlessHardened) {
    device::KeptStore const store;
    store.Set(
        {{"net/wifi/vendor", "laird"}, {"net/wifi/region_code", "FCC"}, {"net/wifi/ap/essid", "field"}});
    device::RecordingProgram const nat("/etc/nat_setup.sh");
    device::RecordingProgram const cryptpw("/usr/bin/cryptpw", "exit 0");
    device::RecordingProgram const setPassword("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    device::Process process(device::Configuration(port));
    Browser plain("http://127.0.0.1:" + std::to_string(port));
    Browser hardened(device::address);
    ASSERT_TRUE(plain.WaitUntilUp());
    struct {
        Browser &browser;
        std::string endOfOptions;
        std::string result;
    } const cases[] = {{plain, "", "42"}, {hardened, "-- ", "$((6 * 7))"}};
    for (auto const &[browser, endOfOptions, result] : cases) {
        device::TakeCommands();
        browser.Post("/config/settings/advanced", Password("Root", "-5 $((6 * 7))"));
        browser.Post("/config/regulatory/wifi", Fields{{"hidden_domain", "X$((6 * 7))"}, {"Save", "Save"}});
        EXPECT_EQ(device::TakeCommands(), (Strings{"/usr/bin/cryptpw " + endOfOptions + "-5 " + result,
                                                   "/usr/sbin/lmu -r X" + result}));

        browser.Post("/config/settings/advanced", Password("Web", "web $((6 * 7))"));
        device::ReplacedFile const account("/tmp/account", "admin:Orvane Configuration Tool:web " + result);
        EXPECT_EQ(device::Shell("prm get webman/digest/admin"),
                  device::Shell("md5sum </tmp/account | cut -d' ' -f1"));

        browser.Post("/config/network/access_point", Fields{{"apEnabled", "y"},
                                                            {"apCountryCode", "US"},
                                                            {"apChannel", "11:2462"},
                                                            {"apEssId", "field"},
                                                            {"apPassPhrase", "phrase $((6 * 7))"},
                                                            {"apSubmit", "Save"}});
        EXPECT_EQ(device::Shell("prm get net/wifi/ap/wpa_psk"),
                  device::Shell("wpa_passphrase field 'phrase " + result + "' | sed -n 's/^\tpsk=//p'"));
    }
    store.Set({});
    device::Shell("/etc/init.d/network_funcs.sh wifi_ap");
}

}  // namespace pages
