#include <optional>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char applyAccessPoint[] = "/etc/init.d/network_funcs.sh wifi_ap";
constexpr char applyClient[] = "/etc/init.d/network_funcs.sh wifi_client";
constexpr char applyRules[] = "/etc/nat_setup.sh wlan";
constexpr char script[] = "/etc/fail/network_funcs.sh";

std::string const storedKey(64, 'a');
Settings const etsi = {{"region_code", "ETSI"}, {"country", "FR"}};
Strings const ssidLength = {"Invalid length; minimum 1, maximum 32"};
Strings const noCountry = {"This country is not available"};

/// The key that a pass phrase makes, by a program that has its own way to it.
std::string Key(std::string const &ssid, std::string const &passPhrase) {
    device::WriteFile("/tmp/phrase", passPhrase + '\n');
    return device::Shell("wpa_passphrase '" + ssid +
                         "' </tmp/phrase 2>&1 | sed -n 's/^\tpsk=//p' | tr -d '\n'");
}

/// What is refused, what is said about it, and the inputs with a red border.
struct Wrong {
    Fields changes;
    Strings errors;
    Strings marked;
};

class WifiTest : public PageTest {
  protected:
    WifiTest(std::string const &path, Strings const &applies)
        : PageTest({path,
                    "net/wifi/",
                    {{"vendor", "laird"},
                     {"region_code", "FCC"},
                     {"country", "US"},
                     {"ap/enabled", "no"},
                     {"ap/channel", "6:2437"},
                     {"ap/essid", "field"},
                     {"ap/wpa_psk", storedKey},
                     {"client/enabled", "no"},
                     {"client/essid", "plant"},
                     {"client/security", "wpa"},
                     {"client/wpa_psk", storedKey},
                     {"client/eap/identity", ""},
                     {"client/eap/password", ""},
                     {"client/mobile_qx", "no"}},
                    {},
                    "Configuration saved successfully",
                    applies}) {
        browser.Get(path);  // the countries are read once, for the domain set then
        device::TakeCommands();
    }
    ~WifiTest() override {
        own.reset();
        store.Set({});
        device::Shell(std::string(applyAccessPoint) + "; " + applyClient);
    }

    void ExpectWrong(Fields const &form, std::vector<Wrong> const &cases, Settings const &before = {}) {
        for (auto const &[changes, errors, marked] : cases) {
            Html const html =
                Expect(form, {.before = before, .fields = changes, .failure = invalid, .errors = errors});
            EXPECT_EQ(html.All("//input[@style='border-color:red']/@id"), marked)
                << testing::PrintToString(changes);
        }
    }
    /// Goes on with a process of its own, which reads the countries for this module.
    void UseModule(std::string const &vendor, std::string const &domain) {
        Set({{"vendor", vendor}, {"region_code", domain}});
        own.emplace(device::Configuration(9103));
        browser = Browser("http://127.0.0.1:9103");
        ASSERT_TRUE(browser.WaitUntilUp());
    }

    std::optional<device::Process> own;
};

class AccessPointTest : public WifiTest {
  protected:
    AccessPointTest() : WifiTest("/config/network/access_point", {applyAccessPoint}) {}

    Fields const form = {{"apEnabled", "y"},       {"apCountryCode", "US"}, {"apCountryCode", "US"},
                         {"apChannel", "11:2462"}, {"apEssId", "field"},    {"apPassPhrase", ""},
                         {"apSubmit", "Save"}};
    Settings const on = {{"ap/enabled", "yes"}, {"ap/channel", "11:2462"}};
};

class WlanTest : public WifiTest {
  protected:
    WlanTest() : WifiTest("/config/network/wlan", {applyClient, applyRules}) {}

    Fields const form = {{"wlanEnabled", "y"},    {"wlanEssId", "plant"}, {"wlanCountryCode", "US"},
                         {"wlanSecurity", "wpa"}, {"wlanIdentity", ""},   {"wlanPassPhrase", ""},
                         {"wlanSubmit", "Save"}};
    Fields const enterprise = {
        {"wlanSecurity", "wpa_eap"}, {"wlanIdentity", "user"}, {"wlanPassPhrase", "password"}};
    Settings const on = {{"client/enabled", "yes"}};
};

}  // namespace

TEST_F(AccessPointTest, ShowsTheStoredSettings) {
    Show({{"ap/enabled", "yes"}, {"ap/essid", "<b>\"field\"</b>"}, {"region_code", "AU"}, {"country", "XX"}},
         {{"config_page_title", " Config Access Point "},
          {"ap_enabled", "y"},
          {"ap_ess_id", "<b>\"field\"</b>"},
          {"ap_country_code", "US"},  // the module does not have the stored one
          {"//tr[@id='ap_country_copy_row']//input", "US"},
          {"//*[@id='ap_regulatory_domain'][@readonly]", "AU,NZ"},
          {"//input[@id='ap_channel_copy'][@name='apChannel']", "6:2437"},
          {"ap_pass_phrase", ""}});
}

TEST_F(AccessPointTest, StoresWhatChangedAndAppliesIt) {
    std::string const ssid = "My \"net\" $(id)";
    std::string const passPhrase = "pass`id`\"\\";  // the key is that of the text as typed
    Fields const other = {{"apChannel", "6:2437"}, {"apEssId", ssid}, {"apPassPhrase", passPhrase}};
    Settings const stored = {
        {"ap/enabled", "yes"}, {"ap/essid", ssid}, {"ap/wpa_psk", Key(ssid, passPhrase)}};
    Settings country = on;
    country["country"] = "US";
    Run(form, {{.fields = {{"apEnabled", none}, {"apEssId", "other"}}},
               {.written = on},
               {.before = on, .fields = {{"apEnabled", none}}, .written = {{"ap/enabled", "no"}}},
               {.fields = other, .written = stored, .shown = {{"ap_pass_phrase", ""}}},
               {.before = stored, .fields = other},
               // Switching off writes the switch only.
               {.before = {{"country", "XX"}}, .fields = {{"apEnabled", none}}},
               {.before = {{"country", "XX"}}, .written = country}});
    for (std::size_t const length : {8, 63}) {
        std::string const phrase(length, 'x');
        Settings written = on;
        written["ap/wpa_psk"] = Key("field", phrase);
        Expect(form, {.fields = {{"apPassPhrase", phrase}}, .written = written});
    }
    StopsAt(With(form, {{"apEssId", "other"}, {"apPassPhrase", "password"}}),
            {{"ap/essid", {}},
             {"ap/wpa_psk", {{"ap/essid", "other"}}},
             {"ap/channel",
              {{"ap/essid", "other"}, {"ap/wpa_psk", Key("other", "password")}, {"ap/enabled", "yes"}}}});
}

TEST_F(AccessPointTest, BadInputIsRefused) {
    Strings const length = {"Invalid length"};
    Strings const passPhrase = {"ap_pass_phrase"};
    ExpectWrong(form, {{{{"apEssId", "other"}}, length, passPhrase},
                       {{{"apPassPhrase", std::string(7, 'x')}}, length, passPhrase},
                       {{{"apPassPhrase", std::string(64, 'x')}}, length, passPhrase},
                       {{{"apPassPhrase", "a new\nline"}}, length, passPhrase},
                       {{{"apEssId", ""}}, ssidLength, {}},
                       {{{"apEssId", std::string(33, 'x')}, {"apPassPhrase", "password"}}, ssidLength, {}},
                       {{{"apEssId", "\xFF"}}, {""}, {}},
                       {{{"apCountryCode", "DE"}}, noCountry, {}},
                       {{{"apCountryCode", none}}, noCountry, {}},
                       {{{"apChannel", none}}, {}, {}},
                       {{{"apChannel", "14:2484"}}, {}, {}},
                       {{{"apChannel", "6:2437;reboot"}}, {}, {}},
                       {{{"apChannel", "0:"}}, {}, {}},  // a Laird module chooses none itself
                       {{{"apChannel", "11:2462"}, {"apChannel", "6:2437"}}, {}, {}}});
    ExpectWrong(form, {{{}, length, passPhrase}}, {{"ap/wpa_psk", std::string(63, 'a')}});
    Expect(form, {.fields = {{"apEssId", "other"}},
                  .failure = invalid,
                  .errors = length,
                  .shown = {{"ap_ess_id", "other"}}});
}

TEST_F(AccessPointTest, ALairdModuleHasNoAccessPointOn5GHzBesideTheClient) {
    struct {
        char const *vendor;
        char const *client;
        char const *channel;
        bool refused;
        char const *readOnly;
    } const cases[] = {
        {"laird", "yes", "36:5180", true, "true"},   {"laird", "yes", "35:", false, "true"},
        {"laird", "yes", "11:2462", false, "true"},  {"laird", "no", "36:5180", false, "false"},
        {"other", "yes", "36:5180", false, "false"},
    };
    for (auto const &[vendor, client, channel, refused, readOnly] : cases) {
        Settings const before = {{"vendor", vendor}, {"client/enabled", client}, {"ap/channel", channel}};
        Case expected = {.before = before, .failure = "Failed. Cannot enable Laird AP when WLAN is on 5GHz"};
        Settings written = {{"ap/enabled", "yes"}};
        if (channel != std::string("11:2462"))
            written["ap/channel"] = "11:2462";
        Expect(form, refused ? expected : Case{.before = before, .written = written});
        EXPECT_NE(browser.Get(page.path).body.find(std::string("apChannelReadOnly = ") + readOnly + ';'),
                  std::string::npos)
            << channel;
    }
    Expect(form, {.before = {{"vendor", "other"}},
                  .fields = {{"apChannel", "0:"}},  // other modules choose it themselves
                  .written = {{"ap/enabled", "yes"}, {"ap/channel", "0:"}}});
}

TEST_F(AccessPointTest, AFailedScriptIsToldAndTakesNothingBack) {
    device::ReplacedFile const failure(script, "22");
    std::string const message = "Failed to configure access point. Error 'Invalid argument'";
    Run(form, {{.failure = message,
                .written = on,
                .commands = page.applies,
                .shown = {{"ap_enabled", ""}},  // it was switched on, in vain
                .logged = message},
               {.before = on, .failure = message, .commands = page.applies, .shown = {{"ap_enabled", "y"}}}});
}

TEST_F(WlanTest, ShowsTheStoredSettings) {
    Html const html = Show({{"client/enabled", "yes"},
                            {"client/security", "wpa_eap"},
                            {"client/eap/identity", "user"},
                            {"client/mobile_qx", "yes"}},
                           {{"config_page_title", " Config WLAN "},
                            {"wlan_enabled", "y"},
                            {"wlan_mobile_qx", "y"},
                            {"//*[@id='wlan_security']/option[@selected]", "WPA/WPA2 - Enterprise"},
                            {"wlan_ess_id", "plant"},
                            {"wlan_identity", "user"},
                            {"wlan_pass_phrase", ""}});
    EXPECT_EQ(html.All("//div[@id='cfg_wlan']//tr/th"),
              (Strings{"WLAN Enabled ", "SSID ", "Country Code ", "", "Regulatory Domain ", "Security Type ",
                       "Username ", "Password ", "Allow Mobile QX connection ", ""}));
    Show({{"client/security", ""}}, {{"//*[@id='wlan_security']/option[@selected]", "None"}});
}

TEST_F(WlanTest, StoresWhatChangedAndAppliesItWithTheRules) {
    Settings const user = {
        {"client/enabled", "yes"},
        {"client/security", "wpa_eap"},
        {"client/eap/identity", "user"},
        {"client/eap/password", "hash:8846f7eaee8fb117ad06bdd830b7586c" + std::string(1, '\0')}};
    Run(form, {{.fields = {{"wlanEnabled", none}, {"wlanEssId", "other"}}},
               {.written = on},
               // The other page's: it stays as long as nobody chooses.
               {.before = {{"country", "XX"}}, .written = on},
               {.before = on, .fields = {{"wlanMobileQx", "y"}}, .written = {{"client/mobile_qx", "yes"}}},
               {.fields = enterprise, .written = user},
               {.before = user, .fields = With(enterprise, {{"wlanPassPhrase", ""}})},
               {.before = user,
                .fields = {{"wlanEssId", "other"}, {"wlanPassPhrase", "password"}},
                .written = {{"client/essid", "other"},
                            {"client/wpa_psk", Key("other", "password")},
                            {"client/security", "wpa"}}},
               {.before = on,
                .fields = {{"wlanEssId", "open"}, {"wlanSecurity", "none"}},
                .written = {{"client/wpa_psk", ""}, {"client/security", "none"}, {"client/essid", "open"}}},
               {.before = on, .fields = {{"wlanEnabled", none}}, .written = {{"client/enabled", "no"}}}});
    StopsAt(With(form, {{"wlanSecurity", "none"}, {"wlanEssId", "other"}}),
            {{"client/enabled", {{"client/wpa_psk", ""}, {"client/security", "none"}}}});
    device::ReplacedFile const failure(script, "22");
    Expect(form, {.failure = "Failed to configure WLAN client. Error 'Invalid argument'",
                  .written = on,
                  .commands = page.applies});
}

TEST_F(WlanTest, BadInputIsRefused) {
    std::string const length = "Invalid length, minimum 8 if security type is not 'None'";
    std::string const required = "This field is required";
    Strings const passPhrase = {"wlan_pass_phrase"};
    ExpectWrong(form,
                {{{{"wlanEssId", "other"}}, {length}, passPhrase},
                 {{{"wlanPassPhrase", std::string(7, 'x')}}, {length}, passPhrase},
                 {{{"wlanPassPhrase", std::string(64, 'x')}}, {length}, passPhrase},
                 {With(enterprise, {{"wlanIdentity", ""}}), {required}, {"wlan_identity"}},
                 {With(enterprise, {{"wlanPassPhrase", ""}}), {length}, passPhrase},
                 {{{"wlanSecurity", "wpa_eap"}}, {required, length}, {"wlan_identity", "wlan_pass_phrase"}},
                 {With(enterprise, {{"wlanPassPhrase", "\xC3("}}), {length}, {}},
                 {{{"wlanSecurity", "wep"}}, {required}, {}},
                 {{{"wlanSecurity", none}}, {required}, {}},
                 {{{"wlanEssId", std::string(33, 'x')}, {"wlanSecurity", "none"}}, ssidLength, {}},
                 {{{"wlanCountryCode", "DE"}}, noCountry, {}}});
    Expect(form, {.fields = {{"wlanEssId", "other"}, {"wlanSecurity", "wpa_eap"}},
                  .failure = invalid,
                  .errors = {required, length},
                  .shown = {{"wlan_ess_id", "other"}, {"wlan_security", "wpa_eap"}}});
}

TEST_F(WlanTest, AnotherNetworkNeedsAPassPhraseOfItsOwn) {
    // With its enterprise security, the stored key is that of the network before.
    ExpectWrong(form,
                {{{{"wlanEssId", "other"}},
                  {"Invalid length, minimum 8 if security type is not 'None'"},
                  {"wlan_pass_phrase"}}},
                {{"client/essid", "other"}, {"client/security", "wpa_eap"}});
}

TEST_F(WlanTest, TheCountriesAreThoseOfTheModulesDomain) {
    struct {
        char const *vendor;
        char const *domain;
        Strings countries;
    } const cases[] = {
        {"laird", "FCC", {"US"}},
        {"laird", "none", {}},
        {"laird", "AU", {"AU", "NZ"}},
        {"other",
         "",
         {"AU", "BR", "CA", "CN", "DE", "FR", "GB", "IN", "JP", "KR", "NL", "NZ", "PR", "SA", "US", "ZA"}},
    };
    for (auto const &[vendor, domain, countries] : cases) {
        UseModule(vendor, domain);
        std::string const body = browser.Get(page.path).body;
        EXPECT_EQ(Html(body).All("//*[@id='wlan_country_code']/option/@value"), countries);
        bool const locked = body.find("wlanCountryLocked = true") != std::string::npos;
        EXPECT_EQ(locked, countries.size() == 1) << domain;
    }
}

TEST_F(WlanTest, ARefusedSaveKeepsTheCountryAsChosen) {
    UseModule("laird", "ETSI");
    Expect(form,
           {.before = etsi,
            .fields = {{"wlanCountryCode", "GB"}, {"wlanCountryCode", "GB"}, {"wlanPassPhrase", "short"}},
            .failure = invalid,
            .errors = {"Invalid length, minimum 8 if security type is not 'None'"},
            .shown = {{"wlan_country_code", "GB"}, {"wlan_country_code_copy", "GB"}}});
}

TEST_F(AccessPointTest, ARefusedSaveKeepsCountryAndChannelAsChosen) {
    UseModule("laird", "ETSI");
    // As scripts leave it: the select and its copy.
    Fields const british = {{"apCountryCode", "GB"}, {"apCountryCode", "GB"}};
    Fields const shown = {{"ap_country_code", "GB"}, {"ap_country_code_copy", "GB"}};
    Run(With(form, british), {{.before = etsi,
                               .fields = {{"apChannel", "36:5180"}, {"apPassPhrase", "short"}},
                               .failure = invalid,
                               .errors = {"Invalid length"},
                               .shown = With(shown, {{"ap_channel_copy", "36:5180"}})},
                              {.before = etsi,
                               .fields = {{"apChannel", "40:5200"}, {"apEssId", std::string(33, 'x')}},
                               .failure = invalid,
                               .errors = ssidLength,
                               .shown = With(shown, {{"ap_channel_copy", "40:5200"}})}});
}

}  // namespace pages
