#include <gtest/gtest.h>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char orvanePage[] = "/config/network/orvane";

using Strings = std::vector<std::string>;

class OrvaneTest : public testing::Test {
  protected:
    OrvaneTest() {
        device::Shell(
            "prm set tern/enabled yes;"
            "for path in mesh cellular openvpn; do"
            " prm set tern/$path/server $path.example; prm set -t int tern/$path/ipport 4100; done");
        device::TakeCommands();
    }

    Html Post(Fields const &fields) { return Html(browser.Post(orvanePage, fields).body); }
    Html Save(std::string const &path, std::string const &server, std::string const &port) {
        return Post({{"server", server}, {"port", port}, {path, "Save"}});
    }
    static std::string Stored() {
        return device::Shell(
            "for key in enabled mesh/server mesh/ipport cellular/server cellular/ipport openvpn/server "
            "openvpn/ipport; do echo -n $(prm get tern/$key)' '; done");
    }
    static constexpr char untouched[] = "yes mesh.example 4100 cellular.example 4100 openvpn.example 4100 ";

    device::KeptParameters const settings{"tern/"};
    device::RecordingProgram const supervisor{"/usr/bin/supvis"};
    Browser browser{device::address};
};

}  // namespace

TEST_F(OrvaneTest, ShowsTheStoredSettingsAndLocksThemWithTheLinkOff) {
    Html const page(browser.Get(orvanePage).body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Orvane Server Configuration ");
    EXPECT_EQ(page.Count("//*[@id='cfg_orvane_enabled'][@checked]"), 1U);
    for (char const *form : {"orvane_mesh_config", "orvane_cellular_config", "Orvane_openvpn_config"}) {
        std::string const inputs = std::string("//div[@id='") + form + "']//input";
        EXPECT_EQ(page.One(inputs + "[@id='cfg_orv_port']/@value"), "4100");
        EXPECT_EQ(page.Count(inputs + "[@disabled]"), 0U);
    }
    EXPECT_EQ(page.All("//*[@id='cfg_orv_server']/@value"),
              (Strings{"mesh.example", "cellular.example", "openvpn.example"}));

    device::Shell("prm set tern/enabled no; prm del tern/mesh/ipport");
    Html const locked(browser.Get(orvanePage).body);
    EXPECT_EQ(locked.Count("//*[@id='cfg_orvane_enabled'][@checked]"), 0U);
    EXPECT_EQ(locked.Count("//div[@id='tabcontainer']//input[@disabled]"), 9U);
    EXPECT_EQ(locked.Count("//*[@id='orvane_common']//input[@disabled]"), 0U);
    EXPECT_EQ(device::TakeCommands(), Strings());
}

TEST_F(OrvaneTest, SwitchingTheLinkTellsTheSupervisorOnce) {
    Fields const on = {{"enabled", "y"}, {"configuration", "Save"}};
    Fields const off = {{"configuration", "Save"}};
    struct {
        Fields const &fields;
        char const *stored;
        Strings commands;
    } const steps[] = {
        {on, "yes\n", {}},
        {off, "no\n", {"/usr/bin/supvis --remove ternd"}},
        {off, "no\n", {}},
        {on, "yes\n", {"/usr/bin/supvis --add ternd --cmd /usr/bin/ternd --init --no-datalog"}},
    };
    for (auto const &step : steps) {
        Html const page = Post(step.fields);
        EXPECT_EQ(page.Count("//div[contains(@class,'form_result_msg')]"), 0U);
        EXPECT_EQ(device::Shell("prm get tern/enabled"), step.stored);
        EXPECT_EQ(device::TakeCommands(), step.commands);
    }
}

TEST_F(OrvaneTest, APathsSettingsAreItsOwn) {
    struct {
        char const *path;
        char const *tab;
        char const *stored;
    } const cases[] = {
        {"mesh", "selected: 1", "yes 10.1.1.1 1 cellular.example 4100 openvpn.example 4100 "},
        {"cellular", "selected: 2", "yes 10.1.1.1 1 10.1.1.1 1 openvpn.example 4100 "},
        {"openvpn", "selected: 3", "yes 10.1.1.1 1 10.1.1.1 1 10.1.1.1 1 "},
    };
    for (auto const &c : cases) {
        Fields const fields = {{"server", "10.1.1.1"}, {"port", "1"}, {c.path, "Save"}};
        std::string const answer = browser.Post(orvanePage, fields).body;
        EXPECT_EQ(Html(answer).One(successMessage), saved);
        EXPECT_NE(answer.find(c.tab), std::string::npos) << c.path;
        EXPECT_EQ(Stored(), c.stored);
    }
    EXPECT_EQ(Save("mesh", "<i>&", "65535").One(successMessage), saved);
    EXPECT_EQ(device::Shell("prm get tern/mesh/server; prm export tern/mesh/ipport"),
              "<i>&\n\"tern/mesh/ipport\",\"65535\", i\n");
    EXPECT_EQ(device::TakeCommands(), Strings()) << "the daemon goes on as it is";
}

TEST_F(OrvaneTest, BadInputIsRefusedAndNothingIsStored) {
    char const *const range = "Invalid range;  minimum 1, maximum 65535";
    struct {
        char const *server;
        char const *port;
        char const *error;
    } const cases[] = {
        {"a", "0", range},          {"a", "65536", range},
        {"a", "-1", range},         {"a", "", range},
        {"a", "4294967297", range}, {"a", "1x", range},
        {"a", "<b>", range},        {"", "1", "This field is required"},
    };
    for (auto const &c : cases) {
        Html const page = Save("cellular", c.server, c.port);
        EXPECT_EQ(page.One(failureMessage), invalid) << c.port;
        EXPECT_EQ(page.One("//*[@id='orvane_cellular_config']" + std::string(fieldErrors)), c.error)
            << c.port;
        EXPECT_EQ(page.One("//*[@id='orvane_cellular_config']//*[@id='cfg_orv_server']/@value"),
                  "cellular.example")
            << "the stored values come back";
    }
    for (Fields const &fields : {Fields{}, Fields{{"mesh", "Write"}, {"server", "a"}, {"port", "1"}},
                                 Fields{{"mesh", "Save"}, {"mesh", "Save"}, {"server", "a"}, {"port", "1"}}})
        EXPECT_EQ(Post(fields).One(failureMessage), invalid);
    EXPECT_NE(browser.Post(orvanePage, Fields{{"server", "\xFF"}, {"port", "1"}, {"mesh", "Save"}})
                  .body.find(invalid),
              std::string::npos);
    EXPECT_EQ(Stored(), untouched);
    EXPECT_EQ(device::TakeCommands(), Strings());
}

TEST_F(OrvaneTest, BothValuesAreWrittenEvenIfOneFails) {
    device::RefusedKey const refused("tern/mesh/server");
    EXPECT_EQ(Save("mesh", "10.1.1.1", "7").One(failureMessage), notSaved);
    EXPECT_EQ(Stored(), "yes mesh.example 7 cellular.example 4100 openvpn.example 4100 ");
}

}  // namespace pages
