#include "WebApps/webconfig/util/PluginManager.h"

#include <cppcms/application.h>
#include <cppcms/service.h>
#include <cppcms/views_pool.h>
#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "WebApps/webconfig/data/Menu.h"
#include "tests/unit/platform/TemporaryFolder.h"
#include "tests/unit/util/LogCapture.h"

namespace {

/// The folder of the built plug-ins, opened before the tests get a /tmp of their own: it may be below /tmp.
int const fixtures = ::open(PLUGIN_FIXTURES, O_RDONLY | O_DIRECTORY | O_CLOEXEC);

using Texts = std::vector<std::string>;
namespace fs = std::filesystem;

Texts &Events() {
    static Texts events;
    return events;
}

}  // namespace

/// The plug-ins of these tests call it.
extern "C" void PluginEvent(char const *text) {
    Events().emplace_back(text);
}

namespace {

using webconfig::util::Branding;
using webconfig::util::PluginManager;

constexpr char plugins[] = "/var/www/webconfig/plugins/";

std::string Line(std::string const &text, std::string const &level = "info") {
    return level + ": " + text + " (PluginManager)";
}

class PluginManagerTest : public testing::Test {
  protected:
    PluginManagerTest() {
        PluginManager::Instance()->Unload();
        ::setenv("MOUNT_DIR", Root().c_str(), 1);
        Events().clear();
    }
    ~PluginManagerTest() override {
        PluginManager::Instance()->Unload();
        ::unsetenv("MOUNT_DIR");
    }

    std::string const &Root() const { return volumes_.Path(); }

    /// Puts a file of the volume \a entry below its plug-in folder.
    void File(std::string const &entry, std::string const &name, std::string const &content = "") const {
        fs::create_directories(fs::path(volumes_ / entry + plugins + name).parent_path());
        volumes_.File(entry + plugins + name, content);
    }

    /// Puts a copy of a built plug-in there; returns its path as the log has it.
    std::string Library(std::string const &entry, std::string const &name) const {
        std::string const file = name + "-webconfig-plugin.so";
        File(entry, file);
        fs::copy_file("/proc/self/fd/" + std::to_string(fixtures) + '/' + file,
                      volumes_ / entry + plugins + file, fs::copy_options::overwrite_existing);
        return Root() + '/' + entry + plugins + file;
    }

    bool IsMapped() const { return ContentOf("/proc/self/maps").find(Root()) != std::string::npos; }

    TemporaryFolder volumes_;
    LogCapture log_{booster::log::info};
};

/// The lines that contain \a part.
Texts With(Texts lines, std::string const &part) {
    std::erase_if(lines, [&](std::string const &line) { return line.find(part) == std::string::npos; });
    return lines;
}

bool HasSkin(std::string const &name) {
    Texts const skins = cppcms::views::pool::instance().enumerate();
    return std::find(skins.begin(), skins.end(), name) != skins.end();
}

cppcms::json::value Settings() {
    cppcms::json::value settings;
    settings.set("service.api", "http");
    return settings;
}

}  // namespace

TEST_F(PluginManagerTest, LoadsByNameOverAllVolumesAndUnloadsWhollyAndLoadsAgain) {
    std::string const b = Library("volume1", "b");
    std::string const a = Library("volume2", "a");
    PluginManager *const manager = PluginManager::Instance();
    EXPECT_EQ(PluginManager::Instance(), manager);
    EXPECT_EQ(Events(), (Texts{"a created", "b created"}));
    EXPECT_EQ(With(log_.Take(), "load plugin"),
              (Texts{Line("load plugin OK: " + a), Line("load plugin OK: " + b)}));
    EXPECT_TRUE(HasSkin("a") && HasSkin("b"));

    Events().clear();
    manager->Unload();
    EXPECT_EQ(Events(), (Texts{"a release", "b release"}));
    EXPECT_FALSE(HasSkin("a") || HasSkin("b") || IsMapped());

    PluginManager::Instance();
    EXPECT_EQ(With(Events(), "created").size(), 2U);
    EXPECT_TRUE(HasSkin("a"));
}

TEST_F(PluginManagerTest, AForcedReloadForgetsThePluginsWithoutUnloadingThem) {
    Library("volume", "a");
    PluginManager::Instance();
    PluginManager::ForceReload() = true;
    PluginManager::Instance();
    EXPECT_FALSE(PluginManager::ForceReload());
    EXPECT_EQ(Events(), (Texts{"a created", "a created"}));
    PluginManager::Instance()->Unload();
    EXPECT_TRUE(IsMapped());
}

TEST_F(PluginManagerTest, WhatIsNoPluginIsLoggedAndTheOthersWork) {
    File("volume", "broken-webconfig-plugin.so", "not a library");
    File("volume", "a-webconfig-plugin.so.old");
    fs::create_directories(volumes_ / (std::string("volume") + plugins + "folder-webconfig-plugin.so"));
    for (char const *name : {"b", "no_factory", "other_abi", "factory_throws"})
        Library("volume", name);
    File("volume-without-plugins", "README");
    PluginManager::Instance();
    EXPECT_EQ(Events(), Texts{"b created"});

    EXPECT_EQ(With(log_.Take(), "error: load plugin: ").size(), 4U);
}

TEST_F(PluginManagerTest, TheHooksCallEveryPluginWhateverAnotherThrows) {
    for (char const *name : {"b", "throws", "a"})
        Library("volume", name);
    PluginManager &manager = *PluginManager::Instance();
    cppcms::service service(Settings());
    cppcms::application root(service);
    Events().clear();
    log_.Take();

    std::vector<webconfig::data::Menu> menus;
    manager.PopulateMenuStartHook(menus);
    manager.AttachSynchronousAppsHook(root, service);
    manager.AttachAsynchronousAppsHook(root, service);
    manager.PopulateMenuEndHook(menus);
    Texts texts;
    for (auto const &menu : menus)
        texts.push_back(menu.GetText());
    menus.clear();  // what a plug-in has made goes before it
    manager.Unload();

    Texts expected;
    for (char const *event : {" menu start", " sync", " async", " menu end", " release"}) {
        for (std::string const name : {"a", "b", "throws"})
            expected.push_back(name + event);
    }
    EXPECT_EQ(Events(), expected);
    EXPECT_EQ(texts, (Texts{"a start", "b start", "a end", "b end"}));
    EXPECT_EQ(With(log_.Take(), "error: Failed to ").size(), 5U);
    EXPECT_FALSE(IsMapped());
}

TEST_F(PluginManagerTest, MediaAreUrlsBelowThePrefixInTheOrderOfTheVolumes) {
    for (char const *entry : {"b", "a"}) {
        for (char const *name : {"media/head/x.css", "media/head/x.js", "media/head/x.json", "media/y.css"})
            File(entry, name);
    }
    PluginManager const &manager = *PluginManager::Instance();
    Texts sheets{"first"};
    Texts scripts;
    manager.PopulateStyleSheets("/plugins", sheets);
    manager.PopulateScripts("", scripts);
    EXPECT_EQ(sheets, (Texts{"first", "/plugins/a/head/x.css", "/plugins/b/head/x.css"}));
    EXPECT_EQ(scripts, (Texts{"/a/head/x.js", "/b/head/x.js"}));
}

TEST_F(PluginManagerTest, TheLastWellFormedBrandingReplacesAllTexts) {
    File("a", "branding.json", R"({"branding": {"window_text": "a", "footer_html": "<i>a</i>"}})");
    File("b", "my.branding.json", R"({"branding": {"window_text": "b", "banner_html": 7}})");
    File("c", "branding.json", "{\n\"branding\": {\n\"window_text\" \"c\"}}");
    Branding branding;
    branding.banner_text = "settings";
    PluginManager::Instance()->PopulateBranding(branding);
    EXPECT_EQ(branding.window_text, "b");
    EXPECT_EQ(branding.banner_text + branding.banner_html + branding.footer_html, "");
    EXPECT_EQ(With(log_.Take(), "load branding ERROR"),
              Texts{Line("load branding ERROR, line: 3 in file " + Root() + "/c" + plugins + "branding.json",
                         "error")});
}

TEST_F(PluginManagerTest, DuringAnUpgradeNothingIsLoaded) {
    Library("volume", "a");
    constexpr char lock[] = "/tmp/fwtool_6v1Znb.lock";
    fs::create_directory(lock);  // a lock that cannot be asked counts as held
    PluginManager::Instance();
    fs::remove(lock);
    EXPECT_EQ(Events(), Texts());
}
