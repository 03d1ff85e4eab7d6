#include <gtest/gtest.h>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char ntpPage[] = "/config/network/ntp";

using Strings = std::vector<std::string>;
Strings const restarted = {"/etc/init.d/ntpd stop", "/etc/init.d/ntpd start"};

class NtpdTest : public testing::Test {
  protected:
    NtpdTest() {
        device::Shell(
            "prm set system/ntpd/enabled yes;"
            "for i in 0 1 2 3; do prm set system/ntpd/servers/$i old$i; done");
        device::TakeCommands();
    }

    Html Save(Fields fields) {
        fields.emplace_back("submit", "Save");
        return Html(browser.Post(ntpPage, fields).body);
    }
    static std::string Stored() {
        return device::Shell(
            "for key in enabled servers/0 servers/1 servers/2 servers/3; do "
            "echo -n $(prm get system/ntpd/$key)' '; done");
    }
    static Strings Servers(Html const &page) {
        return page.All("//*[@id='ntpd_config']//input[starts-with(@id,'cfg_ntpd_server')]/@value");
    }

    Fields const fields = {{"ntpdEnabled", "y"},
                           {"server0", "a.example"},
                           {"server1", "10.0.0.1"},
                           {"server2", ""},
                           {"server3", "<b>d</b>"}};
    device::KeptParameters const settings{"system/ntpd/"};
    device::RecordingProgram const script{"/etc/init.d/ntpd"};
    device::RecordingProgram const chronyc{"/usr/bin/chronyc"};
    Browser browser{device::address};
};

}  // namespace

TEST_F(NtpdTest, ShowsTheStoredSettings) {
    Html const page(browser.Get(ntpPage).body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " NTP Servers ");
    EXPECT_EQ(page.Count("//*[@id='ntpd_enabled'][@checked]"), 1U);
    EXPECT_EQ(Servers(page), (Strings{"old0", "old1", "old2", "old3"}));
    device::Shell("prm set system/ntpd/enabled YES; prm del system/ntpd/servers/3");
    Html const other(browser.Get(ntpPage).body);
    EXPECT_EQ(other.Count("//*[@id='ntpd_enabled'][@checked]"), 0U);
    EXPECT_EQ(Servers(other), (Strings{"old0", "old1", "old2", ""}));
    EXPECT_EQ(device::TakeCommands(), Strings());
}

TEST_F(NtpdTest, SavingStoresAndRestartsTheDaemon) {
    Html const page = Save(fields);
    EXPECT_EQ(page.One(successMessage), saved);
    EXPECT_EQ(Stored(), "yes a.example 10.0.0.1  <b>d</b> ");
    EXPECT_EQ(device::TakeCommands(), restarted);
    EXPECT_EQ(Servers(page), (Strings{"a.example", "10.0.0.1", "", "<b>d</b>"}));

    Save({fields.begin() + 1, fields.end()});
    EXPECT_EQ(Stored(), "no a.example 10.0.0.1  <b>d</b> ");
}

TEST_F(NtpdTest, AFailedWriteEndsTheSequenceButTheDaemonIsStarted) {
    device::RefusedKey const refused("system/ntpd/servers/2");
    Html const page = Save(fields);
    EXPECT_EQ(page.One(failureMessage), notSaved);
    EXPECT_EQ(Stored(), "yes a.example 10.0.0.1 old2 old3 ");
    EXPECT_EQ(Servers(page), (Strings{"a.example", "10.0.0.1", "old2", "old3"}));
    EXPECT_EQ(device::TakeCommands(), restarted);
}

TEST_F(NtpdTest, TextThatIsNoneIsRefusedAndNothingRuns) {
    Html const page = Save({{"ntpdEnabled", "y"}, {"server1", "control \x01"}});
    EXPECT_EQ(page.One(failureMessage), invalid);
    EXPECT_EQ(Servers(page), (Strings{"old0", "old1", "old2", "old3"}));
    EXPECT_EQ(Stored(), "yes old0 old1 old2 old3 ");
    EXPECT_EQ(device::TakeCommands(), Strings());
}

TEST_F(NtpdTest, TheClockJumpsOnRequestOnly) {
    constexpr char anyMessage[] = "//div[contains(@class,'form_result_msg')]";
    struct {
        char const *action;
        Strings commands;
    } const cases[] = {{"Jump system time", {"/usr/bin/chronyc online"}}, {"jump", {}}, {"", {}}};
    for (auto const &c : cases) {
        Html const page(browser.Post(ntpPage, Fields{{"submit", c.action}, {"server0", "x"}}).body);
        EXPECT_EQ(page.Count(anyMessage), 0U);
        EXPECT_EQ(device::TakeCommands(), c.commands) << c.action;
    }
    EXPECT_EQ(Stored(), "yes old0 old1 old2 old3 ");
}

}  // namespace pages
