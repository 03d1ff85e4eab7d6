#include "tests/pages/support/Page.h"

namespace pages {

TEST(RoutingTest, PathsLeadToTheirPages) {
    Browser browser(device::address);
    std::pair<char const *, char const *> const cases[] = {
        {"/config", " General Device Configuration "},
        {"/config/", " General Device Configuration "},
        // Settings without a page of their own show the Firmware page.
        {"/config/settings", " Firmware "},
        {"/config/settings/general", " Firmware "},
        {"/config/settings/a/b/c", " Firmware "},
    };
    for (auto const &[path, title] : cases)
        EXPECT_EQ(Html(browser.Get(path).body).One("//h2[@id='config_page_title']"), title) << path;
    EXPECT_EQ(browser.Get("/").location, std::string(device::address) + "/config/");
    for (char const *path : {"/config/nothing", "/config/settings/a/b/c/d", "/config/settingsX",
                             "/config/service/other", "/nowhere"})
        EXPECT_EQ(browser.Get(path).status, 404) << path;
}

TEST(RoutingTest, EveryPageHasTheMenu) {
    Html const page(Browser(device::address).Get("/config/settings/about").body);
    EXPECT_EQ(page.All("//ul[@class='nav']/li/div[@class='nav']"), Strings{"Settings"});
    EXPECT_EQ(page.All("//ul[@class='nav2']/li/a/@href"),
              (Strings{"/config/settings/firmware", "/config/settings/reboot", "/config/settings/advanced",
                       "/config/settings/history"}));
    auto const sheets = page.All("/html/head/link[@rel='stylesheet']/@href");
    EXPECT_TRUE(sheets.at(2).starts_with("/media/css/screen.css?rev=")) << sheets[2];
}

TEST(RoutingTest, LinksFollowTheConfiguredRoot) {
    device::KeptStore const store;
    store.Set({{"net/wifi/vendor", "laird"}});
    device::RecordingProgram const reboot("/usr/sbin/reboot", "exit 0");
    std::string configuration = device::Configuration(9105);
    configuration.replace(configuration.find("\"config\""), 8, "\"setup\"");
    device::Process process(configuration);
    Browser browser("http://127.0.0.1:9105");
    ASSERT_TRUE(browser.WaitUntilUp(10, "/setup/"));
    std::string pages = browser.Post("/setup/regulatory/wifi", Fields{{"Reboot", "Reboot"}}).body;
    EXPECT_NE(pages.find("(\"/setup/regulatory/wifi\", \"/setup/settings/general\")"), std::string::npos);
    auto const declared = DeclaredPages();
    for (auto const &page : declared)
        pages += browser.Get("/setup" + page).body;
    EXPECT_EQ(device::Count(pages, "</html>"), declared.size()) << "one is shown before, one leads elsewhere";
    EXPECT_NE(pages.find("href=\"/setup/settings/about/zlib/LICENSE\""), std::string::npos);
    EXPECT_EQ(pages.find("/config/"), std::string::npos) << pages.substr(pages.find("/config/") - 200, 400);
}

}  // namespace pages
