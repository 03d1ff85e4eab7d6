#include <gtest/gtest.h>

#include <fstream>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char dnsPage[] = "/config/network/dns_server";
constexpr char updated[] = "DNS server settings updated, reboot to take effect";

using Strings = std::vector<std::string>;

class DNSServerTest : public testing::Test {
  protected:
    DNSServerTest() {
        device::Shell(
            "prm set net/lan_dns1 10.0.0.1; prm set net/lan_dns2 10.0.0.2;"
            "prm set net/lan_dns_suffix old.example; prm set net/lan_dns_is_append yes");
        device::TakeCommands();
    }

    Html Post(Fields const &fields) { return Html(browser.Post(dnsPage, fields).body); }
    static std::string Stored() {
        return device::Shell(
            "for key in dns1 dns2 dns_suffix dns_is_append; do "
            "echo -n $(prm get net/lan_$key)' '; done");
    }
    static Strings Shown(Html const &page) {
        return page.All("//*[@id='dns_server_config']//input[@type='text']/@value");
    }

    Fields const fields = {{"dnsServer0", "8.8.8.8"}, {"dnsServer1", ""}, {"dnsSuffix", "<i>"}};
    device::KeptParameters const settings{"net/lan_dns"};
    Browser browser{device::address};
};

}  // namespace

TEST_F(DNSServerTest, ShowsTheStoredSettings) {
    Html const page(browser.Get(dnsPage).body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Custom DNS Servers ");
    EXPECT_EQ(Shown(page), (Strings{"10.0.0.1", "10.0.0.2", "old.example"}));
    EXPECT_EQ(page.Count("//input[@name='isAppend'][@checked]"), 1U);
}

TEST_F(DNSServerTest, StoresForTheNextStartAndShowsWhatWasPosted) {
    Html const page = Post(fields);
    EXPECT_EQ(page.One(successMessage), updated);
    EXPECT_EQ(Shown(page), (Strings{"8.8.8.8", "", "<i>"}));
    EXPECT_EQ(page.Count("//input[@name='isAppend'][@checked]"), 0U);
    EXPECT_EQ(Stored(), "8.8.8.8  <i> no ");
    EXPECT_EQ(device::TakeCommands(), Strings());
    EXPECT_FALSE(std::ifstream("/tmp/webconfig_reboot_flag").good());

    Fields withAppend = fields;
    withAppend.emplace_back("isAppend", "y");
    Post(withAppend);
    EXPECT_EQ(Stored(), "8.8.8.8  <i> yes ");
}

TEST_F(DNSServerTest, WhatIsRefusedStaysInTheForm) {
    Html const noText = Post({{"dnsServer0", "8.8.8.8"}, {"dnsSuffix", "control \x01"}});
    EXPECT_EQ(noText.One(failureMessage), invalid);
    EXPECT_EQ(noText.One("//*[@id='cfg_eth1_dns0']/@value"), "8.8.8.8");
    EXPECT_EQ(Stored(), "10.0.0.1 10.0.0.2 old.example yes ");

    device::RefusedKey const refused("net/lan_dns_suffix");
    Html const page = Post(fields);
    EXPECT_EQ(page.One(failureMessage), notSaved);
    EXPECT_EQ(Shown(page), (Strings{"8.8.8.8", "", "<i>"}));
    EXPECT_EQ(Stored(), "8.8.8.8  old.example yes ");
}

}  // namespace pages
