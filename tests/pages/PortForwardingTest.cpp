#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char presetExists[] =
    "Port forward rule not added. Preset rule exists with same protocol and source port.";
constexpr char ruleExists[] =
    "Port forward rule not added. User rule exists with same protocol and source port.";

Strings const preset = {"TCP 8002 192.168.0.100 8002 ", "TCP 8003 192.168.0.101 8003 ",
                        "TCP 8800 192.168.0.20 80 "};

/// The parameters of one rule.
Settings Rule(std::string const &folder, std::string const &address, std::string const &port) {
    return {{"portfwd/" + folder + "/d_ip", address}, {"portfwd/" + folder + "/d_port", port}};
}

/// What a form posts for a rule: its row, protocol, port, and where it leads, and the button.
Fields Form(Strings const &row, Fields const &button) {
    Fields fields = button;
    char const *const names[] = {"rowId", "protocol", "sourcePort", "destinationIP", "destinationPort"};
    for (std::size_t i = 0; i < row.size(); ++i)
        fields.emplace_back(names[i], row[i]);
    return fields;
}
Fields const add = {{"add", "Add Row"}};
Fields const save = {{"save", "Save"}};

class PortForwardingTest : public PageTest {
  protected:
    PortForwardingTest()
        : PageTest({"/config/network/port_forwarding",
                    "net/",
                    {{"vnc/port", none}, {"vnc/ipaddr", none}},
                    {},
                    saved,
                    {"/etc/nat_setup.sh web_forwarding"}}) {}

    /// The rules that a table shows, one a line, without the row to add one.
    static Strings Shown(Html const &html, std::string const &heading) {
        std::string const row = "//h3[.='" + heading +
                                "']/following-sibling::*/descendant-or-self::table/"
                                "tr[@class='forwarding_form_row'][not(.//input[@name='add'])]";
        Strings rules(html.Count(row));
        for (char const *const column : {"/td[1]", "/td[2]", "/td[4]", "/td[5]"}) {
            Strings const cells = html.All(row + column);
            for (std::size_t i = 0; i < rules.size(); ++i)
                rules[i] += cells.at(i) + ' ';
        }
        return rules;
    }

    Settings const one = Rule("tcp/00080", "192.168.0.5", "80");
    device::RecordingProgram const natScript{"/etc/nat_setup.sh"};
};

}  // namespace

TEST_F(PortForwardingTest, ShowsPresetRulesAndThatOfTheSharedScreen) {
    Strings withScreen = preset;
    withScreen.insert(withScreen.begin(), "TCP 5900 192.168.0.7 5900 ");
    EXPECT_EQ(Shown(Show({{"vnc/port", "5900, i"}, {"vnc/ipaddr", "192.168.0.7"}}), "Preset Rules"),
              withScreen);
    EXPECT_EQ(Shown(Show({{"vnc/port", "8002, i"}, {"vnc/ipaddr", "192.168.0.7"}}), "Preset Rules"), preset);
}

TEST_F(PortForwardingTest, AddedRulesAreSortedStoredAndApplied) {
    std::pair<Strings, std::string> const cases[] = {
        {{"0", "udp", "8002", "192.168.0.5", "53"}, "udp/08002"},
        {{"1", "tcp", "65535", "255.255.255.255", "70000"}, "tcp/65535"},
        {{"2", "tcp", "5", "01.2.3.4", "0"}, "tcp/00005"},
    };
    Settings all;
    for (auto const &[row, folder] : cases) {
        Settings const rule = Rule(folder, row[3], row[4]);
        Expect(Form(row, add), {.before = all,
                                .written = rule,
                                .shown = {{"cfg_pfwadd_src_port", ""}, {"cfg_pfwadd_dest_ip", ""}}});
        all.insert(rule.begin(), rule.end());
    }
    Html const html = Show(all, {{"//*[@id='row_2']//input[@name='protocol']", "udp"},
                                 {"//*[@id='row_3']//input[@name='rowId']", "3"}});
    EXPECT_EQ(Shown(html, "User Rules"),
              (Strings{"TCP 5 01.2.3.4 0 ", "TCP 65535 255.255.255.255 70000 ", "UDP 8002 192.168.0.5 53 "}));
}

TEST_F(PortForwardingTest, DuplicatesAndBadValuesAreNotAdded) {
    Fields const good = Form({"1", "tcp", "81", "192.168.0.5", "80"}, add);
    Strings const port = {"Invalid port"};
    Run(good, {{.before = one, .fields = {{"sourcePort", "8002"}}, .failure = presetExists},
               {.before = one, .fields = {{"sourcePort", "80"}}, .failure = ruleExists},
               {.fields = {{"sourcePort", "81x"}},
                .failure = invalid,
                .errors = port,
                .logged = "PortForwarding row add failed validation"}});
    Refuses(good, {{"protocol", "sctp", {"This field is required"}},
                   {"sourcePort", "", port},
                   {"sourcePort", "4294967296", port},
                   {"sourcePort", "-1", port},
                   {"destinationIP", "$(reboot)", {"Invalid IP address"}},
                   {"destinationIP", "192.168.0.256", {"Invalid IP address"}},
                   {"destinationIP", "192.168.0.5.1", {"Invalid IP address"}},
                   {"destinationIP", "001.2.3.4", {"Invalid IP address"}},
                   {"destinationIP", " 1.2.3.4", {"Invalid IP address"}},
                   {"destinationIP", "1.2.3.4\n", NoControls("destinationIP")},
                   {"destinationPort", "<i>80</i>", port},
                   {"destinationPort", "-4294967295", port}});
    Expect(add, {.failure = invalid,
                 .errors = {"This field is required", "Invalid port", "Invalid IP address", "Invalid port"}});
}

TEST_F(PortForwardingTest, EditingOpensTheRowAndCancellingClosesIt) {
    Settings const rule = Rule("udp/00053", "192.168.0.5", "5353");
    std::string const row = "//*[@id='row_0']";
    Html const open = Expect(Form({"0", "udp", "53", "192.168.0.5", "5353"}, {{"edit", "Edit"}}),
                             {.before = rule,
                              .success = "",
                              .shown = {{"cfg_pfw_protocol", "udp"},
                                        {"cfg_pfw_src_port", "53"},
                                        {"cfg_pfw_dest_ip", "192.168.0.5"},
                                        {"cfg_pfw_dest_port", "5353"}}});
    EXPECT_EQ(open.Count(row + "//input[@name='delete']"), 0U);

    Html const closed = Expect({{"rowId", "0"}, {"cancel", "Cancel"}}, {.before = rule, .success = ""});
    EXPECT_EQ(closed.Count(row + "//input[@name='edit']"), 1U);
}

TEST_F(PortForwardingTest, SavingReplacesTheRuleOfTheNewKeyOnly) {
    Fields const good = Form({"0", "tcp", "80", "192.168.0.6", "8080"}, save);
    Expect(good, {.before = one, .written = Rule("tcp/00080", "192.168.0.6", "8080")});
    Expect(good, {.before = one,
                  .fields = {{"sourcePort", "81"}},  // the rule of the old port stays
                  .written = Rule("tcp/00081", "192.168.0.6", "8080")});
}

TEST_F(PortForwardingTest, AFailedSaveKeepsTheRowOpenWithItsOldValues) {
    Settings before = one;
    before.merge(Rule("tcp/00090", "192.168.0.5", "90"));
    Fields const good =
        With(Form({"0", "tcp", "80", "192.168.0.5", "1"}, save), {{"protocolOld", "tcp"},
                                                                  {"sourcePortOld", "80"},
                                                                  {"destinationIPOld", "192.168.0.5"},
                                                                  {"destinationPortOld", "8080"}});
    std::tuple<Fields, char const *, Strings> const cases[] = {
        {{{"destinationIP", "192.168.0.300"}}, invalid, {"Invalid IP address"}},
        {{{"sourcePort", "90"}}, ruleExists, {}},
        {{{"sourcePort", "8003"}}, presetExists, {}},
    };
    for (auto const &[changes, failure, errors] : cases)
        Expect(good, {.before = before,
                      .fields = changes,
                      .failure = failure,
                      .errors = errors,
                      .shown = {{"cfg_pfw_src_port", "80"},
                                {"cfg_pfw_dest_ip", "192.168.0.5"},
                                {"cfg_pfw_dest_port", "8080"}}});
}

TEST_F(PortForwardingTest, DeletingTakesTheRowAndAlwaysApplies) {
    Settings before = one;
    before.merge(Rule("udp/00080", "192.168.0.5", "80"));
    Fields const press = {{"delete", "Delete"}};
    for (char const *row : {"2", "-1", "x", "99999999999999999999"})
        Expect(press,
               {.before = before, .fields = {{"rowId", row}}, .success = "", .commands = page.applies});
    Html const html = Expect(press, {.before = before,
                                     .fields = {{"rowId", "0"}},
                                     .success = "",
                                     .written = Rule("tcp/00080", none, none),
                                     .commands = page.applies});
    EXPECT_EQ(Shown(html, "User Rules"), Strings{"UDP 80 192.168.0.5 80 "});
    // Sent twice: the row has the next rule by now.
    Settings const next = Rule("udp/00080", "192.168.0.5", "80");
    Fields const row = {{"sourcePort", "80"}, {"rowId", "0"}, {"delete", "Delete"}};
    Run(row, {{.before = next, .fields = {{"protocol", "tcp"}}, .success = "", .commands = page.applies},
              {.before = next,
               .fields = {{"protocol", "udp"}},
               .success = "",
               .written = Rule("udp/00080", none, none),
               .commands = page.applies}});
}

TEST_F(PortForwardingTest, BadStoredEntriesAreSkippedAndHalfRulesShown) {
    device::Log const log;
    Html const html = Show({{"portfwd/tcp/00010/d_ip", ""},
                            {"portfwd/tcp/00011/d_port", "0, i"},
                            {"portfwd/tcp/00012/d_ip", "<b>1</b>"},
                            {"portfwd/udp/00013/d_port", "99, i"},
                            {"portfwd/udp/00014/comment", "mine"},
                            {"portfwd/tcpdump/00015/d_ip", "1.2.3.4"}});
    EXPECT_EQ(Shown(html, "User Rules"), (Strings{"TCP 12 <b>1</b> 0 ", "UDP 13  99 "}));
    EXPECT_TRUE(log.Has("PortForwarding load TCP values: Bad PRM parameter net/portfwd/tcp/00011/d_port"));
}

TEST_F(PortForwardingTest, AStoreThatRefusesIsNotTold) {
    Expect(Form({"0", "tcp", "80", "192.168.0.5", "80"}, add),
           {.refused = "portfwd/tcp/00080/d_ip",
            .written = {{"portfwd/tcp/00080/d_port", "80"}},
            .logged = "PortForwarding rule tcp 80 could not be stored"});
}

}  // namespace pages
