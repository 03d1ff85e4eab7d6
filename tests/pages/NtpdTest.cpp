#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class NtpdTest : public PageTest {
  protected:
    NtpdTest()
        : PageTest({"/config/network/ntp",
                    "system/ntpd/",
                    {{"enabled", "yes"},
                     {"servers/0", "old0"},
                     {"servers/1", "old1"},
                     {"servers/2", "old2"},
                     {"servers/3", "old3"}},
                    {},
                    saved,
                    {"/etc/init.d/ntpd stop", "/etc/init.d/ntpd start"}}) {}

    /// The inputs of the four servers.
    static Fields Servers(Strings const &values) {
        Fields inputs;
        for (auto const &value : values)
            inputs.emplace_back("cfg_ntpd_server" + std::to_string(inputs.size()), value);
        return inputs;
    }

    device::RecordingProgram const script{"/etc/init.d/ntpd"};
    device::RecordingProgram const chronyc{"/usr/bin/chronyc"};
};

}  // namespace

TEST_F(NtpdTest, ShowsTheStoredSettings) {
    Html const html = Show({}, Servers({"old0", "old1", "old2", "old3"}));
    EXPECT_EQ(html.Value("config_page_title"), " NTP Servers ");
    EXPECT_EQ(html.Value("ntpd_enabled"), "y");
    Show({{"enabled", "YES"}, {"servers/3", none}}, {{"ntpd_enabled", ""}, {"cfg_ntpd_server3", ""}});
}

TEST_F(NtpdTest, StoresAndRestartsTheDaemonOrLetsTheClockJump) {
    Settings const servers = {
        {"servers/0", "a.example"}, {"servers/1", "10.0.0.1"}, {"servers/2", ""}, {"servers/3", "<b>d</b>"}};
    Settings switchedOff = servers;
    switchedOff["enabled"] = "no";
    Run({{"ntpdEnabled", "y"},
         {"server0", "a.example"},
         {"server1", "10.0.0.1"},
         {"server2", ""},
         {"server3", "<b>d</b>"},
         {"submit", "Save"}},
        {{.written = servers, .shown = Servers({"a.example", "10.0.0.1", "", "<b>d</b>"})},
         {.fields = {{"ntpdEnabled", none}}, .written = switchedOff},
         {.refused = "servers/2",
          .failure = notSaved,
          .written = {{"servers/0", "a.example"}, {"servers/1", "10.0.0.1"}},
          .commands = page.applies,
          .shown = Servers({"a.example", "10.0.0.1", "old2", "old3"})},
         {.fields = {{"server1", "control \x01"}},
          .failure = invalid,
          .errors = NoControls("Server 1 Address"),
          .shown = Servers({"old0", "old1", "old2", "old3"})},
         {.fields = {{"submit", "Jump system time"}}, .success = "", .commands = {"/usr/bin/chronyc online"}},
         {.fields = {{"submit", none}}, .success = ""}});
}

}  // namespace pages
