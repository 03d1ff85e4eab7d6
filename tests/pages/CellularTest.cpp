#include <gtest/gtest.h>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char cellularPage[] = "/config/network/cellular";

using Strings = std::vector<std::string>;

class CellularTest : public testing::Test {
  protected:
    CellularTest() {
        device::Shell(
            "supvis --suspend modem; prm set serial/port/gprs/function none; prm set gprs/sim_type att;"
            "for key in radio_technology:GSM allow_roaming:no check_ppp_receiving:no use_sim_pin:no "
            "sim_pin:1111;"
            " do prm set cellular/${key%:*} ${key#*:}; done;"
            "for prefix in gprs gprs/att gprs/kpn; do for key in apn username password; do"
            " prm set $prefix/$key $prefix-$key; done; done;"
            "prm set gprs/dial_command D1; prm set gprs/network/mode 0; prm set gprs/network/refresh no;"
            "prm set gprs/network/operators '2,\"One\",1,\"Two & <b>\",,\",\",x\"y\"';"
            "for key in username password dial_command custom/activation_command custom/activation_response;"
            " do prm set cdma/$key old; done; prm set cdma/current_carrier sprint;"
            "prm set cdma/force_activation no");
    }
    ~CellularTest() override { device::Shell("supvis --resume modem"); }

    /// The names that the page gave its inputs, and \a values for them.
    Fields Named(std::vector<std::pair<std::string, std::string>> const &values) {
        Html const page(browser.Get(cellularPage).body);
        Fields fields;
        for (auto const &[id, value] : values)
            fields.emplace_back(page.One("//*[@id='" + id + "']/@name"), value);
        return fields;
    }
    Fields Main(std::string const &usePin) {
        Fields fields = Named({{"cfg_cell_enabled", "y"},
                               {"cfg_cell_radiotech", "GSM"},
                               {"cfg_cell_roam", "y"},
                               {"cfg_cell_use_sim_pin", usePin},
                               {"cfg_cell_sim_pin", "2222"}});
        fields.emplace_back("cellular", "Save");
        return fields;
    }
    Fields Gprs(std::string const &network, std::string const &apn = "new.apn") {
        Fields fields = Named({{"cfg_cell_preferred_network", network},
                               {"cfg_cell_sim_type", "<forged>"},
                               {"cfg_cell_apn", apn},
                               {"cfg_cell_username", "me"},
                               {"cfg_cell_password", "pa ss"},
                               {"cfg_cell_gprs_dial_cmd", "D2"}});
        fields.emplace_back("gprs", "Save");
        return fields;
    }
    std::string Post(Fields const &fields) { return browser.Post(cellularPage, fields).body; }

    /// The values of the keys below \a prefix.
    static std::string Stored(std::string const &prefix) {
        return device::Shell("prm export " + prefix + " | cut -d '\"' -f 4 | tr '\\n' ' '");
    }
    static std::string StoredMain() {
        return device::Shell("prm get serial/port/gprs/function") + Stored("cellular/");
    }

    device::KeptParameters const function{"serial/port/gprs/function"};
    device::KeptParameters const main{"cellular/"};
    device::KeptParameters const gprs{"gprs/"};
    device::KeptParameters const cdma{"cdma/"};
    Browser browser{device::address};
};

std::string Opened(std::string const &body) {
    auto const at = body.find("selected: ");
    return at == std::string::npos ? "" : body.substr(at + 10, 1);
}

}  // namespace

TEST_F(CellularTest, ShowsTheSettingsOfTheSimCardAndTheFoundNetworks) {
    struct {
        char const *type;
        char const *name;
        char const *apn;
    } const cards[] = {{"att", "AT&T", "gprs/att-apn"},
                       {"kpn", "Varnel KPN", "gprs/kpn-apn"},
                       {"KPN", "Unknown", "gprs-apn"}};
    for (auto const &card : cards) {
        device::Shell(std::string("prm set gprs/sim_type ") + card.type);
        Html const page(browser.Get(cellularPage).body);
        EXPECT_EQ(page.One("//*[@id='cfg_cell_sim_type'][@readonly]/@value"), card.name);
        EXPECT_EQ(page.One("//*[@id='cfg_cell_apn']/@value"), card.apn);
    }
    Html const page(browser.Get(cellularPage).body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Cellular Port Configuration ");
    EXPECT_EQ(page.All("//*[@id='cfg_cell_preferred_network']/option/@value"),
              (Strings{"Automatic", "\"One\"", "\"Two & <b>\""}));
    EXPECT_EQ(page.Count("//*[@id='cellular_config']//input[@checked]"), 0U);
    EXPECT_EQ(page.One("//*[@id='cfg_refresh_network']/@value"), "Refresh");
    EXPECT_EQ(page.Count("//*[@id='cellular_status']//td[.='--']"), 21U);

    device::Shell(
        "prm set gprs/network/refresh yes; prm set gprs/network/operators \"$(printf '\"%0200d\"' 0)\"");
    Html const searching(browser.Get(cellularPage).body);
    EXPECT_EQ(searching.One("//*[@id='cfg_refresh_network']/@value"), "Refreshing (click to cancel)");
    EXPECT_EQ(searching.Count("//*[@id='cfg_cell_preferred_network']/option"), 1U)
        << "a list that is too long";
}

TEST_F(CellularTest, SelectsTheNetworkThatTheModeNames) {
    struct {
        char const *mode;
        char const *selected;
    } const cases[] = {
        {"0", "Automatic"},
        {"1,0,\"One\"", "\"One\""},
        {"4,0,\"One\",2", "Automatic"},
        {"4,0,\"Two & <b>\"", "\"Two & <b>\""},
        {"2,0,\"One\"", "Automatic"},
        {"1,2,\"One\"", "Automatic"},
        {"1,0,One", "Automatic"},
        {"1,0", "Automatic"},
        {"x1,0,\"One\"", "Automatic"},
        {"1,0,\"Gone\"", "Automatic"},
        {"", "Automatic"},
        {"11,0,\"One\"", "Automatic"},
    };
    for (auto const &c : cases) {
        device::Shell(std::string("prm set gprs/network/mode '") + c.mode + "'");
        Html const page(browser.Get(cellularPage).body);
        EXPECT_EQ(page.One("//*[@id='cfg_cell_preferred_network']/option[@selected]/@value"), c.selected)
            << c.mode;
    }
}

TEST_F(CellularTest, TheMainSettingsAreStoredAndThePinOnlyWhereItIsUsed) {
    std::string const unused = Post(Main("n"));
    EXPECT_EQ(Html(unused).One(successMessage), saved);
    EXPECT_EQ(Opened(unused), "0");
    EXPECT_EQ(StoredMain(), "gprs_dialup\nyes no GSM 1111 no ");
    EXPECT_EQ(Html(unused).One("//*[@id='cfg_cell_sim_pin']/@value"), "1111") << "reloaded";

    EXPECT_EQ(Html(Post(Main("y"))).One(successMessage), saved);
    EXPECT_EQ(StoredMain(), "gprs_dialup\nyes no GSM 2222 yes ");

    Fields off = Named({{"cfg_cell_radiotech", "GSM"}});
    off.emplace_back("cellular", "Save");
    Post(off);
    EXPECT_EQ(StoredMain(), "none\nno no GSM 2222 no ");
}

TEST_F(CellularTest, TheAccessIsStoredForTheSimCardOnly) {
    std::string const body = Post(Gprs("\"One\""));
    Html const page(body);
    EXPECT_EQ(page.One(successMessage), saved);
    EXPECT_EQ(Opened(body), "1");
    EXPECT_EQ(page.One("//*[@id='cfg_cell_sim_type']/@value"), "AT&T");
    EXPECT_EQ(Stored("gprs/att/"), "new.apn pa ss me ");
    EXPECT_EQ(Stored("gprs/kpn/"), "gprs/kpn-apn gprs/kpn-password gprs/kpn-username ");
    EXPECT_EQ(device::Shell("prm get gprs/apn; prm get gprs/dial_command; prm get gprs/network/mode"),
              "gprs-apn\nD2\n1,0,\"One\"\n");
    Post(Gprs("Automatic"));
    EXPECT_EQ(device::Shell("prm get gprs/network/mode"), "0\n");
}

TEST_F(CellularTest, ASearchIsStartedAndCancelled) {
    std::string const started = Post({{"gprsNetwork", "Refresh"}});
    Html const page(started);
    EXPECT_EQ(page.One(successMessage), saved);
    EXPECT_EQ(Opened(started), "2");
    EXPECT_EQ(page.One("//*[@id='cfg_refresh_network']/@value"), "Refreshing (click to cancel)");
    EXPECT_EQ(page.All("//input[@disabled]/@id"), (Strings{"cfg_cell_save", "cfg_cell_gprs_save"}));
    EXPECT_EQ(device::Shell("prm get gprs/network/refresh"), "yes\n");

    std::string const cancelled = Post({{"gprsNetwork", "Refreshing (click to cancel)"}});
    EXPECT_EQ(Opened(cancelled), "1");
    EXPECT_EQ(Html(cancelled).Count("//div[contains(@class,'form_result_msg')]"), 0U);
    EXPECT_EQ(Html(cancelled).One("//*[@id='cfg_refresh_network']/@value"), "Refresh");
    EXPECT_EQ(device::Shell("prm get gprs/network/refresh"), "no\n");

    device::RefusedKey const refused("gprs/network/refresh");
    for (char const *caption : {"Refresh", "Refreshing (click to cancel)"}) {
        std::string const failed = Post({{"gprsNetwork", caption}});
        EXPECT_EQ(Html(failed).One(failureMessage), notSaved);
        EXPECT_EQ(Opened(failed), "1");
        EXPECT_EQ(Html(failed).Count("//input[@disabled]"), 0U);
    }
}

TEST_F(CellularTest, CdmaSettingsAreTakenWithoutATabOfTheirOwn) {
    // Their places in the form are their names.
    Fields const fields = {{"_1", "custom"}, {"_2", "me"},    {"_3", "secret"}, {"_4", "D3"},
                           {"_5", "AT+A"},   {"_6", "READY"}, {"cdma", "Save"}};
    std::string const body = Post(fields);
    EXPECT_EQ(Html(body).One(successMessage), saved);
    EXPECT_EQ(Opened(body), "2");
    EXPECT_EQ(Stored("cdma/"), "custom AT+A READY D3 no secret me ");

    Fields forced = fields;
    forced.emplace_back("_7", "y");
    {
        device::RefusedKey const refused("cdma/dial_command");
        EXPECT_EQ(Html(Post(forced)).One(failureMessage), notSaved);
        EXPECT_EQ(device::Shell("prm get cdma/force_activation"), "no\n");
    }
    EXPECT_EQ(Html(Post(forced)).One(successMessage), saved);
    EXPECT_EQ(device::Shell("prm get cdma/force_activation"), "yes\n");
}

TEST_F(CellularTest, BadInputIsRefusedAndNothingIsStored) {
    std::string const before = device::Shell("prm export");
    Fields noTechnology = Main("y");
    noTechnology[1].second = "CDMA";
    Fields noDialCommand = Gprs("Automatic");
    noDialCommand[5].second = "";
    Fields const cdma = {{"_1", "sprint"}, {"_4", ""}, {"cdma", "Save"}};
    for (Fields const &fields :
         {noTechnology, Gprs("\"Gone\""), Gprs("One"), Gprs("Automatic", ""), noDialCommand,
          Gprs("Automatic", "a\x01"), cdma, Fields{}, Fields{{"gprsNetwork", "Stop"}}})
        EXPECT_NE(Post(fields).find(invalid), std::string::npos);
    EXPECT_EQ(device::Shell("prm export"), before);
}

TEST_F(CellularTest, AFailedWriteEndsTheSequence) {
    {
        device::RefusedKey const refused("cellular/allow_roaming");
        EXPECT_EQ(Html(Post(Main("y"))).One(failureMessage), notSaved);
        EXPECT_EQ(StoredMain(), "gprs_dialup\nno no GSM 1111 no ");
    }
    device::RefusedKey const refused("gprs/att/username");
    EXPECT_EQ(Html(Post(Gprs("\"One\""))).One(failureMessage), notSaved);
    EXPECT_EQ(Stored("gprs/att/"), "new.apn gprs/att-password gprs/att-username ");
    EXPECT_EQ(device::Shell("prm get gprs/dial_command; prm get gprs/network/mode"), "D1\n0\n");
}

}  // namespace pages
