#include <gtest/gtest.h>

#include <iterator>
#include <set>
#include <sstream>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char accessPointPage[] = "/config/network/access_point";
constexpr char wlanPage[] = "/config/network/wlan";
constexpr char done[] = "Configuration saved successfully";
constexpr char redBorder[] = "//input[@style='border-color:red']/@id";
constexpr char applyAccessPoint[] = "/etc/init.d/network_funcs.sh wifi_ap";
constexpr char applyClient[] = "/etc/init.d/network_funcs.sh wifi_client";
constexpr char applyRules[] = "/etc/nat_setup.sh wlan";

using Commands = std::vector<std::string>;

std::string const storedKey(64, 'a');

/// \a fields with other values; a field whose value is "-" is left out.
Fields With(Fields fields, Fields const &changes) {
    for (auto const &[name, value] : changes) {
        std::erase_if(fields, [&name = name](auto const &field) { return field.first == name; });
        if (value != "-")
            fields.emplace_back(name, value);
    }
    return fields;
}

class WifiTest : public testing::Test {
  protected:
    WifiTest() {
        device::Shell("prm export net/wifi >/tmp/wifi_settings; mkdir -p /etc/fail");
        Set({{"vendor", "laird"},
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
             {"client/mobile_qx", "no"}});
        browser.Get(wlanPage);  // the countries are read once, for the domain set then
        device::TakeCommands();
    }
    ~WifiTest() override {
        device::Shell(
            "prm del /net/wifi; prm import /tmp/wifi_settings; rm /tmp/wifi_settings;"
            "/etc/init.d/network_funcs.sh wifi_ap; /etc/init.d/network_funcs.sh wifi_client");
    }

    static void Set(Fields const &settings) {
        std::string commands;
        for (auto const &[name, value] : settings)
            commands += "prm set net/wifi/" + name + " '" + value + "';";
        device::Shell(commands);
    }
    static std::string Get(std::string const &name) {
        std::string const value = device::Shell("prm get net/wifi/" + name);
        return value.substr(0, value.size() - 1);
    }
    static std::string Everything() { return device::Shell("prm export net/wifi"); }
    /// The names of the settings that changed since \a before.
    static std::set<std::string> Changes(std::string const &before) {
        device::WriteFile("/tmp/wifi_before", before);
        std::istringstream names(
            device::Shell("prm export net/wifi | diff /tmp/wifi_before - | sed -n 's,^[<>] "
                          "\"net/wifi/\\([^\"]*\\).*,\\1,p'"));
        return {std::istream_iterator<std::string>(names), {}};
    }
    Html Post(char const *page, Fields const &fields) { return Html(browser.Post(page, fields).body); }

    /// That what was posted is refused, with these inputs marked, and nothing is stored or run.
    void ExpectRefused(char const *path, Fields const &fields, std::vector<std::string> const &marked,
                       std::string const &message = invalid) {
        std::string const before = Everything();
        Answer const answer = browser.Post(path, fields);
        EXPECT_EQ(answer.status, 200);
        Html const page(answer.body);
        EXPECT_EQ(page.One(failureMessage), message);
        EXPECT_EQ(page.All(redBorder), marked);
        EXPECT_EQ(Everything(), before);
        EXPECT_EQ(device::TakeCommands(), Commands());
    }

    Browser browser{device::address};
    Fields const accessPoint = {{"apEnabled", "y"},       {"apCountryCode", "US"}, {"apCountryCode", "US"},
                                {"apChannel", "11:2462"}, {"apEssId", "field"},    {"apPassPhrase", ""},
                                {"apSubmit", "Save"}};
    Fields const wlan = {{"wlanEnabled", "y"},    {"wlanEssId", "plant"}, {"wlanCountryCode", "US"},
                         {"wlanSecurity", "wpa"}, {"wlanIdentity", ""},   {"wlanPassPhrase", ""},
                         {"wlanSubmit", "Save"}};
};

using AccessPointTest = WifiTest;
using WlanTest = WifiTest;

}  // namespace

TEST_F(AccessPointTest, ShowsTheStoredSettings) {
    Set({{"ap/enabled", "yes"}, {"ap/essid", "<b>\"field\"</b>"}, {"region_code", "AU"}});
    Html const page(browser.Get(accessPointPage).body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Config Access Point ");
    EXPECT_EQ(page.Count("//*[@id='ap_enabled']/@checked"), 1U);
    EXPECT_EQ(page.One("//*[@id='ap_ess_id']/@value"), "<b>\"field\"</b>");
    EXPECT_EQ(page.One("//*[@id='ap_country_code']/option[@selected]/@value"), "US");
    EXPECT_EQ(page.One("//tr[@id='ap_country_copy_row']//input/@value"), "US");
    EXPECT_EQ(page.One("//*[@id='ap_regulatory_domain'][@readonly]/@value"), "AU,NZ");
    EXPECT_EQ(page.One("//input[@id='ap_channel_copy'][@name='apChannel']/@value"), "6:2437");
    EXPECT_EQ(page.Count("//*[@id='ap_pass_phrase']/@value"), 0U);
}

TEST_F(AccessPointTest, StoresWhatChangedAndAppliesIt) {
    struct {
        Fields changes;
        std::set<std::string> written;
    } const cases[] = {
        {{{"apEnabled", "-"}, {"apEssId", "other"}}, {}},
        {{}, {"ap/enabled", "ap/channel"}},
        {{{"apEnabled", "-"}}, {"ap/enabled"}},
        {{{"apChannel", "6:2437"}, {"apEssId", "My \"net\" $(id)"}, {"apPassPhrase", "pass`id`\"\\"}},
         {"ap/enabled", "ap/channel", "ap/essid", "ap/wpa_psk"}},
        {{{"apChannel", "6:2437"}, {"apEssId", "My \"net\" $(id)"}, {"apPassPhrase", "pass`id`\"\\"}}, {}},
    };
    for (auto const &c : cases) {
        std::string const before = Everything();
        Html const page = Post(accessPointPage, With(accessPoint, c.changes));
        EXPECT_EQ(page.One(successMessage), done);
        EXPECT_EQ(page.Count("//*[@id='ap_pass_phrase'][@value!='']"), 0U);
        EXPECT_EQ(Changes(before), c.written);
        EXPECT_EQ(device::TakeCommands(), Commands{applyAccessPoint});
    }
    EXPECT_EQ(Get("ap/essid"), "My \"net\" $(id)");
    EXPECT_EQ(Get("ap/wpa_psk") + "\n",
              device::Shell(R"(wpa_passphrase 'My "net" $(id)' 'pass`id`"\' | sed -n 's/^\tpsk=//p')"))
        << "the key of the text as typed";
}

TEST_F(AccessPointTest, AKeyNeedsAPassPhraseOfEightToSixtyThreeCharacters) {
    std::vector<std::string> const passPhrase = {"ap_pass_phrase"};
    ExpectRefused(accessPointPage, With(accessPoint, {{"apEssId", "other"}}), passPhrase);
    ExpectRefused(accessPointPage, With(accessPoint, {{"apPassPhrase", std::string(7, 'x')}}), passPhrase);
    ExpectRefused(accessPointPage, With(accessPoint, {{"apPassPhrase", std::string(64, 'x')}}), passPhrase);
    ExpectRefused(accessPointPage, With(accessPoint, {{"apPassPhrase", "a new\nline"}}), passPhrase);
    Set({{"ap/wpa_psk", std::string(63, 'a')}});
    ExpectRefused(accessPointPage, accessPoint, passPhrase);
    for (std::size_t const length : {8, 63}) {
        Html const page =
            Post(accessPointPage, With(accessPoint, {{"apPassPhrase", std::string(length, 'x')}}));
        EXPECT_EQ(page.One(successMessage), done);
        EXPECT_EQ(Get("ap/wpa_psk").size(), 64U);
    }
    Html const refused = Post(accessPointPage, With(accessPoint, {{"apEssId", "other"}}));
    EXPECT_EQ(refused.One("//*[@id='ap_ess_id']/@value"), "other") << "what was typed stays";
    EXPECT_EQ(refused.One(fieldErrors), "Invalid length");
}

TEST_F(AccessPointTest, BadInputIsRefused) {
    Fields const cases[] = {
        {{"apEssId", ""}},          {{"apEssId", std::string(33, 'x')}, {"apPassPhrase", "password"}},
        {{"apEssId", "\xFF"}},      {{"apCountryCode", "DE"}},
        {{"apCountryCode", "-"}},   {{"apChannel", "-"}},
        {{"apChannel", "14:2484"}}, {{"apChannel", "6:2437;reboot"}},
        {{"apChannel", "0:"}},  // a Laird module chooses none itself
    };
    for (auto const &changes : cases)
        ExpectRefused(accessPointPage, With(accessPoint, changes), {});
    Fields twice = accessPoint;
    twice.emplace_back("apChannel", "6:2437");
    ExpectRefused(accessPointPage, twice, {});
}

TEST_F(AccessPointTest, ALairdModuleHasNoAccessPointOn5GHzBesideTheClient) {
    char const *const blocked = "Failed. Cannot enable Laird AP when WLAN is on 5GHz";
    struct {
        char const *vendor;
        char const *client;
        char const *channel;
        bool refused;
        bool readOnly;
    } const cases[] = {
        {"laird", "yes", "36:5180", true, true},   {"laird", "yes", "35:", false, true},
        {"laird", "yes", "11:2462", false, true},  {"laird", "no", "36:5180", false, false},
        {"other", "yes", "36:5180", false, false},
    };
    for (auto const &c : cases) {
        Set({{"vendor", c.vendor},
             {"client/enabled", c.client},
             {"ap/channel", c.channel},
             {"ap/enabled", "no"}});
        if (c.refused)
            ExpectRefused(accessPointPage, accessPoint, {}, blocked);
        else
            EXPECT_EQ(Post(accessPointPage, accessPoint).One(successMessage), done) << c.channel;
        device::TakeCommands();
        std::string const page = browser.Get(accessPointPage).body;
        EXPECT_NE(page.find(std::string("apChannelReadOnly = ") + (c.readOnly ? "true" : "false")),
                  std::string::npos);
    }
    EXPECT_EQ(Post(accessPointPage, With(accessPoint, {{"apChannel", "0:"}})).One(successMessage), done)
        << "other modules choose the channel themselves";
}

TEST_F(AccessPointTest, AFailedScriptIsToldAndTakesNothingBack) {
    device::TemporaryFile const failure("/etc/fail/network_funcs.sh", "22");
    char const *const message = "Failed to configure access point. Error 'Invalid argument'";
    Html page = Post(accessPointPage, accessPoint);
    EXPECT_EQ(page.One(failureMessage), message);
    EXPECT_EQ(page.Count("//*[@id='ap_enabled']/@checked"), 0U) << "it was switched on, in vain";
    EXPECT_EQ(Get("ap/enabled"), "yes");
    page = Post(accessPointPage, accessPoint);
    EXPECT_EQ(page.One(failureMessage), message);
    EXPECT_EQ(page.Count("//*[@id='ap_enabled']/@checked"), 1U) << "it was on before";
}

TEST_F(AccessPointTest, AFailedWriteEndsTheSequence) {
    Fields const fields = With(accessPoint, {{"apEssId", "other"}, {"apPassPhrase", "password"}});
    struct {
        char const *refused;
        std::set<std::string> written;
    } const cases[] = {
        {"ap/essid", {}},
        {"ap/wpa_psk", {"ap/essid"}},
        {"ap/channel", {"ap/wpa_psk", "ap/enabled"}},
    };
    for (auto const &c : cases) {
        std::string const before = Everything();
        device::RefusedKey const refused(std::string("net/wifi/") + c.refused);
        EXPECT_EQ(Post(accessPointPage, fields).One(failureMessage), notSaved) << c.refused;
        EXPECT_EQ(Changes(before), c.written) << c.refused;
        EXPECT_EQ(device::TakeCommands(), Commands());
    }
}

TEST_F(AccessPointTest, ACountryThatTheModuleDoesNotHaveIsReplaced) {
    Set({{"country", "XX"}});
    EXPECT_EQ(Html(browser.Get(accessPointPage).body).One("//*[@id='ap_country_code_copy']/@value"), "US");
    Post(accessPointPage, With(accessPoint, {{"apEnabled", "-"}}));
    EXPECT_EQ(Get("country"), "XX") << "switching off writes the switch only";
    Post(wlanPage, wlan);
    EXPECT_EQ(Get("country"), "XX") << "the other page leaves it, as long as nobody chooses";
    Post(accessPointPage, accessPoint);
    EXPECT_EQ(Get("country"), "US");
}

TEST_F(WlanTest, ShowsTheStoredSettings) {
    Set({{"client/enabled", "yes"},
         {"client/security", "wpa_eap"},
         {"client/eap/identity", "user"},
         {"client/mobile_qx", "yes"}});
    Html const page(browser.Get(wlanPage).body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Config WLAN ");
    EXPECT_EQ(page.All("//div[@id='cfg_wlan']//tr/th"),
              (std::vector<std::string>{"WLAN Enabled ", "SSID ", "Country Code ", "", "Regulatory Domain ",
                                        "Security Type ", "Username ", "Password ",
                                        "Allow Mobile QX connection ", ""}));
    EXPECT_EQ(page.Count("//*[@id='wlan_enabled' or @id='wlan_mobile_qx'][@checked]"), 2U);
    EXPECT_EQ(page.One("//*[@id='wlan_security']/option[@selected]"), "WPA/WPA2 - Enterprise");
    EXPECT_EQ(page.One("//*[@id='wlan_ess_id']/@value"), "plant");
    EXPECT_EQ(page.One("//*[@id='wlan_identity']/@value"), "user");
    EXPECT_EQ(page.Count("//*[@id='wlan_pass_phrase']/@value"), 0U);

    Set({{"client/security", ""}});
    EXPECT_EQ(Html(browser.Get(wlanPage).body).One("//*[@id='wlan_security']/option[@selected]"), "None");
}

TEST_F(WlanTest, StoresWhatChangedAndAppliesItWithTheRules) {
    Fields const enterprise = {{"wlanSecurity", "wpa_eap"}, {"wlanIdentity", "user"}, {"wlanPassPhrase", ""}};
    struct {
        Fields changes;
        std::set<std::string> written;
    } const cases[] = {
        {{{"wlanEnabled", "-"}, {"wlanEssId", "other"}}, {}},
        {{}, {"client/enabled"}},
        {{{"wlanMobileQx", "y"}}, {"client/mobile_qx"}},
        {With(enterprise, {{"wlanPassPhrase", "password"}}),
         {"client/eap/password", "client/eap/identity", "client/security", "client/mobile_qx"}},
        {enterprise, {}},
        {{{"wlanEssId", "other"}, {"wlanPassPhrase", "password"}},
         {"client/essid", "client/wpa_psk", "client/security"}},
        {{{"wlanEssId", "open"}, {"wlanSecurity", "none"}},
         {"client/wpa_psk", "client/security", "client/essid"}},
        {{{"wlanEnabled", "-"}}, {"client/enabled"}},
    };
    for (auto const &c : cases) {
        std::string const before = Everything();
        Html const page = Post(wlanPage, With(wlan, c.changes));
        EXPECT_EQ(page.One(successMessage), done);
        EXPECT_EQ(Changes(before), c.written);
        EXPECT_EQ(device::TakeCommands(), (Commands{applyClient, applyRules}));
    }
    EXPECT_EQ(Get("client/wpa_psk"), "");
    EXPECT_EQ(Get("client/eap/password"), "hash:8846f7eaee8fb117ad06bdd830b7586c" + std::string(1, '\0'));
}

TEST_F(WlanTest, BadInputIsRefused) {
    struct {
        Fields changes;
        std::vector<std::string> marked;
    } const cases[] = {
        {{{"wlanEssId", "other"}}, {"wlan_pass_phrase"}},
        {{{"wlanPassPhrase", std::string(7, 'x')}}, {"wlan_pass_phrase"}},
        {{{"wlanPassPhrase", std::string(64, 'x')}}, {"wlan_pass_phrase"}},
        {{{"wlanSecurity", "wpa_eap"}, {"wlanPassPhrase", "password"}}, {"wlan_identity"}},
        {{{"wlanSecurity", "wpa_eap"}, {"wlanIdentity", "user"}}, {"wlan_pass_phrase"}},
        {{{"wlanSecurity", "wpa_eap"}}, {"wlan_identity", "wlan_pass_phrase"}},
        {{{"wlanSecurity", "wpa_eap"}, {"wlanIdentity", "user"}, {"wlanPassPhrase", "\xC3("}}, {}},
        {{{"wlanSecurity", "wep"}}, {}},
        {{{"wlanSecurity", "-"}}, {}},
        {{{"wlanEssId", std::string(33, 'x')}, {"wlanSecurity", "none"}}, {}},
        {{{"wlanCountryCode", "DE"}}, {}},
    };
    for (auto const &c : cases)
        ExpectRefused(wlanPage, With(wlan, c.changes), c.marked);
    Html const page = Post(wlanPage, With(wlan, {{"wlanEssId", "other"}, {"wlanSecurity", "wpa_eap"}}));
    EXPECT_EQ(page.One("//*[@id='wlan_ess_id']/@value"), "other") << "what was typed stays";
    EXPECT_EQ(page.One("//*[@id='wlan_security']/option[@selected]/@value"), "wpa_eap");
}

TEST_F(WlanTest, AnotherNetworkNeedsAPassPhraseOfItsOwn) {
    Fields const other = {{"wlanEssId", "other"}};
    Fields const enterprise = {
        {"wlanSecurity", "wpa_eap"}, {"wlanIdentity", "user"}, {"wlanPassPhrase", "password"}};
    EXPECT_EQ(Post(wlanPage, With(With(wlan, other), enterprise)).One(successMessage), done);
    device::TakeCommands();
    EXPECT_EQ(Get("client/wpa_psk"), storedKey) << "that of the network before";
    ExpectRefused(wlanPage, With(wlan, other), {"wlan_pass_phrase"});
}

TEST_F(WlanTest, AFailedScriptIsToldAndTheRulesAreAppliedAllTheSame) {
    device::TemporaryFile const failure("/etc/fail/network_funcs.sh", "22");
    Html const page = Post(wlanPage, wlan);
    EXPECT_EQ(page.One(failureMessage), "Failed to configure WLAN client. Error 'Invalid argument'");
    EXPECT_EQ(device::TakeCommands(), (Commands{applyClient, applyRules}));
    EXPECT_EQ(Get("client/enabled"), "yes");
}

TEST_F(WlanTest, AFailedWriteEndsTheSequence) {
    device::RefusedKey const refused("net/wifi/client/enabled");
    std::string const before = Everything();
    EXPECT_EQ(
        Post(wlanPage, With(wlan, {{"wlanSecurity", "none"}, {"wlanEssId", "other"}})).One(failureMessage),
        notSaved);
    EXPECT_EQ(Changes(before), (std::set<std::string>{"client/wpa_psk", "client/security"}));
    EXPECT_EQ(device::TakeCommands(), Commands());
}

/// The countries are read once in the life of a process: these tests have one of their own.
TEST_F(WifiTest, TheCountriesAreThoseOfTheModulesDomain) {
    struct {
        char const *vendor;
        char const *region;
        std::vector<std::string> countries;
    } const cases[] = {
        {"laird", "FCC", {"US"}},
        {"laird", "none", {}},
        {"laird", "AU", {"AU", "NZ"}},
        {"other",
         "",
         {"AU", "BR", "CA", "CN", "DE", "FR", "GB", "IN", "JP", "KR", "NL", "NZ", "PR", "SA", "US", "ZA"}},
    };
    for (auto const &c : cases) {
        Set({{"vendor", c.vendor}, {"region_code", c.region}});
        device::Process process(device::Configuration(9103));
        Browser direct("http://127.0.0.1:9103");
        ASSERT_TRUE(direct.WaitUntilUp());
        Answer const answer = direct.Get(wlanPage);
        EXPECT_EQ(Html(answer.body).All("//*[@id='wlan_country_code']/option/@value"), c.countries);
        EXPECT_NE(answer.body.find(std::string("wlanCountryLocked = ") +
                                   (c.countries.size() == 1 ? "true" : "false")),
                  std::string::npos);
    }
}

TEST_F(WifiTest, ARefusedSaveKeepsCountryAndChannelAsChosen) {
    Set({{"region_code", "ETSI"}, {"country", "FR"}});
    device::Process process(device::Configuration(9103));
    Browser direct("http://127.0.0.1:9103");
    ASSERT_TRUE(direct.WaitUntilUp());
    struct {
        char const *path;
        std::string prefix;
        Fields fields;
        std::vector<std::string> channels;
    } const cases[] = {
        {accessPointPage,
         "ap",
         With(accessPoint, {{"apChannel", "36:5180"}, {"apPassPhrase", "short"}}),
         {"36:5180"}},
        {accessPointPage,
         "ap",
         With(accessPoint, {{"apChannel", "40:5200"}, {"apEssId", std::string(33, 'x')}}),
         {"40:5200"}},
        {wlanPage, "wlan", With(wlan, {{"wlanPassPhrase", "short"}}), {}},
    };
    for (auto const &c : cases) {
        Fields fields = With(c.fields, {{c.prefix + "CountryCode", "GB"}});
        fields.emplace_back(c.prefix + "CountryCode", "GB");  // as scripts leave it: the select and its copy
        Html const page(direct.Post(c.path, fields).body);
        EXPECT_EQ(page.One(failureMessage), invalid) << c.path;
        EXPECT_EQ(page.All("//*[@id='" + c.prefix + "_country_code']/option[@selected]/@value"),
                  std::vector<std::string>{"GB"})
            << c.path;
        EXPECT_EQ(page.One("//*[@id='" + c.prefix + "_country_code_copy']/@value"), "GB") << c.path;
        EXPECT_EQ(page.All("//*[@id='ap_channel_copy']/@value"), c.channels);
        EXPECT_EQ(Get("country"), "FR");
    }
}

}  // namespace pages
