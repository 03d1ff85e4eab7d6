#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class CellularTest : public PageTest {
  protected:
    CellularTest()
        : PageTest({"/config/network/cellular",
                    "",
                    {{"serial/port/gprs/function", "none"},
                     {"cellular/radio_technology", "GSM"},
                     {"cellular/allow_roaming", "no"},
                     {"cellular/check_ppp_receiving", "no"},
                     {"cellular/use_sim_pin", "no"},
                     {"cellular/sim_pin", "1111"},
                     {"gprs/sim_type", "att"},
                     {"gprs/apn", "gprs-apn"},
                     {"gprs/att/apn", "att-apn"},
                     {"gprs/att/username", "att-username"},
                     {"gprs/att/password", "att-password"},
                     {"gprs/kpn/apn", "kpn-apn"},
                     {"gprs/dial_command", "D1"},
                     {"gprs/network/mode", "0"},
                     {"gprs/network/refresh", "no"},
                     {"gprs/network/operators", R"(2,"One",1,"Two & <b>",,",",x"y")"},
                     {"cdma/username", "old"},
                     {"cdma/password", "old"},
                     {"cdma/dial_command", "old"},
                     {"cdma/custom/activation_command", "old"},
                     {"cdma/custom/activation_response", "old"},
                     {"cdma/current_carrier", "sprint"},
                     {"cdma/force_activation", "no"}}}) {
        device::Shell("supvis --suspend modem");
    }
    ~CellularTest() override { device::Shell("supvis --resume modem"); }

    Fields const main = {{"#cfg_cell_enabled", "y"},    {"#cfg_cell_radiotech", "GSM"},
                         {"#cfg_cell_roam", "y"},       {"#cfg_cell_use_sim_pin", "y"},
                         {"#cfg_cell_sim_pin", "2222"}, {"cellular", "Save"}};
    Fields const gprs = {{"#cfg_cell_preferred_network", "\"One\""},
                         {"#cfg_cell_sim_type", "<forged>"},
                         {"#cfg_cell_apn", "new.apn"},
                         {"#cfg_cell_username", "me"},
                         {"#cfg_cell_password", "pa ss"},
                         {"#cfg_cell_gprs_dial_cmd", "D2"},
                         {"gprs", "Save"}};
    // These have no inputs: their places in the form are their names.
    Fields const cdma = {{"_1", "custom"}, {"_2", "me"},    {"_3", "secret"}, {"_4", "D3"},
                         {"_5", "AT+A"},   {"_6", "READY"}, {"cdma", "Save"}};
};

constexpr char network[] = "cfg_cell_preferred_network";
constexpr char networks[] = "//*[@id='cfg_cell_preferred_network']/option/@value";
constexpr char cancel[] = "Refreshing (click to cancel)";

}  // namespace

TEST_F(CellularTest, ShowsTheSettingsOfTheSimCardAndTheFoundNetworks) {
    std::tuple<char const *, char const *, char const *> const cards[] = {
        {"att", "AT&T", "att-apn"}, {"kpn", "Varnel KPN", "kpn-apn"}, {"KPN", "Unknown", "gprs-apn"}};
    for (auto const &[type, name, apn] : cards)
        Show({{"gprs/sim_type", type}},
             {{"//*[@id='cfg_cell_sim_type'][@readonly]", name}, {"cfg_cell_apn", apn}});
    Html const html = Show(
        {}, {{"config_page_title", " Cellular Port Configuration "}, {"cfg_refresh_network", "Refresh"}});
    EXPECT_EQ(html.All(networks), (Strings{"Automatic", "\"One\"", "\"Two & <b>\""}));
    Show({{"gprs/network/refresh", "yes"}}, {{"cfg_refresh_network", cancel}});
}

TEST_F(CellularTest, SelectsTheNetworkThatTheModeNames) {
    std::pair<char const *, char const *> const cases[] = {
        {R"(1,0,"One")", "\"One\""},
        {R"(4,0,"Two & <b>")", "\"Two & <b>\""},
        {R"(2,0,"One")", "Automatic"},
        {R"(1,2,"One")", "Automatic"},
        {"1,0,One", "Automatic"},
        {R"(1,0,"Gone")", "Automatic"},
        {"", "Automatic"},
    };
    for (auto const &[mode, selected] : cases)
        Show({{"gprs/network/mode", mode}}, {{network, selected}});
}

TEST_F(CellularTest, TheMainSettingsAreStoredAndThePinOnlyWhereItIsUsed) {
    Settings const on = {{"serial/port/gprs/function", "gprs_dialup"}, {"cellular/allow_roaming", "yes"}};
    Settings withSamePin = on;
    withSamePin["cellular/use_sim_pin"] = "yes";
    Settings withPin = withSamePin;
    withPin["cellular/sim_pin"] = "2222";
    Run(main,
        {{.written = withPin, .shown = {{"cfg_cell_sim_pin", ""}}, .tab = "0"},
         {.fields = {{"#cfg_cell_use_sim_pin", "n"}},
          .written = on,
          .shown = {{"//*[@id='cfg_cell_sim_pin']/@placeholder", "(unchanged)"}},  // loaded again
          .tab = "0"},
         {.fields = {{"#cfg_cell_sim_pin", ""}}, .written = withSamePin},
         {.before = withPin,
          .fields = {{"#cfg_cell_enabled", none}, {"#cfg_cell_roam", none}, {"#cfg_cell_use_sim_pin", none}},
          .written = {{"serial/port/gprs/function", "none"},
                      {"cellular/allow_roaming", "no"},
                      {"cellular/use_sim_pin", "no"}}}});
    StopsAt(main, {{"cellular/allow_roaming", {{"serial/port/gprs/function", "gprs_dialup"}}}});
    Refuses(main, {{"#cfg_cell_radiotech", "CDMA", {"This field is required"}}});
}

TEST_F(CellularTest, TheAccessIsStoredForTheSimCardOnly) {
    Settings const written = {{"gprs/att/apn", "new.apn"},
                              {"gprs/att/username", "me"},
                              {"gprs/att/password", "pa ss"},
                              {"gprs/dial_command", "D2"}};
    Settings withNetwork = written;
    withNetwork["gprs/network/mode"] = R"(1,0,"One")";
    Settings withSamePassword = withNetwork;
    withSamePassword.erase("gprs/att/password");
    Run(gprs,
        {{.written = withNetwork, .shown = {{"cfg_cell_sim_type", "AT&T"}, {network, "\"One\""}}, .tab = "1"},
         {.fields = {{"#cfg_cell_preferred_network", "Automatic"}}, .written = written},
         {.fields = {{"#cfg_cell_password", ""}},
          .written = withSamePassword,
          .shown = {{"cfg_cell_password", ""}}}});
    StopsAt(gprs, {{"gprs/att/username", {{"gprs/att/apn", "new.apn"}}}});
    Strings const required = {"This field is required"};
    Refuses(gprs, {{"#cfg_cell_preferred_network", "One", required},
                   {"#cfg_cell_apn", "", required},
                   {"#cfg_cell_gprs_dial_cmd", "", required}});
}

TEST_F(CellularTest, ASearchIsStartedAndCancelled) {
    Fields const start = {{"gprsNetwork", "Refresh"}};
    Fields const stop = {{"gprsNetwork", cancel}};
    Settings const searching = {{"gprs/network/refresh", "yes"}};
    Html const started =
        Expect(start, {.written = searching, .shown = {{"cfg_refresh_network", cancel}}, .tab = "2"});
    EXPECT_EQ(started.All("//input[@disabled]/@id"), (Strings{"cfg_cell_save", "cfg_cell_gprs_save"}));
    Expect(stop, {.before = searching,
                  .success = "",
                  .written = {{"gprs/network/refresh", "no"}},
                  .shown = {{"cfg_refresh_network", "Refresh"}},
                  .tab = "1"});
    Html const failed = Expect(start, {.refused = "gprs/network/refresh", .failure = notSaved, .tab = "1"});
    EXPECT_EQ(failed.Count("//input[@disabled]"), 0U);
    Refuses(start, {{"gprsNetwork", "Stop", {}}});
}

TEST_F(CellularTest, CdmaSettingsAreTakenWithoutATabOfTheirOwn) {
    Settings const written = {{"cdma/current_carrier", "custom"},
                              {"cdma/username", "me"},
                              {"cdma/password", "secret"},
                              {"cdma/dial_command", "D3"},
                              {"cdma/custom/activation_command", "AT+A"},
                              {"cdma/custom/activation_response", "READY"}};
    Settings forced = written;
    forced["cdma/force_activation"] = "yes";
    Run(cdma, {{.written = written, .tab = "2"},
               {.fields = {{"_7", "y"}}, .written = forced},
               {.fields = {{"_7", "y"}},
                .refused = "cdma/dial_command",
                .failure = notSaved,
                .written = {{"cdma/current_carrier", "custom"},
                            {"cdma/username", "me"},
                            {"cdma/password", "secret"}},
                .tab = "2"}});
    Refuses(cdma, {{"_4", "", {}}});
}

}  // namespace pages
