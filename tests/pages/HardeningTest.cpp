#include "tests/pages/support/Page.h"

namespace pages {

TEST(HardeningTest, ValuesStandInCommandsAsTheConfigurationSays) {
    device::KeptStore const store;
    store.Set({{"net/wifi/vendor", "laird"}, {"net/wifi/region_code", "FCC"}});
    device::RecordingProgram const nat("/etc/nat_setup.sh");
    device::RecordingProgram const cryptpw("/usr/bin/cryptpw", "cat >>/tmp/given");
    device::Process const byFalse(device::Configuration(9106, R"("hardening":{"shell":false},)"));
    device::Process const byTrue(device::Configuration(9107, R"("hardening":{"shell":true},)"));
    device::Process const byDefault(device::Configuration(9108));
    Browser plain = device::Up("http://127.0.0.1:9106");
    Browser hardened = device::Up("http://127.0.0.1:9107");
    Browser escaped = device::Up("http://127.0.0.1:9108");
    std::string const password = "-5 $((6 * 7))";
    Fields const root = {
        {"passwordRoot", password}, {"passwordConfirmRoot", password}, {"submit", "Save Root Password"}};
    std::tuple<Browser &, std::string, std::string, std::string> const cases[] = {
        {plain, " -5 42", "", "42"},
        {hardened, "", password + '\n', "$((6 * 7))"},
        {escaped, " -- " + password, "", "$((6 * 7))"}};
    for (auto const &[browser, argument, given, result] : cases) {
        device::TakeCommands();
        browser.Post("/config/settings/advanced", root);
        browser.Post("/config/regulatory/wifi", Fields{{"hidden_domain", "X$((6 * 7))"}, {"Save", "Save"}});
        EXPECT_EQ(device::TakeCommands(),
                  (Strings{"/usr/bin/cryptpw" + argument, "/usr/sbin/lmu -r X" + result}));
        EXPECT_EQ(device::Shell("cat /tmp/given; rm /tmp/given"), given);
    }
}

TEST(HardeningTest, NoPageHasAStoredSecretWhereTheyAreHidden) {
    device::KeptStore const store;
    device::Shell(
        "prm set gprs/sim_type other; for key in gprs/password net/wifi/ap/wpa_psk "
        "cdma/password cellular/sim_pin net/wifi/client/wpa_psk net/wifi/client/eap/password "
        "system/digest/root; do prm set $key s3cret; done");
    device::Process process(device::Configuration(9108));
    auto const leaks = [](Browser browser) {
        Strings pages = DeclaredPages();
        std::erase_if(pages, [&](auto const &path) {
            return browser.Get("/config" + path).body.find("s3cret") == std::string::npos;
        });
        return pages;
    };
    EXPECT_EQ(leaks(device::Up("http://127.0.0.1:9108")), Strings{"/network/cellular"});
    EXPECT_EQ(leaks(Browser(device::address)), Strings());
}

}  // namespace pages
