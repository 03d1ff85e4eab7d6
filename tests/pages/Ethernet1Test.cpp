#include <gtest/gtest.h>

#include <fstream>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char ethernetPage[] = "/config/network/ethernet1";
constexpr char rebootFlag[] = "/tmp/webconfig_reboot_flag";
constexpr char updated[] = "Ethernet 1 settings updated, reboot to take effect";

Fields const staticFields = {{"addressMode", "static"}, {"ipAddress", "10.1.2.3"}, {"netmask", "255.240.0.0"},
                             {"gateway", "10.1.2.254"}, {"speedsAvailable", "3"},  {"saveButton", "Save"}};

/// \a fields with another value for \a name, or without the field where \a value is null.
Fields With(Fields fields, std::string const &name, char const *value) {
    std::erase_if(fields, [&](auto const &field) { return field.first == name; });
    if (value)
        fields.emplace_back(name, value);
    return fields;
}

class Ethernet1Test : public testing::Test {
  protected:
    Ethernet1Test() {
        device::Shell(
            "prm set net/lan_addr_mode static; prm set net/lan_ipaddr 192.168.0.1;"
            "prm set net/lan_netmask 255.255.255.0; prm set net/lan_gateway 192.168.0.254;"
            "prm set -t int net/lan_advertise_speed 15");
    }
    ~Ethernet1Test() override { device::Shell(std::string("rm -f ") + rebootFlag); }

    Html Post(Fields const &fields) { return Html(browser.Post(ethernetPage, fields).body); }

    /// Mode, address, netmask, gateway and speeds in the store.
    static std::string Stored() {
        return device::Shell(
            "for key in addr_mode ipaddr netmask gateway advertise_speed; do "
            "echo -n $(prm get net/lan_$key)' '; done");
    }
    static constexpr char untouched[] = "static 192.168.0.1 255.255.255.0 192.168.0.254 15 ";

    device::KeptParameters const settings{"net/lan_"};
    Browser browser{device::address};
};

}  // namespace

TEST_F(Ethernet1Test, ShowsTheStoredSettings) {
    device::Shell("prm set -t int net/lan_advertise_speed 26; echo lease-17 >/tmp/dhcp.leases");
    Html const page(browser.Get(ethernetPage).body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Ethernet 1 Configuration ");
    EXPECT_EQ(page.One("//*[@id='cfg_eth1_address_mode']/option[@selected]/@value"), "static");
    EXPECT_EQ(page.One("//*[@id='cfg_eth1_ip']/@value"), "192.168.0.1");
    EXPECT_EQ(page.One("//*[@id='cfg_eth1_gateway']/@value"), "192.168.0.254");
    EXPECT_EQ(page.One("//*[@id='cfg_eth1_netmask']/option[@selected]"), "255.255.255.0/24");
    EXPECT_EQ(page.All("//*[@id='cfg_eth1_speed']/option[@selected]"),
              (std::vector<std::string>{"10Mbs Full duplex", "100Mbs Full duplex"}))
        << "only the bits that have a speed";

    auto const netmasks = page.All("//*[@id='cfg_eth1_netmask']/option");
    ASSERT_EQ(netmasks.size(), 23U);
    EXPECT_EQ(netmasks.front(), "255.255.255.252/30");
    EXPECT_EQ(netmasks[7], "255.255.254.0/23");
    EXPECT_EQ(netmasks.back(), "255.0.0.0/8");

    std::string const sections = "//*[@id='ethernet1_network_status']//td[@colspan='2']";
    EXPECT_EQ(page.All(sections + "/h3"),
              (std::vector<std::string>{"Network Config", "Routing", "Wireless Config", "Network Status",
                                        "DNS Settings", "PPP Status", "DHCP Leases"}));
    auto const outputs = page.All(sections + "//pre");
    EXPECT_NE(outputs[0].find("br1"), std::string::npos);
    EXPECT_EQ(outputs[4], device::ReadFile("/etc/resolv.conf"));
    EXPECT_EQ(outputs[6], "lease-17\n");
    device::Shell("rm /tmp/dhcp.leases");
}

TEST_F(Ethernet1Test, StaticSettingsAreStoredAndWaitForTheReboot) {
    device::TakeCommands();
    Html const page = Post(staticFields);
    EXPECT_EQ(page.One(successMessage), updated);
    EXPECT_EQ(page.Count("//div[@id='alertsBox']"), 1U);
    EXPECT_TRUE(std::ifstream(rebootFlag).good());
    EXPECT_EQ(Stored(), "static 10.1.2.3 255.240.0.0 10.1.2.254 8 ");
    EXPECT_EQ(device::Shell("prm export net/lan_advertise_speed"), "\"net/lan_advertise_speed\",\"8\", i\n");
    // Nothing but the page's own diagnoses has run.
    EXPECT_EQ(device::TakeCommands(), (std::vector<std::string>{"/usr/sbin/iw dev", "/usr/sbin/pppstats"}));
    EXPECT_EQ(page.One("//*[@id='cfg_eth1_ip']/@value"), "10.1.2.3");
}

TEST_F(Ethernet1Test, DhcpKeepsTheStoredAddress) {
    for (auto const &fields : {With(With(staticFields, "addressMode", "dhcp"), "ipAddress", ""),
                               Fields{{"addressMode", "dhcp"}, {"speedsAvailable", "3"}}}) {
        Html const page = Post(fields);
        EXPECT_EQ(page.One(successMessage), updated);
        EXPECT_EQ(Stored(), "dhcp 192.168.0.1 255.255.255.0 192.168.0.254 8 ");
        EXPECT_EQ(page.One("//*[@id='cfg_eth1_ip']/@value"), "192.168.0.1");
        EXPECT_EQ(page.One("//*[@id='cfg_eth1_netmask']/option[@selected]/@value"), "255.255.255.0");
        EXPECT_EQ(page.One("//*[@id='cfg_eth1_address_mode']/option[@selected]/@value"), "dhcp");
    }
    auto every = With(staticFields, "addressMode", "dhcp");
    for (char const *speed : {"0", "1", "2"})
        every.emplace_back("speedsAvailable", speed);
    Post(every);
    EXPECT_EQ(Stored(), "dhcp 192.168.0.1 255.255.255.0 192.168.0.254 15 ");
}

TEST_F(Ethernet1Test, BadInputIsRefusedAndNothingIsStored) {
    char const *const address = "Invalid IP address";
    char const *const required = "This field is required";
    char const *const noSpeed = "At least one speed must be selected";
    struct {
        char const *field;
        char const *value;
        char const *error;
    } const cases[] = {
        {"ipAddress", "", address},           {"ipAddress", nullptr, address},
        {"ipAddress", "256.1.1.1", address},  {"ipAddress", "10.1.2.3; reboot", address},
        {"ipAddress", "10.1.2.3\n", address}, {"gateway", "", address},
        {"gateway", "<b>", address},          {"netmask", "255.255.255.255", required},
        {"netmask", nullptr, required},       {"addressMode", "automatic", required},
        {"addressMode", nullptr, required},   {"speedsAvailable", nullptr, noSpeed},
        {"speedsAvailable", "4", noSpeed},
    };
    for (auto const &c : cases) {
        Answer const answer = browser.Post(ethernetPage, With(staticFields, c.field, c.value));
        EXPECT_EQ(answer.status, 200);
        Html const page(answer.body);
        EXPECT_EQ(page.One(failureMessage), invalid) << c.field << " = " << (c.value ? c.value : "(none)");
        EXPECT_EQ(page.One(fieldErrors), c.error) << c.field << " = " << (c.value ? c.value : "(none)");
        EXPECT_EQ(Stored(), untouched);
    }
    EXPECT_NE(browser.Post(ethernetPage, With(staticFields, "gateway", "\xFF")).body.find(invalid),
              std::string::npos);
    EXPECT_EQ(Stored(), untouched);
    EXPECT_FALSE(std::ifstream(rebootFlag).good());
    Html const page = Post(With(staticFields, "gateway", "1.2.3"));
    EXPECT_EQ(page.One("//*[@id='cfg_eth1_ip']/@value"), "10.1.2.3") << "what was typed stays";
    EXPECT_EQ(page.One("//*[@id='cfg_eth1_gateway']/@value"), "1.2.3");
}

TEST_F(Ethernet1Test, AFailedWriteEndsTheSequence) {
    struct {
        char const *refused;
        char const *stored;
    } const cases[] = {
        {"net/lan_ipaddr", "static 192.168.0.1 255.255.255.0 192.168.0.254 15 "},
        {"net/lan_netmask", "static 10.1.2.3 255.255.255.0 10.1.2.254 15 "},
        {"net/lan_advertise_speed", "static 10.1.2.3 255.240.0.0 10.1.2.254 15 "},
    };
    for (auto const &c : cases) {
        device::RefusedKey const refused(c.refused);
        EXPECT_EQ(Post(staticFields).One(failureMessage), notSaved);
        EXPECT_EQ(Stored(), c.stored);
        EXPECT_FALSE(std::ifstream(rebootFlag).good());
    }
}

TEST_F(Ethernet1Test, StoredValuesThatTheFormDoesNotOfferBreakNothing) {
    device::Shell(
        "prm set net/lan_addr_mode bootp; prm set net/lan_netmask 255.255.255.254;"
        "prm set net/lan_ipaddr '<i>&'; prm del net/lan_advertise_speed");
    Answer const answer = browser.Get(ethernetPage);
    EXPECT_EQ(answer.status, 200);
    Html const page(answer.body);
    EXPECT_EQ(page.Count("//*[@id='ethernet1_config']//option[@selected]"), 0U);
    EXPECT_EQ(page.One("//*[@id='cfg_eth1_ip']/@value"), "<i>&");
}

}  // namespace pages
