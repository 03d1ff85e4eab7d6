#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char numberFile[] = "/etc/barcode-asn";
constexpr char offered[] = "btn_asn";

class ServiceTest : public PageTest {
  protected:
    ServiceTest() : PageTest({"/config/service/assemblysn", "", {}}) {}
    ~ServiceTest() override { device::WriteFile(numberFile, before); }

    std::string const before = device::ReadFile(numberFile);
    std::string const number = before.substr(0, before.find('\n'));
    Fields const form = {{"newAssemblySN", ""}, {"btnASN", "Save"}};
};

}  // namespace

TEST_F(ServiceTest, HasMediaOfItsOwn) {
    for (std::string const path : {"/config/service", page.path.c_str()}) {
        Html const html(browser.Get(path).body);
        EXPECT_EQ(html.Value("//input[@id='cfg_current_assembly_sn' and @readonly]"), number);
        EXPECT_TRUE(html.All("//link[@rel='stylesheet']/@href")[0].starts_with("/service_imgs/css/"));
        std::string const script = html.All("/html/head/script/@src").back();
        EXPECT_TRUE(script.starts_with("/service_plugin_imgs/application/head/")) << script;
        EXPECT_EQ(browser.Get(script).status, 200) << script;
    }
}

TEST_F(ServiceTest, TakesTenToThirtyCharacters) {
    for (std::size_t const length : {10, 30}) {
        std::string const next(length, '1');
        Html const html = Expect(form, {.fields = {{"newAssemblySN", next}},
                                        .success = "Assembly SN changed. Reboot is required to take effect",
                                        .shown = {{"cfg_current_assembly_sn", number},  // until the reboot
                                                  {offered, "Reboot to take effect"}}});
        EXPECT_EQ(html.Count("//input[@id='cfg_new_assembly_sn' and @disabled]"), 1U);
        EXPECT_EQ(device::ReadFile(numberFile), next + '\n');
        device::WriteFile(numberFile, before);
    }
    Strings const length = {"Invalid length; minimum 10, maximum 30"};
    Refuses(form, {{"newAssemblySN", std::string(9, '1'), length},
                   {"newAssemblySN", std::string(31, '1'), length}});
    Run(form, {{.fields = {{"newAssemblySN", number}},
                .success = "Assembly SN already set",
                .shown = {{offered, "Save"}}},
               {.fields = {{"newAssemblySN", "1234567890"}, {"btnASN", "Other"}}, .success = ""}});
    std::string const inTheWay = std::string(numberFile) + ".new";
    device::WriteFile(inTheWay + "/file", "");
    Expect(form, {.fields = {{"newAssemblySN", "1234567890"}},
                  .failure = "Failed to change assembly SN",
                  .shown = {{offered, "Save"}}});
    device::Shell("rm -r " + inTheWay);
    EXPECT_EQ(device::ReadFile(numberFile), before);
}

}  // namespace pages
