#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <thread>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"

namespace pages {

namespace {

constexpr int port = 9104;
constexpr char address[] = "http://127.0.0.1:9104";
constexpr char page[] = "/config/traffic/interfaces";
constexpr char status[] = "/status/traffic";
constexpr char call[] = R"({"method":"traffic_counters","params":[],"id":1})";

constexpr char keys[] = R"("plugins":{"enable":true},"plugin_media_root":"plugins",)";

std::size_t Entries(std::string const &folder) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

/// The paths of a plug-in's media, and ways to leave their folder.
void ExpectOnlyMedia(Browser &browser) {
    Answer const sheet = browser.Get("/plugins/traffic/head/traffic.css");
    EXPECT_TRUE(sheet.contentType.starts_with("text/css")) << sheet.contentType;
    EXPECT_EQ(sheet.body,
              device::ReadFile("/opt/applications/traffic/var/www/webconfig/plugins/media/head/traffic.css"));
    for (char const *path :
         {"/plugins", "/plugins/traffic/head/", "/plugins/traffic/../branding.json",
          "/plugins/traffic/%2e%2e/branding.json", "/plugins/traffic/head/..%2f..%2fbranding.json",
          "/plugins/../camera/etc/init.d/rcS", "/plugins/camera/etc/init.d/rcS"}) {
        Answer const answer = browser.Get(path);
        EXPECT_TRUE(answer.status == 403 || answer.status == 404) << answer.status << ' ' << path;
    }
}

}  // namespace

TEST(PluginsTest, ByDefaultThereAreNoneAndTheWebServerHasTheirMediaOnly) {
    Browser browser(device::address);
    EXPECT_EQ(browser.Get(page).status, 404);
    EXPECT_EQ(browser.Post(status, call, "application/json").status, 404);
    EXPECT_EQ(browser.Get("/config/").body.find("traffic"), std::string::npos);
    ExpectOnlyMedia(browser);
}

TEST(PluginsTest, EachReloadUnloadsThemAndLoadsThemAfreshAndLeaksNothing) {
    device::Process process(device::Configuration(port, keys));
    Browser browser = device::Up(address);
    ExpectOnlyMedia(browser);
    std::string const proc = "/proc/" + std::to_string(process.Pid());
    ASSERT_TRUE(device::Reload(process, browser));
    std::size_t const descriptors = Entries(proc + "/fd");
    std::size_t const threads = Entries(proc + "/task");
    constexpr std::size_t reloads = 20;
    for (std::size_t count = 1; count < reloads; ++count) {
        // At the same time, so that there are several roots with pages of the plug-in.
        std::vector<std::jthread> others;
        for (int number = 0; number < 3; ++number)
            others.emplace_back([] { EXPECT_EQ(Browser(address).Get(page).status, 200); });
        others.clear();
        EXPECT_EQ(browser.Post(status, call, "application/json").status, 200);
        ASSERT_TRUE(device::Reload(process, browser));
    }
    EXPECT_EQ(browser.Get(page).status, 200);
    EXPECT_LE(Entries(proc + "/fd"), descriptors + 1);  // a connection may just come or go
    EXPECT_EQ(Entries(proc + "/task"), threads);
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(), 0);
    EXPECT_EQ(device::Count(process.Log(), "load plugin OK: "), reloads + 1);
    EXPECT_EQ(device::Count(process.Log(), "Unloaded plugin OK"), reloads + 1);
    EXPECT_EQ(device::Count(process.Log(), "webconfig start"), reloads + 1) << "each line once";
}

}  // namespace pages
