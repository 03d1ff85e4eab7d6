#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class Ethernet1Test : public PageTest {
  protected:
    Ethernet1Test()
        : PageTest({"/config/network/ethernet1",
                    "net/lan_",
                    {{"addr_mode", "static"},
                     {"ipaddr", "192.168.0.1"},
                     {"netmask", "255.255.255.0"},
                     {"gateway", "192.168.0.254"},
                     {"advertise_speed", "15, i"}},
                    {"/usr/sbin/iw dev", "/usr/sbin/pppstats"},
                    "Ethernet 1 settings updated, reboot to take effect",
                    {},
                    true}) {}

    Fields const form = {{"addressMode", "static"}, {"ipAddress", "10.1.2.3"}, {"netmask", "255.240.0.0"},
                         {"gateway", "10.1.2.254"}, {"speedsAvailable", "3"},  {"saveButton", "Save"}};
};

}  // namespace

TEST_F(Ethernet1Test, ShowsTheStoredSettings) {
    device::ReplacedFile const leases("/tmp/dhcp.leases", "lease-17\n");
    Html const html =
        Show({{"advertise_speed", "26, i"}}, {{"config_page_title", " Ethernet 1 Configuration "},
                                              {"cfg_eth1_address_mode", "static"},
                                              {"cfg_eth1_ip", "192.168.0.1"},
                                              {"cfg_eth1_gateway", "192.168.0.254"},
                                              {"cfg_eth1_netmask", "255.255.255.0"}});
    EXPECT_EQ(html.All("//*[@id='cfg_eth1_speed']/option[@selected]"),
              (Strings{"10Mbs Full duplex", "100Mbs Full duplex"}))
        << "only the bits that have a speed";

    auto const netmasks = html.All("//*[@id='cfg_eth1_netmask']/option");
    ASSERT_EQ(netmasks.size(), 23U);
    EXPECT_EQ(netmasks.front(), "255.255.255.252/30");
    EXPECT_EQ(netmasks.back(), "255.0.0.0/8");

    auto const outputs = html.All("//*[@id='ethernet1_network_status']//td[@colspan='2']//pre");
    ASSERT_EQ(outputs.size(), 7U);
    EXPECT_NE(outputs[0].find("br1"), std::string::npos);
    EXPECT_EQ(outputs[4], device::ReadFile("/etc/resolv.conf"));
    EXPECT_EQ(outputs[6], "lease-17\n");
}

TEST_F(Ethernet1Test, StoresForTheNextStart) {
    Settings const dhcp = {{"addr_mode", "dhcp"}, {"advertise_speed", "8, i"}};
    Fields const storedShown = {{"cfg_eth1_ip", "192.168.0.1"},
                                {"cfg_eth1_netmask", "255.255.255.0"},
                                {"cfg_eth1_address_mode", "dhcp"}};
    Run(form, {{.written = {{"ipaddr", "10.1.2.3"},
                            {"netmask", "255.240.0.0"},
                            {"gateway", "10.1.2.254"},
                            {"advertise_speed", "8, i"}},
                .shown = {{"cfg_eth1_ip", "10.1.2.3"}}},
               {.fields = {{"addressMode", "dhcp"},
                           {"ipAddress", none},
                           {"gateway", none},
                           {"netmask", none},
                           {"saveButton", none}},
                .written = dhcp,
                .shown = storedShown},
               {.fields = {{"addressMode", "dhcp"},
                           {"speedsAvailable", "0"},
                           {"speedsAvailable", "1"},
                           {"speedsAvailable", "2"},
                           {"speedsAvailable", "3"}},
                .written = {{"addr_mode", "dhcp"}}}});
    Settings const all = {{"ipaddr", "10.1.2.3"}, {"gateway", "10.1.2.254"}, {"netmask", "255.240.0.0"}};
    StopsAt(form, {{"ipaddr", {}}, {"advertise_speed", all}});
}

TEST_F(Ethernet1Test, BadInputIsRefused) {
    Strings const address = {"Invalid IP address"};
    Strings const required = {"This field is required"};
    Strings const noSpeed = {"At least one speed must be selected"};
    Refuses(form, {{"ipAddress", "", address},
                   {"ipAddress", none, address},
                   {"ipAddress", "10.1.2.3; reboot", address},
                   {"gateway", "<b>", address},
                   {"netmask", "255.255.255.255", required},
                   {"addressMode", "automatic", required},
                   {"speedsAvailable", none, noSpeed},
                   {"speedsAvailable", "4", noSpeed}});
    Expect(form, {.fields = {{"gateway", "1.2.3"}},
                  .failure = invalid,
                  .errors = address,
                  .shown = {{"cfg_eth1_ip", "10.1.2.3"}, {"cfg_eth1_gateway", "1.2.3"}}});
}

}  // namespace pages
