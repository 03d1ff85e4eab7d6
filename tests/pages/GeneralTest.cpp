#include <gtest/gtest.h>

#include <fstream>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char startPage[] = "/config/";

class GeneralTest : public testing::Test {
  protected:
    GeneralTest() {
        device::Shell("prm set net/hostname korbex; prm set language ''");
        Html const page(browser.Get(startPage).body);
        nameField = page.One("//*[@id='cfg_grl_device_name']/@name");
        languageField = page.One("//*[@id='cfg_grl_lang']/@name");
    }
    ~GeneralTest() override { device::Shell("prm set net/hostname korbex; prm set language ''"); }

    Answer Save(std::string const &name) {
        return browser.Post(startPage, {{nameField, name}, {languageField, ""}, {"save", "Save"}});
    }
    static std::string StoredName() { return device::Shell("prm get net/hostname"); }

    Browser browser{device::address};
    std::string nameField;
    std::string languageField;
};

constexpr char savedBox[] =
    "//div[contains(@class,'success') and contains(@class,'form_result_msg') and "
    "not(contains(@class,'static'))]";
constexpr char failureBox[] = "//div[contains(@class,'failure') and contains(@class,'form_result_msg')]";

}  // namespace

TEST_F(GeneralTest, ShowsTheStoredValuesAndTheSystemInformation) {
    device::Shell("prm set net/hostname box-17");
    Answer const answer = browser.Get(startPage);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.contentType, "text/html; charset=utf-8");

    Html const page(answer.body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " General Device Configuration ");
    EXPECT_EQ(page.One("//*[@id='cfg_grl_device_name']/@value"), "box-17");
    EXPECT_EQ(page.One("//*[@id='cfg_grl_lang']/option[@selected]"), "English");
    EXPECT_EQ(page.One("//*[@id='general_config']//tr[th='Device ID']/td[@class='ui-serial-number']"),
              "(not supported)");
    EXPECT_EQ(page.All("//*[@id='general_status']//h3"), (std::vector<std::string>{"Uname", "Version Info"}));
    EXPECT_EQ(page.All("//*[@id='general_status']//pre")[0], device::Shell("uname -a"));
    EXPECT_EQ(page.All("//*[@id='general_status']//pre")[1], device::ReadFile("/etc/version"));
    EXPECT_EQ(page.One("//*[@id='general_dynamic_status']/img/@src"), "/media/images/spinner.gif");
    EXPECT_EQ(page.Count("//div[contains(@class,'form_result_msg')]"), 0U);
}

TEST_F(GeneralTest, SavesNameAndLanguage) {
    Html const page(Save("new-name").body);
    EXPECT_EQ(page.One(savedBox), "Success: The form values were saved.");
    EXPECT_EQ(page.One("//*[@id='cfg_grl_device_name']/@value"), "new-name");
    EXPECT_EQ(StoredName(), "new-name\n");
    EXPECT_EQ(device::Shell("prm get language"), "\n");
    EXPECT_FALSE(std::ifstream("/tmp/webconfig_reboot_flag").good());
}

TEST_F(GeneralTest, TakesOneToSixtyFourCharacters) {
    std::string const umlaut = "\xC3\xA4";
    std::string longest;
    for (int i = 0; i < 64; ++i)
        longest += umlaut;
    struct {
        std::string name;
        bool saved;
    } const cases[] = {
        {"", false},
        {"a", true},
        {std::string(64, 'x'), true},
        {std::string(65, 'x'), false},
        {longest, true},
        {longest + umlaut, false},
        {"control \x7F", false},
        {"<b>&\"'</b>", true},
    };
    for (auto const &c : cases) {
        device::Shell("prm set net/hostname before");
        Answer const answer = Save(c.name);
        EXPECT_EQ(answer.status, 200);
        Html const page(answer.body);
        EXPECT_EQ(StoredName(), (c.saved ? c.name : "before") + "\n");
        if (c.saved) {
            EXPECT_EQ(page.Count(savedBox), 1U) << c.name;
        } else {
            EXPECT_EQ(page.One(failureBox), "Invalid values: The form values were not saved.") << c.name;
            EXPECT_EQ(page.One("//tr[@class='cppcms_error_msg']//span[@class='cppcms_error_msg']"),
                      "Invalid length; minimum 1, maximum 64")
                << c.name;
            EXPECT_EQ(page.Count("//tr[@class='cppcms_error_msg']//*[@id='cfg_grl_device_name']"), 1U);
        }
    }
}

TEST_F(GeneralTest, BytesThatAreNoTextAreRefused) {
    for (char const *name : {"bad \xC3\x28 bytes", "\xFF", "control \x01"}) {
        EXPECT_NE(Save(name).body.find("Invalid values: The form values were not saved."), std::string::npos);
        EXPECT_EQ(StoredName(), "korbex\n");
    }
}

TEST_F(GeneralTest, MarkupComesBackAsText) {
    Html const page(Save("<script>alert(1)</script>").body);
    EXPECT_EQ(page.One("//*[@id='cfg_grl_device_name']/@value"), "<script>alert(1)</script>");
    EXPECT_EQ(page.Count("//script[contains(.,'alert(1)')]"), 0U);
}

TEST_F(GeneralTest, ALanguageThatIsNotOfferedIsRefused) {
    Html const refused(browser.Post(startPage, {{nameField, "x"}, {languageField, "de"}}).body);
    EXPECT_EQ(refused.One("//tr[th='Language ']//span[@class='cppcms_error_msg']"), "This field is required");
    EXPECT_EQ(StoredName(), "korbex\n");

    device::Shell("prm set language de");
    Answer const shown = browser.Get(startPage);
    EXPECT_EQ(shown.status, 200);
    EXPECT_EQ(Html(shown.body).Count("//*[@id='cfg_grl_lang']/option[@selected]"), 0U);
}

TEST_F(GeneralTest, AStoreThatCannotBeWrittenGivesTheSaveError) {
    device::Process process(device::Configuration(9101), {"PRM_STORE=/proc/none/prm.db"});
    Browser direct("http://127.0.0.1:9101");
    ASSERT_TRUE(direct.WaitUntilUp());
    Html const page(direct.Post(startPage, {{nameField, "x"}, {languageField, ""}}).body);
    EXPECT_EQ(page.One(failureBox), "Save error: The form values were not saved.");
    EXPECT_TRUE(process.WaitForLog("FAIL prmlib::setPar \"net/hostname\""));
    EXPECT_EQ(process.Log().find("FAIL prmlib::setPar \"language\""), std::string::npos)
        << "the sequence must stop at the first failed write";
}

}  // namespace pages
