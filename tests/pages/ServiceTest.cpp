#include <gtest/gtest.h>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char servicePage[] = "/config/service/assemblysn";
constexpr char numberFile[] = "/etc/barcode-asn";
constexpr char offered[] = "//input[@id='btn_asn']/@value";

class ServiceTest : public testing::Test {
  protected:
    ~ServiceTest() override { device::WriteFile(numberFile, before); }

    Html Press(std::string const &button, std::string const &number = "") {
        return Html(browser.Post(servicePage, Fields{{"newAssemblySN", number}, {"btnASN", button}}).body);
    }

    std::string const before = device::ReadFile(numberFile);
    std::string const number = before.substr(0, before.find('\n'));
    Browser browser{device::address};
};

}  // namespace

TEST_F(ServiceTest, HasAMenuAndMediaOfItsOwn) {
    for (char const *path : {"/config/service", "/config/service/", servicePage}) {
        Html const page(browser.Get(path).body);
        EXPECT_EQ(page.All("//div[@class='nav']"), std::vector<std::string>{"Service"});
        EXPECT_EQ(page.All("//ul[@class='nav2']//a/@href"), std::vector<std::string>{servicePage});
        EXPECT_EQ(page.One("//input[@id='cfg_current_assembly_sn' and @readonly]/@value"), number);
        EXPECT_EQ(page.One("//form[@id='id_form']//input[@type='submit']/@value"), "Save");
        EXPECT_TRUE(page.All("//link[@rel='stylesheet']/@href")[0].starts_with("/service_imgs/css/"));
        for (auto const &link :
             {page.All("//link/@href").back(), page.All("/html/head/script/@src").back()}) {
            EXPECT_TRUE(link.starts_with("/service_plugin_imgs/application/head/")) << link;
            EXPECT_EQ(browser.Get(link).status, 200) << link;
        }
    }
    EXPECT_EQ(browser.Get("/config/service/other").status, 404);
}

TEST_F(ServiceTest, TakesTenToThirtyCharacters) {
    struct {
        std::string number;
        bool taken;
    } const cases[] = {
        {"", false},
        {std::string(9, '1'), false},
        {std::string(10, '1'), true},
        {std::string(30, '1'), true},
        {std::string(31, '1'), false},
    };
    for (auto const &c : cases) {
        device::WriteFile(numberFile, before);
        Html const page = Press("Save", c.number);
        EXPECT_EQ(device::ReadFile(numberFile), c.taken ? c.number + '\n' : before);
        EXPECT_EQ(page.One("//input[@id='cfg_current_assembly_sn']/@value"), number)
            << "the old one until the reboot";
        EXPECT_EQ(page.One(offered), c.taken ? "Reboot to take effect" : "Save");
        EXPECT_EQ(page.Count("//input[@id='cfg_new_assembly_sn' and @disabled]"), c.taken ? 1U : 0U);
        EXPECT_EQ(page.One(c.taken ? successMessage : failureMessage),
                  c.taken ? "Assembly SN changed. Reboot is required to take effect" : invalid);
    }
}

TEST_F(ServiceTest, TheSameNumberAndOneThatCannotBeStoredChangeNothing) {
    Html const same = Press("Save", number);
    EXPECT_EQ(same.One(successMessage), "Assembly SN already set");
    EXPECT_EQ(same.One(offered), "Save");

    EXPECT_EQ(Press("Save", "two\nlines of it").One(failureMessage), "Failed to change assembly SN");
    EXPECT_EQ(device::ReadFile(numberFile), before);
    EXPECT_EQ(Press("Other", "1234567890").Count("//div[contains(@class,'form_result_msg')]"), 0U);
    EXPECT_EQ(device::ReadFile(numberFile), before);
}

TEST_F(ServiceTest, TheRebootIsStartedAndWaitedFor) {
    device::RecordingProgram const reboot("/usr/sbin/reboot", device::tellStart);
    device::TakeCommands();
    Answer const answer = browser.Post(servicePage, Fields{{"btnASN", "Reboot to take effect"}});
    EXPECT_NE(answer.body.find("Please wait, device is rebooting ... "), std::string::npos);
    EXPECT_NE(answer.body.find("\").prop(\"disabled\", true)"), std::string::npos);
    device::ExpectDetachedStart();
    EXPECT_EQ(device::TakeCommands(), std::vector<std::string>{"/sbin/reboot -d 5"});
    EXPECT_EQ(browser.Get(servicePage).body.find("device is rebooting"), std::string::npos);
}

}  // namespace pages
