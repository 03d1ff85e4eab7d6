#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class RebootTest : public PageTest {
  protected:
    RebootTest() : PageTest({"/config/settings/reboot", "net/", {{"lan_ipaddr", "192.168.7.1"}}}) {}
};

}  // namespace

TEST_F(RebootTest, OnlyAPostReboots) {
    Html const html = Show({}, {{"config_page_title", " Reboot "}});
    EXPECT_EQ(html.One("//form[@method='post' and @action='']//input[@type='submit']/@id"), "cfg_rbt_reboot");
    EXPECT_EQ(Html(browser.Get(page.path + "?type=finishedUpgrade").body).One(successMessage),
              "Firmware upgraded successfully, reboot to run new firmware");
    EXPECT_EQ(device::TakeCommands(), Strings());
}

TEST_F(RebootTest, TheWaitingPageIsAnsweredAndTheRebootGoesOnByItself) {
    device::ReplacedFile const flag("/tmp/webconfig_reboot_flag", "");
    device::RecordingProgram const reboot("/usr/sbin/reboot", device::tellStart);
    device::TakeCommands();

    Html const html(browser.Post(page.path, Fields{{"_1", "Reboot"}}).body);
    EXPECT_EQ(html.One(anyMessage), "Please wait..rebooting");
    EXPECT_EQ(html.Count(successMessage) + html.Count(failureMessage), 0U);
    EXPECT_EQ(html.One("//div[@id='lan_ipaddr']"), "192.168.0.1") << "the address of br1";
    EXPECT_EQ(html.One("//div[@id='prm_lan_ipaddr']"), "192.168.7.1");
    EXPECT_EQ(device::Start(), "own session, 0 signals, 0 sockets, boot \n");
    EXPECT_EQ(device::TakeCommands(), Strings{"/sbin/reboot -d 5"});
}

}  // namespace pages
