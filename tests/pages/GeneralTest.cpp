#include <algorithm>
#include <cctype>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class GeneralTest : public PageTest {
  protected:
    GeneralTest() : PageTest({"/config/", "", {{"net/hostname", "korbex"}, {"language", "xx"}}}) {}

    Fields const form = {{"#cfg_grl_device_name", "new"}, {"#cfg_grl_lang", ""}, {"save", "Save"}};
};

/// Whether it has letters, all of ASCII.
bool IsEnglish(std::string const &text) {
    bool const ascii = std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x80; });
    return ascii && std::any_of(text.begin(), text.end(), [](unsigned char c) { return std::isalpha(c); });
}

constexpr char language[] = "//*[@id='cfg_grl_lang']/option[@selected]";

}  // namespace

TEST_F(GeneralTest, ShowsTheStoredValuesAndTheSystemInformation) {
    Html const html = Show(
        {{"net/hostname", "box-17"}, {"language", ""}},
        {{"config_page_title", " General Device Configuration "},
         {"cfg_grl_device_name", "box-17"},
         {language, "English"},
         {"//*[@id='general_config']//tr[th='Device ID']/td[@class='ui-serial-number']", "(not supported)"}});
    EXPECT_EQ(html.All("//*[@id='general_status']//pre"),
              (Strings{device::Shell("uname -a"), device::ReadFile("/etc/version")}));
    EXPECT_EQ(Show().Count(language), 0U) << "not offered";
}

TEST_F(GeneralTest, SpeaksTheStoredLanguageFromTheNextPageOn) {
    Expect(form,
           {.fields = {{"#cfg_grl_lang", "de"}}, .written = {{"net/hostname", "new"}, {"language", "de"}}});
    Html const german = Show({{"language", "de"}}, {{"config_page_title", " Allgemeine Gerätekonfiguration "},
                                                    {"//html/@lang", "de"},
                                                    {"//button[@name='save'][@value='Save']", "Speichern"}});
    EXPECT_EQ(german.Count("//script[contains(@src, '/js/text.de.js')]"), 1U);
    Set({{"language", "de"}});
    Html const refused(
        browser.Post("/config/", {{"deviceName", ""}, {"language", ""}, {"save", "Save"}}).body);
    EXPECT_EQ(refused.All("//td/span"), Strings{"Ungültige Länge; mindestens 1, höchstens 64"});

    device::Process const without(device::Configuration(9121));
    Html const english(device::Up("http://127.0.0.1:9121").Get("/config/").body);
    EXPECT_EQ(english.All("//*[@id='cfg_grl_lang']/option"), Strings{"English"});
    EXPECT_EQ(english.All("//input[@name='save']/@value"), Strings{"Save"});
    EXPECT_EQ(english.Count("//html/@lang"), 0U);
}

TEST_F(GeneralTest, NoPageKeepsItsEnglishTexts) {
    constexpr char texts[] =
        "//th[not(ancestor::*[@id='advanced_audit'])] | //h2 | //button | "
        "//input[@type='submit']/@value | //*[@class='tabnav']//a | "
        "(//h3 | //p)[not(ancestor::*[@class='history_set'])] | //*[@id='nav']//a | //div[@class='nav'] | "
        "//div[@class='alerts'] | "
        "//option[not(../@id='cfg_grl_lang')]";
    // Without blanks.
    Strings const names = {"APN",
                           "DHCP",
                           "DNS",
                           "Ethernet",
                           "Ethernet1",
                           "GPRS",
                           "GSM/UMTS",
                           "JP(Jiteki)",
                           "Mesh",
                           "NTP",
                           "OpenVPN",
                           "Orvane",
                           "SSID",
                           "TCP",
                           "UDP",
                           "US",
                           "Uname",
                           "WLAN",
                           "network_\"FieldMobile\""};
    Set({{"language", "ar"}});
    for (auto const &path : DeclaredPages()) {
        for (std::string text : Html(browser.Get("/config" + path).body).All(texts)) {
            std::erase_if(text, [](unsigned char c) { return std::isspace(c); });
            bool const isName = std::find(names.begin(), names.end(), text) != names.end();
            EXPECT_TRUE(isName || !IsEnglish(text)) << path << ": " << text;
        }
    }
    device::TakeCommands();
}

TEST_F(GeneralTest, TakesOneToSixtyFourCharacters) {
    std::string umlauts;
    for (int i = 0; i < 64; ++i)
        umlauts += "\xC3\xA4";
    for (std::string const &name : {std::string("<b>&\"'</b>"), umlauts})
        Expect(form, {.fields = {{"#cfg_grl_device_name", name}},
                      .written = {{"net/hostname", name}, {"language", ""}},
                      .shown = {{"cfg_grl_device_name", name}}});
    Strings const length = {"Invalid length; minimum 1, maximum 64"};
    Refuses(form, {{"#cfg_grl_device_name", "", length},
                   {"#cfg_grl_device_name", umlauts + "\xC3\xA4", length},
                   {"#cfg_grl_device_name", "bad \xC3\x28 bytes", {""}},
                   {"#cfg_grl_lang", "xx", {"This field is required"}}});
    StopsAt(form, {{"net/hostname", {}}, {"language", {{"net/hostname", "new"}}}});
}

}  // namespace pages
