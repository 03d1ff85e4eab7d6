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

/// The menus of a page: their headings and links.
Strings Menus(Html const &page) {
    Strings menus = page.All("//ul[@class='nav']/li/div[@class='nav']");
    for (auto const &link : page.All("//ul[@class='nav2']/li/a/@href"))
        menus.push_back(link);
    return menus;
}

TEST(RoutingTest, MenusAndNamesAreThoseOfTheConfiguration) {
    device::KeptStore const store;
    store.Set({{"net/hostname", "<dev>"}});
    device::Process process(device::Configuration(
        9105, R"("menus":[{"text":"More","children":[{"text":"Time","path":"/network/ntp",)"
              R"("children":[{"text":"Start","path":"/"}]}]}],"show_device_name":true,"bundle":true,)"));
    Browser browser("http://127.0.0.1:9105");
    ASSERT_TRUE(browser.WaitUntilUp(10, "/config/"));
    for (char const *const path : {"/config/", "/config/service/assemblysn"}) {
        Html const page(browser.Get(path).body);
        EXPECT_EQ(Menus(page),
                  (Strings{"Settings", "More", "/config/settings/firmware", "/config/settings/reboot",
                           "/config/settings/advanced", "/config/network/ntp", "/config/"}))
            << path;
        EXPECT_EQ(page.One("//div[@id='banner_right']"), "<dev>") << path;
        EXPECT_EQ(page.Count("//head//@*[contains(.,'?rev=')]"), 2U) << path;
        EXPECT_EQ(page.Count("//head//@*[contains(.,'/css/bundle.css?') or contains(.,'/js/bundle.js?')]"),
                  2U)
            << path;
    }
    auto const title = [](Answer const &answer) { return Html(answer.body).One("/html/head/title"); };
    EXPECT_EQ(title(browser.Get("/config/network/ntp")), " NTP Servers – <dev> ");
    EXPECT_EQ(title(browser.Post("/config/", Fields{{"deviceName", ""}, {"save", "Save"}})),
              " Error: General Device Configuration – <dev> ");
    EXPECT_EQ(title(browser.Post("/config/network/dns_server", Fields{{"saveButton", "Save"}})),
              " Saved: Custom DNS Servers – <dev> ");
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
    EXPECT_EQ(Menus(Html(browser.Get("/setup/settings/about").body)),
              (Strings{"Settings", "/setup/settings/firmware", "/setup/settings/reboot",
                       "/setup/settings/advanced"}));
    EXPECT_EQ(Menus(Html(browser.Get("/setup/service/assemblysn").body)),
              (Strings{"Service", "/setup/service/assemblysn"}));
    EXPECT_NE(pages.find("href=\"/setup/settings/about/zlib/LICENSE\""), std::string::npos);
    EXPECT_EQ(pages.find("/config/"), std::string::npos) << pages.substr(pages.find("/config/") - 200, 400);
}

}  // namespace pages
