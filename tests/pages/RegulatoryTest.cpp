#include <gtest/gtest.h>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char regulatoryPage[] = "/config/regulatory/wifi";
constexpr char message[] = "//div[@id='id_message']";

using Commands = std::vector<std::string>;

class RegulatoryTest : public testing::Test {
  protected:
    RegulatoryTest() {
        device::Shell("prm export net/wifi >/tmp/wifi_settings; rm -rf /var/lib/lmu; mkdir -p /etc/fail");
        SetModule("laird", "FCC");
        device::TakeCommands();
    }
    ~RegulatoryTest() override {
        device::Shell(
            "prm del /net/wifi; prm import /tmp/wifi_settings; rm -rf /tmp/wifi_settings /var/lib/lmu");
    }

    static void SetModule(std::string const &vendor, std::string const &domain) {
        device::Shell("prm set net/wifi/vendor " + vendor + "; prm set net/wifi/region_code " + domain);
    }
    static std::string StoredDomain() { return device::Shell("prm get net/wifi/region_code"); }
    Html Save(std::string const &domain) {
        return Html(browser.Post(regulatoryPage, {{"hidden_domain", domain}, {"Save", "Save"}}).body);
    }

    Browser browser{device::address};
};

}  // namespace

TEST_F(RegulatoryTest, ShowsTheDomainAndTheChoice) {
    Html const page(browser.Get(regulatoryPage).body);
    EXPECT_EQ(page.One("//title"), "Configure WiFi Regulatory Domain");
    EXPECT_EQ(page.One("//div[@id='id_warning'][@class='attention']"),
              "Warning: Regulatory domain can be changed only 10 times");
    EXPECT_EQ(page.One("//input[@id='id_curr_domain'][@disabled]/@value"), "FCC");
    EXPECT_EQ(page.Count("//select[@id='id_domain'][not(@name='domain')]/option"), 12U);
    EXPECT_EQ(page.One("//option[@value='EN440']"), "EN440 (Europe with ETSI EN 300 440)");
    EXPECT_EQ(page.Count(message), 0U);
    EXPECT_EQ(page.Count("//input[@name='Reboot']"), 0U);
}

TEST_F(RegulatoryTest, SetsTheDomainOfTheModule) {
    Html const page = Save("KCC");
    EXPECT_EQ(page.One(message), "Regulatory domain was changed. Reboot for the changes to take effect");
    EXPECT_EQ(page.One("//div[@id='id_message']/@class"), "success form_result_msg");
    EXPECT_EQ(page.One("//input[@id='id_curr_domain']/@value"), "KCC");
    EXPECT_EQ(page.Count("//input[@name='Reboot'][@type='submit']"), 1U);
    EXPECT_EQ(StoredDomain(), "KCC\n");
    EXPECT_EQ(device::TakeCommands(), Commands{"/usr/sbin/lmu -r KCC"});
}

TEST_F(RegulatoryTest, WhatTheModuleRefusesIsNotStored) {
    std::string const hostile = "x'; touch /tmp/broken; $(touch /tmp/broken)`touch /tmp/broken`";
    for (std::string const &domain : {std::string("XX"), hostile}) {
        Html const page = Save(domain);
        EXPECT_EQ(page.One("//div[@id='id_message'][contains(@class,'failure')]"),
                  "Could not set regulatory domain");
        EXPECT_EQ(StoredDomain(), "FCC\n");
        EXPECT_EQ(device::TakeCommands(), Commands{"/usr/sbin/lmu -r " + domain});
    }
    EXPECT_EQ(device::Shell("ls /tmp/broken 2>/dev/null"), "");
    device::TemporaryFile const failure("/etc/fail/lmu", "1");
    EXPECT_EQ(Save("KCC").One(message), "Could not set regulatory domain");
}

TEST_F(RegulatoryTest, NothingIsRunForTheSameDomainNoDomainOrAnotherModule) {
    EXPECT_EQ(Save("FCC").One(message), "This regulatory domain is already set");
    EXPECT_EQ(Save("").Count(message), 0U);
    SetModule("other", "FCC");
    for (char const *button : {"Save", "Reboot"}) {
        Html const page(browser.Post(regulatoryPage, {{"hidden_domain", "KCC"}, {button, button}}).body);
        EXPECT_EQ(page.One("//div[@id='id_warning']"),
                  "Error. Your WiFi module does not support changing regulatory domain");
        EXPECT_EQ(page.Count("//form"), 0U);
    }
    EXPECT_EQ(StoredDomain(), "FCC\n");
    EXPECT_EQ(device::TakeCommands(), Commands());
}

TEST_F(RegulatoryTest, AMissingDomainIsTold) {
    device::Shell("prm del net/wifi/region_code");
    EXPECT_EQ(Html(browser.Get(regulatoryPage).body).One(message),
              "could not read current regulatory domain");
    EXPECT_EQ(Save("AU").One("//input[@id='id_curr_domain']/@value"), "AU");
}

}  // namespace pages
