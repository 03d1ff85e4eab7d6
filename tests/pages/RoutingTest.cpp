#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char generalTitle[] = " General Device Configuration ";

std::string Title(Answer const &answer) {
    auto const titles = Html(answer.body).All("//h2[@id='config_page_title']");
    return titles.empty() ? "" : titles.front();
}

}  // namespace

TEST(RoutingTest, TheStartPageIsGeneral) {
    Browser browser(device::address);
    for (char const *path : {"/config", "/config/"})
        EXPECT_EQ(Title(browser.Get(path)), generalTitle) << path;
    Answer const root = browser.Get("/");
    EXPECT_EQ(root.status / 100, 3);
    EXPECT_EQ(root.location, std::string(device::address) + "/config/");
}

TEST(RoutingTest, SettingsWithoutAPageOfTheirOwnShowTheFirmwarePage) {
    Browser browser(device::address);
    for (char const *path :
         {"/config/settings", "/config/settings/", "/config/settings/general", "/config/settings/nothing",
          "/config/settings/a/b/c", "/config/settings/about/zlib/.hidden"})
        EXPECT_EQ(Title(browser.Get(path)), " Firmware ") << path;
}

TEST(RoutingTest, UnknownPathsAreNotFound) {
    Browser browser(device::address);
    for (char const *path : {"/config/nothing", "/config/settings/a/b/c/d", "/config/settingsX",
                             "/config/settings/about/x/y/z", "/nowhere"})
        EXPECT_EQ(browser.Get(path).status, 404) << path;
}

TEST(RoutingTest, EveryPageHasTheSkeletonAndNoBrokenLinks) {
    Browser browser(device::address);
    for (char const *path : {"/config/", "/config/settings/about", "/config/settings/firmware"}) {
        Answer const answer = browser.Get(path);
        EXPECT_EQ(answer.body.find("this_is_an_invalid_url_generated_by_url_mapper"), std::string::npos);
        Html const page(answer.body);
        EXPECT_EQ(page.One("/html/body/div[@id='banner']/div[@id='banner_middle']/h1").empty(), false);
        EXPECT_EQ(page.All("//ul[@class='nav']/li/div[@class='nav']"), Strings{"Settings"});
        EXPECT_EQ(
            page.All("//ul[@class='nav2']/li/a/@href"),
            (Strings{"/config/settings/firmware", "/config/settings/reboot", "/config/settings/advanced"}));
        EXPECT_EQ(page.One("//a[@id='menu_Advanced']"), " Advanced");
        EXPECT_EQ(page.Count("//div[@id='alertsBox']"), 0U);

        auto links = page.All("/html/head/link[@rel='stylesheet']/@href");
        for (auto const &script : page.All("/html/head/script/@src"))
            links.push_back(script);
        ASSERT_EQ(links.size(), 7U);
        EXPECT_TRUE(links[2].starts_with("/media/css/screen.css?rev=")) << links[2];
        for (auto const &link : links) {
            std::string encoded = link;
            for (std::size_t blank; (blank = encoded.find(' ')) != std::string::npos;)
                encoded.replace(blank, 1, "%20");
            EXPECT_EQ(browser.Get(encoded).status, 200) << link;
        }
    }
}

TEST(RoutingTest, LinksFollowTheConfiguredRoot) {
    device::KeptStore const store;
    store.Set({{"net/wifi/vendor", "laird"}});
    device::RecordingProgram const reboot("/usr/sbin/reboot", "exit 0");
    for (std::string const root : {"/config", "/setup"}) {
        std::string configuration = device::Configuration(9105);
        configuration.replace(configuration.find("\"config\""), 8, '"' + root.substr(1) + '"');
        device::Process process(configuration);
        Browser browser("http://127.0.0.1:9105");
        ASSERT_TRUE(browser.WaitUntilUp(10, root + '/'));

        std::string const about = browser.Get(root + "/settings/about").body;
        EXPECT_NE(
            about.find("<a class=\"ossnav\" href=\"" + root + "/settings/about/zlib/LICENSE\">LICENSE</a>"),
            std::string::npos)
            << about;
        std::string const rebooting =
            browser.Post(root + "/regulatory/wifi", Fields{{"Reboot", "Reboot"}}).body;
        EXPECT_NE(rebooting.find("\"//\" + location.host + \"" + root + "/regulatory/wifi?rand=\" + "),
                  std::string::npos)
            << rebooting;
        EXPECT_NE(rebooting.find("location.href = \"" + root + "/settings/general\";"), std::string::npos);
        if (root == "/config")
            continue;
        for (char const *page :
             {"/", "/settings/firmware", "/settings/reboot", "/settings/advanced", "/settings/about",
              "/network/ethernet1", "/network/openvpn", "/network/orvane", "/network/port_forwarding",
              "/network/cellular", "/network/ntp", "/network/dns_server", "/network/access_point",
              "/network/wlan", "/service/assemblysn", "/regulatory/wifi"}) {
            Answer const answer = browser.Get(root + page);
            EXPECT_EQ(answer.status, 200) << page;
            EXPECT_EQ(answer.body.find("/config/"), std::string::npos) << page;
        }
    }
}

TEST(RoutingTest, TheRebootAlertFollowsTheFlagAndTheFirmwareStatus) {
    Browser browser(device::address);
    auto const alerted = [&] {
        return Html(browser.Get("/config/").body)
                   .Count("//div[@id='alertsBox']/a[@href='/config/settings/reboot']") == 1;
    };
    EXPECT_FALSE(alerted());
    {
        device::ReplacedFile const flag("/tmp/webconfig_reboot_flag", "");
        EXPECT_TRUE(alerted());
    }
    device::ReplacedFile const status("/tmp/fwtool_status.txt", "{ 'state' : 'done' }\n");
    EXPECT_TRUE(alerted());
}

TEST(RoutingTest, AnyBytesGetAnAnswerAndTheServiceGoesOn) {
    Browser browser(device::address);
    std::string const noise("\0\xFF\x80%%%==&&;\r\n\r\n--x\r\nContent-Disposition", 41);
    for (char const *type : {"application/x-www-form-urlencoded", "multipart/form-data; boundary=x",
                             "multipart/form-data", "application/json", "text/plain", "\"\\;=,"}) {
        for (char const *path : {"/config/", "/status/rpc", "/config/settings/about", "/config/%00%ff"})
            EXPECT_NE(browser.Post(path, noise, type).status, 0) << path << ' ' << type;
    }
    EXPECT_EQ(browser.Get("/config/").status, 200);
}

}  // namespace pages
