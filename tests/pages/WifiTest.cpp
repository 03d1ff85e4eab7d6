#include <optional>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char applyAccessPoint[] = "/etc/init.d/network_funcs.sh wifi_ap";
constexpr char applyClient[] = "/etc/init.d/network_funcs.sh wifi_client";
constexpr char applyRules[] = "/etc/nat_setup.sh wlan";
constexpr char script[] = "/etc/fail/network_funcs.sh";

std::string const storedKey(64, 'a');
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

/// The parameters before each case.
Settings const usualSettings = {
    {"vendor", "laird"},         {"region_code", "FCC"},        {"country", "US"},
    {"ap/enabled", "no"},        {"ap/channel", "6:2437"},      {"ap/essid", "field"},
    {"ap/wpa_psk", storedKey},   {"client/enabled", "no"},      {"client/essid", "plant"},
    {"client/security", "wpa"},  {"client/wpa_psk", storedKey}, {"client/eap/identity", ""},
    {"client/eap/password", ""}, {"client/mobile_qx", "no"}};

class WifiTest : public PageTest {
  protected:
    WifiTest(std::string const &path, Strings const &applies)
        : PageTest({path, "net/wifi/", usualSettings, {}, "Configuration saved successfully", applies}) {
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
            EXPECT_EQ(html.All("//input[@class='red_border']/@id"), marked)
                << testing::PrintToString(changes);
        }
    }
    /// Goes on with a process of its own, which reads the countries for this module.
    void UseModule(std::string const &vendor, std::string const &domain) {
        Set({{"vendor", vendor}, {"region_code", domain}});
        own.emplace(device::Configuration(9103));
        browser = device::Up("http://127.0.0.1:9103");
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
    Run(form, {{.written = on},
               {.before = on, .fields = {{"apEnabled", none}}, .written = {{"ap/enabled", "no"}}},
               {.fields = other, .written = stored, .shown = {{"ap_pass_phrase", ""}}},
               {.before = stored, .fields = other},
               // Switching off writes the switch only.
               {.before = {{"country", "XX"}}, .fields = {{"apEnabled", none}, {"apEssId", "other"}}},
               {.before = {{"country", "XX"}}, .written = country}});
    StopsAt(With(form, {{"apEssId", "other"}, {"apPassPhrase", "password"}}),
            {{"ap/essid", {}},
             {"ap/channel",
              {{"ap/essid", "other"}, {"ap/wpa_psk", Key("other", "password")}, {"ap/enabled", "yes"}}}});
    device::ReplacedFile const failure(script, "22");
    std::string const message = "Failed to configure access point. Error 'Invalid argument'";
    Run(form, {{.failure = message,
                .written = on,
                .commands = page.applies,
                .shown = {{"ap_enabled", ""}},  // it was switched on, in vain
                .logged = message},
               {.before = on, .failure = message, .commands = page.applies, .shown = {{"ap_enabled", "y"}}}});
}

TEST_F(AccessPointTest, BadInputIsRefused) {
    Strings const length = {"Invalid length"};
    Strings const passPhrase = {"ap_pass_phrase"};
    ExpectWrong(form, {{{{"apEssId", "other"}}, length, passPhrase},
                       {{{"apPassPhrase", std::string(7, 'x')}}, length, passPhrase},
                       {{{"apEssId", ""}}, ssidLength, {}},
                       {{{"apEssId", std::string(33, 'x')}, {"apPassPhrase", "password"}}, ssidLength, {}},
                       {{{"apCountryCode", "DE"}}, noCountry, {}},
                       {{{"apChannel", none}}, {}, {}},
                       {{{"apChannel", "6:2437;reboot"}}, {}, {}},
                       {{{"apChannel", "0:"}}, {}, {}}});  // a Laird module chooses none itself
    ExpectWrong(form, {{{}, length, passPhrase}}, {{"ap/wpa_psk", std::string(63, 'a')}});
}

TEST_F(AccessPointTest, ALairdModuleHasNoAccessPointOn5GHzBesideTheClient) {
    struct {
        char const *vendor;
        char const *client;
        char const *channel;
        bool refused;
        char const *readOnly;
    } const cases[] = {
        {"laird", "yes", "36:5180", true, "true"},
        {"laird", "yes", "6:2437", false, "true"},
        {"laird", "no", "36:5180", false, "false"},
        {"other", "yes", "36:5180", false, "false"},
    };
    for (auto const &[vendor, client, channel, refused, readOnly] : cases) {
        Settings const before = {{"vendor", vendor}, {"client/enabled", client}, {"ap/channel", channel}};
        Case const failed = {.before = before,
                             .failure = "Failed. Cannot enable Laird AP when WLAN is on 5GHz"};
        Expect(form, refused ? failed : Case{.before = before, .written = on});
        EXPECT_NE(browser.Get(page.path).body.find(std::string("apChannelReadOnly = ") + readOnly + ';'),
                  std::string::npos)
            << channel;
    }
    Expect(form, {.before = {{"vendor", "other"}},
                  .fields = {{"apChannel", "0:"}},  // other modules choose it themselves
                  .written = {{"ap/enabled", "yes"}, {"ap/channel", "0:"}}});
}

TEST_F(WlanTest, ShowsTheStoredSettings) {
    Show({{"client/enabled", "yes"},
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
    Show({{"client/security", ""}}, {{"//*[@id='wlan_security']/option[@selected]", "None"}});
}

TEST_F(WlanTest, StoresWhatChangedAndAppliesItWithTheRules) {
    Settings const user = {
        {"client/enabled", "yes"},
        {"client/security", "wpa_eap"},
        {"client/eap/identity", "user"},
        {"client/eap/password", "hash:8846f7eaee8fb117ad06bdd830b7586c" + std::string(1, '\0')}};
    Run(form, {// The other page's: it stays as long as nobody chooses.
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
               {.before = on,
                .fields = {{"wlanEnabled", none}, {"wlanEssId", "other"}},
                .written = {{"client/enabled", "no"}}}});
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
                 {{{"wlanPassPhrase", std::string(64, 'x')}}, {length}, passPhrase},
                 {With(enterprise, {{"wlanIdentity", ""}}), {required}, {"wlan_identity"}},
                 {{{"wlanSecurity", "wpa_eap"}}, {required, length}, {"wlan_identity", "wlan_pass_phrase"}},
                 {With(enterprise, {{"wlanPassPhrase", "\xC3("}}), {length}, {}},
                 {{{"wlanSecurity", "wep"}}, {required}, {}},
                 {{{"wlanEssId", std::string(33, 'x')}, {"wlanSecurity", "none"}}, ssidLength, {}},
                 {{{"wlanCountryCode", "DE"}}, noCountry, {}}});
    // With its enterprise security, the stored key is that of the network before.
    ExpectWrong(form, {{{{"wlanEssId", "other"}}, {length}, passPhrase}},
                {{"client/essid", "other"}, {"client/security", "wpa_eap"}});
}

TEST_F(WlanTest, TheCountriesAreThoseOfTheModulesDomain) {
    std::tuple<char const *, char const *, Strings> const cases[] = {
        {"laird", "none", {}},
        {"laird", "AU", {"AU", "NZ"}},
        {"other", "ETSI", {"DE", "FR", "GB", "NL"}},
        // Without a domain the database's first level counts, which is that of the domains.
        {"other",
         "",
         {"AU", "CN", "EN440", "ETSI", "FCC", "IC", "IN", "JP", "KCC", "PR", "SA", "WW", "WW440", "ZA"}},
    };
    for (auto const &[vendor, domain, countries] : cases) {
        UseModule(vendor, domain);
        EXPECT_EQ(Html(browser.Get(page.path).body).All("//*[@id='wlan_country_code']/option/@value"),
                  countries);
    }
}

TEST_F(AccessPointTest, ARefusedSaveKeepsCountryAndChannelAsChosen) {
    UseModule("laird", "ETSI");
    // As scripts leave it: the select and its copy.
    Expect(With(form, {{"apCountryCode", "GB"}, {"apCountryCode", "GB"}}),
           {.before = {{"region_code", "ETSI"}, {"country", "FR"}},
            .fields = {{"apChannel", "36:5180"}, {"apEssId", "other"}},
            .failure = invalid,
            .errors = {"Invalid length"},
            .shown = {{"ap_country_code", "GB"},
                      {"ap_country_code_copy", "GB"},
                      {"ap_channel_copy", "36:5180"},
                      {"ap_ess_id", "other"}}});
}

}  // namespace pages
