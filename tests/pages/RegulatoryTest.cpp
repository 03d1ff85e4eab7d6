#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class RegulatoryTest : public PageTest {
  protected:
    RegulatoryTest()
        : PageTest({"/config/regulatory/wifi", "net/wifi/", {{"vendor", "laird"}, {"region_code", "FCC"}}}) {
        device::Shell("rm -rf /var/lib/lmu");
    }
    ~RegulatoryTest() override { device::Shell("rm -rf /var/lib/lmu"); }

    Fields const form = {{"hidden_domain", "KCC"}, {"Save", "Save"}};
};

constexpr char changed[] = "Regulatory domain was changed. Reboot for the changes to take effect";
constexpr char refusedByModule[] = "Could not set regulatory domain";
constexpr char reboot[] = "//input[@name='Reboot'][@type='submit']";

}  // namespace

TEST_F(RegulatoryTest, ShowsTheDomainAndTheChoice) {
    Html const html = Show({}, {{"//title", "Configure WiFi Regulatory Domain"},
                                {"//input[@id='id_curr_domain'][@disabled]", "FCC"},
                                {"//option[@value='EN440']", "EN440 (Europe with ETSI EN 300 440)"}});
    EXPECT_EQ(html.Count("//select[@id='id_domain'][not(@name='domain')]/option"), 12U);
    EXPECT_EQ(html.Count(reboot), 0U);
}

TEST_F(RegulatoryTest, SetsTheDomainOfTheModule) {
    Html const html = Expect(form, {.success = changed,
                                    .written = {{"region_code", "KCC"}},
                                    .commands = {"/usr/sbin/lmu -r KCC"},
                                    .shown = {{"id_curr_domain", "KCC"}}});
    EXPECT_EQ(html.Count(reboot), 1U);
    // The module has changed, whatever becomes of the note of it.
    Expect(form, {.fields = {{"hidden_domain", "AU"}},
                  .refused = "region_code",
                  .success = changed,
                  .commands = {"/usr/sbin/lmu -r AU"},
                  .shown = {{"id_curr_domain", "AU"}},
                  .logged = "FAIL prmlib::setPar \"net/wifi/region_code\""});
}

TEST_F(RegulatoryTest, WhatTheModuleRefusesIsNotStored) {
    Run(form, {{.fields = {{"hidden_domain", "XX"}},
                .failure = refusedByModule,
                .commands = {"/usr/sbin/lmu -r XX"}},
               {.fields = {{"hidden_domain", "FCC"}}, .failure = "This regulatory domain is already set"},
               {.fields = {{"hidden_domain", ""}}, .success = ""}});
}

TEST_F(RegulatoryTest, AnotherModuleIsNotTouched) {
    for (char const *button : {"Save", "Reboot"})
        Expect({{"hidden_domain", "KCC"}, {button, button}},
               {.before = {{"vendor", "other"}},
                .success = "",
                .shown = {
                    {"id_warning", "Error. Your WiFi module does not support changing regulatory domain"}}});
}

TEST_F(RegulatoryTest, AMissingDomainIsTold) {
    Set({{"region_code", none}});
    EXPECT_EQ(Html(browser.Get(page.path).body).One(failureMessage),
              "could not read current regulatory domain");
    Expect(form, {.before = {{"region_code", none}},
                  .success = changed,
                  .written = {{"region_code", "KCC"}},
                  .commands = {"/usr/sbin/lmu -r KCC"},
                  .shown = {{"id_curr_domain", "KCC"}}});
}

}  // namespace pages
