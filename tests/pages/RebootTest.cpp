#include <gtest/gtest.h>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char rebootPage[] = "/config/settings/reboot";

class RebootTest : public testing::Test {
  protected:
    Browser browser{device::address};
};

}  // namespace

TEST_F(RebootTest, OnlyAPostReboots) {
    device::TakeCommands();
    using Texts = std::vector<std::string>;
    for (auto const &[query, messages] :
         {std::pair{"", Texts{}},
          {"?type=finishedUpgrade", Texts{"Firmware upgraded successfully, reboot to run new firmware"}}}) {
        Html const page(browser.Get(std::string(rebootPage) + query).body);
        EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Reboot ");
        EXPECT_EQ(page.One("//form[@method='post' and @action='']//input[@type='submit']/@id"),
                  "cfg_rbt_reboot");
        EXPECT_EQ(page.All(successMessage), messages);
    }
    EXPECT_EQ(device::TakeCommands(), std::vector<std::string>());
}

TEST_F(RebootTest, TheWaitingPageIsAnsweredAndTheRebootGoesOnByItself) {
    device::KeptParameters const kept("net/lan_ipaddr");
    device::Shell("prm set net/lan_ipaddr 192.168.7.1");
    device::TemporaryFile const flag("/tmp/webconfig_reboot_flag");
    device::RecordingProgram const reboot("/usr/sbin/reboot", device::tellStart);
    device::TakeCommands();

    Html const page(browser.Post(rebootPage, Fields{{"_1", "Reboot"}}).body);
    EXPECT_EQ(page.One("//div[contains(@class,'form_result_msg')]"), "Please wait..rebooting");
    EXPECT_EQ(page.Count(successMessage) + page.Count(failureMessage), 0U);
    EXPECT_EQ(page.One("//div[@id='lan_ipaddr']"), "192.168.0.1") << "the address of br1";
    EXPECT_EQ(page.One("//div[@id='prm_lan_ipaddr']"), "192.168.7.1");
    EXPECT_EQ(page.Count("//div[@id='alertsBox']"), 0U);
    EXPECT_EQ(page.Count("//form"), 0U);

    device::ExpectDetachedStart();
    EXPECT_EQ(device::TakeCommands(), std::vector<std::string>{"/sbin/reboot -d 5"});
    EXPECT_EQ(device::Shell("ps --ppid $(pidof -s webconfig) -o stat= | grep ^Z"), "")
        << "nobody is left to be waited for";
    EXPECT_EQ(browser.Get("/config/").status, 200);
}

}  // namespace pages
