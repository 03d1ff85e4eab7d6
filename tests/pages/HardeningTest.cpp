#include "tests/pages/support/Page.h"

namespace pages {

TEST(HardeningTest, ValuesStandInCommandsAsTheyAreUnlessHardened) {
    device::KeptStore const store;
    store.Set({{"net/wifi/vendor", "laird"}, {"net/wifi/region_code", "FCC"}});
    device::RecordingProgram const nat("/etc/nat_setup.sh");
    device::RecordingProgram const cryptpw("/usr/bin/cryptpw", "exit 0");
    device::Process process(device::Configuration(9106));
    Browser plain = device::Up("http://127.0.0.1:9106");
    Browser hardened(device::address);
    std::string const password = "-5 $((6 * 7))";
    Fields const root = {
        {"passwordRoot", password}, {"passwordConfirmRoot", password}, {"submit", "Save Root Password"}};
    struct {
        Browser &browser;
        std::string endOfOptions;
        std::string result;
    } const cases[] = {{plain, "", "42"}, {hardened, "-- ", "$((6 * 7))"}};
    for (auto const &[browser, endOfOptions, result] : cases) {
        device::TakeCommands();
        browser.Post("/config/settings/advanced", root);
        browser.Post("/config/regulatory/wifi", Fields{{"hidden_domain", "X$((6 * 7))"}, {"Save", "Save"}});
        EXPECT_EQ(device::TakeCommands(), (Strings{"/usr/bin/cryptpw " + endOfOptions + "-5 " + result,
                                                   "/usr/sbin/lmu -r X" + result}));
    }
}

}  // namespace pages
