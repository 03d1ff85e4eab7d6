#include <gtest/gtest.h>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char forwardingPage[] = "/config/network/port_forwarding";
constexpr char presetExists[] =
    "Port forward rule not added. Preset rule exists with same protocol and source port.";
constexpr char ruleExists[] =
    "Port forward rule not added. User rule exists with same protocol and source port.";

using Strings = std::vector<std::string>;
Strings const applied = {"/etc/nat_setup.sh web_forwarding"};
Strings const nothing;

class PortForwardingTest : public testing::Test {
  protected:
    PortForwardingTest() {
        device::Shell("(prm del net/portfwd; prm del net/vnc) 2>/dev/null");
        device::TakeCommands();
    }

    Html Send(Fields const &fields) { return Html(browser.Post(forwardingPage, fields).body); }
    /// Posts a rule with a button and the position of the row that it stands in.
    Html Post(std::string const &button, std::string const &caption, std::string const &row,
              Strings const &rule) {
        return Send({{"rowId", row},
                     {"protocol", rule[0]},
                     {"sourcePort", rule[1]},
                     {"destinationIP", rule[2]},
                     {"destinationPort", rule[3]},
                     {button, caption}});
    }
    Html Add(std::string const &row, Strings const &rule) { return Post("add", "Add Row", row, rule); }
    Html Press(std::string const &button, std::string const &caption, std::string const &row) {
        return Send({{"rowId", row}, {button, caption}});
    }

    static std::string Stored() { return device::Shell("prm export net/portfwd"); }
    /// The lines of the store for one rule.
    static std::string Lines(std::string const &folder, std::string const &address, std::string const &port) {
        return "\"net/portfwd/" + folder + "/d_ip\",\"" + address + "\", s\n\"net/portfwd/" + folder +
               "/d_port\",\"" + port + "\", s\n";
    }
    /// The rules that a table shows, one a line.
    static Strings Shown(Html const &page, std::string const &heading) {
        std::string const row = "//h3[.='" + heading +
                                "']/following-sibling::*/descendant-or-self::table/"
                                "tr[@class='forwarding_form_row']";
        auto const columns = {page.All(row + "/td[1]"), page.All(row + "/td[2]"), page.All(row + "/td[4]"),
                              page.All(row + "/td[5]")};
        Strings rules(columns.begin()->size());
        for (auto const &column : columns) {
            for (std::size_t i = 0; i < column.size(); ++i)
                rules[i] += column[i] + ' ';
        }
        return rules;
    }

    device::KeptParameters const rules{"net/portfwd/"};
    device::KeptParameters const screen{"net/vnc/"};
    device::RecordingProgram const natScript{"/etc/nat_setup.sh"};
    Browser browser{device::address};
};

}  // namespace

TEST_F(PortForwardingTest, ShowsPresetRulesAndThatOfTheSharedScreen) {
    Strings const preset = {"TCP 8002 192.168.0.100 8002 ", "TCP 8003 192.168.0.101 8003 ",
                            "TCP 8800 192.168.0.20 80 "};
    Html const page(browser.Get(forwardingPage).body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Port Forwarding ");
    EXPECT_EQ(Shown(page, "Preset Rules"), preset);
    EXPECT_EQ(page.One("//*[@id='row_0']//input[@name='rowId']/@value"), "0");
    EXPECT_EQ(page.One("//*[@id='row_0']//*[@id='cfg_pfwadd_proto']/option[@selected]"), "TCP");

    device::Shell("prm set -t int net/vnc/port 5900; prm set net/vnc/ipaddr 192.168.0.7");
    Strings withScreen = preset;
    withScreen.insert(withScreen.begin(), "TCP 5900 192.168.0.7 5900 ");
    EXPECT_EQ(Shown(Html(browser.Get(forwardingPage).body), "Preset Rules"), withScreen);

    device::Shell("prm set -t int net/vnc/port 8002");
    EXPECT_EQ(Shown(Html(browser.Get(forwardingPage).body), "Preset Rules"), preset);
    EXPECT_EQ(device::TakeCommands(), nothing);
}

TEST_F(PortForwardingTest, AddedRulesAreSortedStoredAndApplied) {
    struct {
        Strings rule;
        std::string folder;
    } const cases[] = {
        {{"udp", "8002", "192.168.0.5", "53"}, "udp/08002"},
        {{"tcp", "65535", "192.168.0.6", "70000"}, "tcp/65535"},
        {{"tcp", "5", "01.2.3.4", "0"}, "tcp/00005"},
        {{"tcp", "123456", "192.168.0.8", "1"}, "tcp/123456"},
    };
    int row = 0;
    for (auto const &c : cases) {
        Html const page = Add(std::to_string(row++), c.rule);
        EXPECT_EQ(page.One(successMessage), saved);
        EXPECT_EQ(device::Shell("prm export net/portfwd/" + c.folder), Lines(c.folder, c.rule[2], c.rule[3]));
        EXPECT_EQ(device::TakeCommands(), applied);
        EXPECT_EQ(page.One("//*[@id='cfg_pfwadd_src_port']/@value"), "") << "the add row is empty again";
        EXPECT_EQ(page.Count("//*[@id='cfg_pfwadd_dest_ip']/@value"), 0U);
    }
    Html const page(browser.Get(forwardingPage).body);
    auto shown = Shown(page, "User Rules");
    shown.pop_back();  // the add row
    EXPECT_EQ(shown, (Strings{"TCP 5 01.2.3.4 0 ", "TCP 65535 192.168.0.6 70000 ",
                              "TCP 123456 192.168.0.8 1 ", "UDP 8002 192.168.0.5 53 "}));
    EXPECT_EQ(page.One("//*[@id='row_3']//input[@name='protocol']/@value"), "udp");
    EXPECT_EQ(page.One("//*[@id='row_4']//input[@name='rowId']/@value"), "4");
}

TEST_F(PortForwardingTest, DuplicatesAndBadValuesAreNotAdded) {
    Add("0", {"tcp", "80", "192.168.0.5", "80"});
    std::string const before = Stored();
    device::TakeCommands();

    EXPECT_EQ(Add("1", {"tcp", "8002", "192.168.0.5", "80"}).One(failureMessage), presetExists);
    EXPECT_EQ(Add("1", {"tcp", "80", "192.168.0.9", "80"}).One(failureMessage), ruleExists);

    Strings const badRules[] = {
        {"", "81", "192.168.0.5", "80"},           {"sctp", "81", "192.168.0.5", "80"},
        {"tcp", "", "192.168.0.5", "80"},          {"tcp", "81x", "192.168.0.5", "80"},
        {"tcp", "4294967296", "1.2.3.4", "80"},    {"tcp", "81", "", "80"},
        {"tcp", "81", "$(reboot)", "80"},          {"tcp", "81", "192.168.0.5", ""},
        {"tcp", "81", "192.168.0.5", "<i>80</i>"}, {"tcp", "81", "192.168.0.256", "80"},
        {"tcp", "-1", "192.168.0.5", "80"},        {"tcp", "81", "192.168.0.5", "-4294967295"},
        {"tcp", "+81", "192.168.0.5", "80"},       {"tcp", "81", "192.168.0.5", " -0"},
    };
    for (auto const &rule : badRules) {
        Html const page = Add("1", rule);
        EXPECT_EQ(page.One(failureMessage), invalid) << testing::PrintToString(rule);
        EXPECT_EQ(page.Count(fieldErrors), 1U) << testing::PrintToString(rule);
        EXPECT_EQ(page.Count("//i"), 0U);
    }
    EXPECT_EQ(Send({{"add", "Add Row"}}).One(failureMessage), invalid);
    Fields const twice = {{"rowId", "1"},
                          {"protocol", "udp"},
                          {"protocol", "tcp"},
                          {"sourcePort", "81"},
                          {"destinationIP", "192.168.0.5"},
                          {"destinationPort", "80"},
                          {"add", "Add Row"}};
    EXPECT_EQ(Send(twice).One(failureMessage), invalid);
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "PortForwarding row add failed validation"));
    EXPECT_EQ(Stored(), before);
    EXPECT_EQ(device::TakeCommands(), nothing);
}

TEST_F(PortForwardingTest, EditingOpensTheRowAndCancellingClosesIt) {
    Add("0", {"udp", "53", "192.168.0.5", "5353"});
    std::string const before = Stored();
    device::TakeCommands();

    Html const open = Post("edit", "Edit", "0", {"udp", "53", "192.168.0.5", "5353"});
    std::string const row = "//*[@id='row_0']";
    EXPECT_EQ(open.One(row + "//*[@id='cfg_pfw_protocol']/option[@selected]/@value"), "udp");
    struct {
        char const *name;
        char const *value;
    } const fields[] = {
        {"protocolOld", "udp"},
        {"sourcePort", "53"},
        {"sourcePortOld", "53"},
        {"destinationIP", "192.168.0.5"},
        {"destinationIPOld", "192.168.0.5"},
        {"destinationPort", "5353"},
        {"destinationPortOld", "5353"},
        {"save", "Save"},
        {"cancel", "Cancel"},
        {"rowId", "0"},
    };
    for (auto const &field : fields)
        EXPECT_EQ(open.One(row + "//input[@name='" + field.name + "']/@value"), field.value) << field.name;
    EXPECT_EQ(open.Count(row + "//input[@name='delete']"), 0U);

    Html const closed = Press("cancel", "Cancel", "0");
    EXPECT_EQ(closed.Count(row + "//input[@name='edit']"), 1U);
    EXPECT_EQ(Press("save", "Not a caption", "0").Count("//div[contains(@class,'form_result_msg')]"), 0U);
    EXPECT_EQ(Stored(), before);
    EXPECT_EQ(device::TakeCommands(), nothing);
}

TEST_F(PortForwardingTest, SavingReplacesTheRuleOfTheNewKeyOnly) {
    Add("0", {"tcp", "80", "192.168.0.5", "80"});
    device::TakeCommands();
    Html const same = Post("save", "Save", "0", {"tcp", "80", "192.168.0.6", "8080"});
    EXPECT_EQ(same.One(successMessage), saved);
    EXPECT_EQ(same.Count("//*[@id='row_0']//input[@name='edit']"), 1U) << "the row is closed";
    EXPECT_EQ(Stored(), Lines("tcp/00080", "192.168.0.6", "8080"));
    EXPECT_EQ(device::TakeCommands(), applied);

    Post("save", "Save", "0", {"tcp", "81", "192.168.0.6", "8080"});
    EXPECT_EQ(Stored(), Lines("tcp/00080", "192.168.0.6", "8080") + Lines("tcp/00081", "192.168.0.6", "8080"))
        << "the rule of the old port stays";
    EXPECT_EQ(device::TakeCommands(), applied);
}

TEST_F(PortForwardingTest, AFailedSaveKeepsTheRowOpenWithItsOldValues) {
    Add("0", {"tcp", "80", "192.168.0.5", "80"});
    Add("1", {"tcp", "90", "192.168.0.5", "90"});
    std::string const before = Stored();
    device::TakeCommands();
    struct {
        char const *port;
        char const *address;
        char const *message;
    } const cases[] = {
        {"80", "192.168.0.300", invalid},        {"x", "192.168.0.5", invalid},
        {"-4294967206", "192.168.0.5", invalid}, {"90", "192.168.0.5", ruleExists},
        {"8003", "192.168.0.5", presetExists},
    };
    for (auto const &c : cases) {
        Html const failed = Send({{"rowId", "0"},
                                  {"protocol", "tcp"},
                                  {"protocolOld", "tcp"},
                                  {"sourcePort", c.port},
                                  {"sourcePortOld", "80"},
                                  {"destinationIP", c.address},
                                  {"destinationIPOld", "192.168.0.5"},
                                  {"destinationPort", "1"},
                                  {"destinationPortOld", "80"},
                                  {"save", "Save"}});
        EXPECT_EQ(failed.One(failureMessage), c.message);
        EXPECT_EQ(failed.One("//*[@id='cfg_pfw_src_port']/@value"), "80");
        EXPECT_EQ(failed.One("//*[@id='cfg_pfw_dest_ip']/@value"), "192.168.0.5");
        EXPECT_EQ(failed.One("//*[@id='cfg_pfw_dest_port']/@value"), "80");
    }
    EXPECT_EQ(Stored(), before);
    EXPECT_EQ(device::TakeCommands(), nothing);
}

TEST_F(PortForwardingTest, DeletingTakesTheRowAndAlwaysApplies) {
    Add("0", {"tcp", "80", "192.168.0.5", "80"});
    Add("1", {"udp", "80", "192.168.0.5", "80"});
    std::string const before = Stored();
    device::TakeCommands();
    for (char const *row : {"2", "-1", "x", "", "99999999999999999999"}) {
        Press("delete", "Delete", row);
        EXPECT_EQ(Stored(), before) << row;
        EXPECT_EQ(device::TakeCommands(), applied) << row;
    }
    Html const page = Press("delete", "Delete", "0");
    EXPECT_EQ(page.Count("//div[contains(@class,'form_result_msg')]"), 0U);
    EXPECT_EQ(Shown(page, "User Rules").size(), 2U) << "the other rule and the add row";
    EXPECT_EQ(Stored(), Lines("udp/00080", "192.168.0.5", "80"));

    // Sent twice: the row has the next rule by now.
    Fields const row = {{"sourcePort", "80"}, {"rowId", "0"}, {"delete", "Delete"}};
    for (char const *protocol : {"tcp", "udp"}) {
        EXPECT_EQ(Stored(), Lines("udp/00080", "192.168.0.5", "80"));
        Fields form = row;
        form.emplace_back("protocol", protocol);
        Send(form);
    }
    EXPECT_EQ(Stored(), "");
}

TEST_F(PortForwardingTest, BadStoredEntriesAreSkippedAndHalfRulesShown) {
    device::Shell(
        "prm set net/portfwd/tcp/00010/d_ip '';"
        "prm set -t int net/portfwd/tcp/00011/d_port 0;"
        "prm set net/portfwd/tcp/00012/d_ip '<b>1</b>';"
        "prm set -t int net/portfwd/udp/00013/d_port 99;"
        "prm set net/portfwd/udp/00014/comment mine;"
        "prm set net/portfwd/tcpdump/00015/d_ip 1.2.3.4");
    Html const page(browser.Get(forwardingPage).body);
    auto shown = Shown(page, "User Rules");
    shown.pop_back();
    EXPECT_EQ(shown, (Strings{"TCP 12 <b>1</b> 0 ", "UDP 13  99 "}));
    EXPECT_TRUE(device::WaitForText(
        "/var/log/messages",
        "PortForwarding load TCP values: Bad PRM parameter net/portfwd/tcp/00011/d_port"));
}

TEST_F(PortForwardingTest, AForwardedPortCarriesConnectionsUntilItIsDeleted) {
    auto const askFromOutside = [] {
        return device::Shell("nsenter --net=/run/netns/outside curl -s -m 1 http://10.99.0.2:4711/");
    };
    std::string const wanted = device::Shell("curl -s http://192.168.0.20/");
    ASSERT_NE(wanted, "");
    EXPECT_EQ(askFromOutside(), "");
    Add("0", {"tcp", "4711", "192.168.0.20", "80"});
    EXPECT_EQ(askFromOutside(), wanted);
    Press("delete", "Delete", "0");
    EXPECT_EQ(askFromOutside(), "");
}

TEST_F(PortForwardingTest, AStoreThatRefusesIsNotNoticed) {
    device::RefusedKey const refused("net/portfwd/tcp/00080/d_ip");
    EXPECT_EQ(Add("0", {"tcp", "80", "192.168.0.5", "80"}).One(successMessage), saved);
    EXPECT_EQ(Stored(), "\"net/portfwd/tcp/00080/d_port\",\"80\", s\n");
    EXPECT_EQ(device::TakeCommands(), applied);
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "PortForwarding rule tcp 80 could not be stored"));
}

}  // namespace pages
