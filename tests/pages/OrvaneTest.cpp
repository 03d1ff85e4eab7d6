#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class OrvaneTest : public PageTest {
  protected:
    OrvaneTest()
        : PageTest({"/config/network/orvane",
                    "tern/",
                    {{"enabled", "yes"},
                     {"mesh/server", "mesh.example"},
                     {"mesh/ipport", "4100, i"},
                     {"cellular/server", "cellular.example"},
                     {"cellular/ipport", "4101, i"},
                     {"openvpn/server", "openvpn.example"},
                     {"openvpn/ipport", "4102, i"}}}) {}

    device::RecordingProgram const supervisor{"/usr/bin/supvis"};
};

constexpr char ports[] = "//*[@id='cfg_orv_port']/@value";
constexpr char servers[] = "//*[@id='cfg_orv_server']/@value";

}  // namespace

TEST_F(OrvaneTest, ShowsTheStoredSettingsAndLocksThemWithTheLinkOff) {
    Html const html =
        Show({}, {{"config_page_title", " Orvane Server Configuration "}, {"cfg_orvane_enabled", "y"}});
    EXPECT_EQ(html.All(servers), (Strings{"mesh.example", "cellular.example", "openvpn.example"}));
    EXPECT_EQ(html.All(ports), (Strings{"4100", "4101", "4102"}));
    EXPECT_EQ(html.Count("//input[@disabled]"), 0U);

    Html const locked = Show({{"enabled", "no"}, {"mesh/ipport", none}}, {{"cfg_orvane_enabled", ""}});
    EXPECT_EQ(locked.Count("//div[@id='tabcontainer']//input[@disabled]"), 9U);
    EXPECT_EQ(locked.Count("//*[@id='orvane_common']//input[@disabled]"), 0U);
}

TEST_F(OrvaneTest, SwitchingTheLinkTellsTheSupervisorOnce) {
    Settings const off = {{"enabled", "no"}};
    Run({{"enabled", "y"}, {"configuration", "Save"}},
        {{.success = ""},
         {.fields = {{"enabled", none}},
          .success = "",
          .written = {{"enabled", "no"}},
          .commands = {"/usr/bin/supvis --remove ternd"}},
         {.before = off, .fields = {{"enabled", none}}, .success = ""},
         {.before = off,
          .success = "",
          .written = {{"enabled", "yes"}},
          .commands = {"/usr/bin/supvis --add ternd --cmd /usr/bin/ternd --init --no-datalog"}}});
}

TEST_F(OrvaneTest, APathsSettingsAreItsOwnAndTheDaemonGoesOn) {
    std::pair<char const *, char const *> const paths[] = {
        {"mesh", "1"}, {"cellular", "2"}, {"openvpn", "3"}};
    for (auto const &[name, tab] : paths) {
        std::string const path = name;
        Run({{"server", "<i>&"}, {"port", "65535"}, {path, "Save"}},
            {{.written = {{path + "/server", "<i>&"}, {path + "/ipport", "65535, i"}}, .tab = tab},
             {.fields = {{"port", "1"}},
              .refused = path + "/server",
              .failure = notSaved,
              .written = {{path + "/ipport", "1, i"}},  // both are written even if one fails
              .tab = tab},
             {.refused = path + "/ipport",
              .failure = notSaved,
              .written = {{path + "/server", "<i>&"}},
              .tab = tab}});
    }
}

TEST_F(OrvaneTest, BadInputIsRefusedAndTheStoredValuesComeBack) {
    Fields const cellular = {{"server", "a"}, {"port", "1"}, {"cellular", "Save"}};
    Strings const range = {"Invalid range;  minimum 1, maximum 65535"};
    Refuses(cellular, {
                          {"port", "0", range},
                          {"port", "65536", range},
                          {"port", "", range},
                          {"port", "4294967297", range},
                          {"cellular", none, {}},
                      });
    Html const html = Expect(
        cellular,
        {.fields = {{"server", ""}}, .failure = invalid, .errors = {"This field is required"}, .tab = "2"});
    EXPECT_EQ(html.Count("//*[@id='orvane_cellular_config']" + std::string(fieldErrors)), 1U);
    EXPECT_EQ(html.All(servers), (Strings{"mesh.example", "cellular.example", "openvpn.example"}));
}

}  // namespace pages
