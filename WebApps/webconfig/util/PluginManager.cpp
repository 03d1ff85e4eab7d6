#include "WebApps/webconfig/util/PluginManager.h"

#include <dlfcn.h>

#include <algorithm>
#include <exception>
#include <fstream>
#include <memory>
#include <mutex>
#include <utility>

#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/Firmware.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Settings.h"

void webconfig_plugin_abi_4() {}

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/PluginManager";

std::string PluginDirectory(std::string const &mountDirectory, std::string const &entry) {
    return mountDirectory + '/' + entry + "/var/www/webconfig/plugins/";
}

/// Runs what a plug-in may throw out of, and logs that with \a failure in front.
template <typename Operation>
void Guarded(char const *failure, Operation const &operation) {
    try {
        operation();
    } catch (std::exception const &error) {
        WEBCONFIG_LOG(error, logTag) << failure << error.what();
    } catch (...) {
        WEBCONFIG_LOG(error, logTag) << failure << "unknown exception";
    }
}

}  // namespace

PluginManager *PluginManager::Instance() {
    static std::mutex guard;
    static std::unique_ptr<PluginManager> instance;

    std::lock_guard const lock(guard);
    if (instance && !ForceReload())
        return instance.get();
    if (instance) {
        instance.reset();
        WEBCONFIG_LOG(info, logTag) << "** Recreating plugin manager **";
    }
    instance.reset(new PluginManager);
    instance->LoadAll();
    ForceReload() = false;
    return instance.get();
}

bool &PluginManager::ForceReload() {
    static bool reload = false;
    return reload;
}

void PluginManager::LoadAll() {
    std::string const mountDirectory = GetEnv("MOUNT_DIR");
    if (mountDirectory.empty() || IsFirmwareUpgradeRunning()) {
        WEBCONFIG_LOG(warning, logTag) << "$MOUNT_DIR environemt not set, skipping loading plugins";
        return;
    }
    Names entries = FindFiles(mountDirectory, FindFilesType::Directories, ".*");
    std::sort(entries.begin(), entries.end());
    LoadBranding(mountDirectory, entries);
    LoadMedia(mountDirectory, entries);
    LoadLibraries(mountDirectory, entries);
}

/// The last file that is well-formed wins; nothing is merged.
void PluginManager::LoadBranding(std::string const &mountDirectory, Names const &entries) {
    for (auto const &entry : entries) {
        std::string const directory = PluginDirectory(mountDirectory, entry);
        WEBCONFIG_LOG(info, logTag) << "search branding: " << directory;
        for (auto const &name : FindFiles(directory, FindFilesType::Files, ".*branding.json$")) {
            std::string const path = directory + name;
            std::ifstream file(path);
            cppcms::json::value value;
            int line = 0;
            if (!file)
                continue;
            if (value.load(file, true, &line)) {
                branding_ = std::move(value);
                WEBCONFIG_LOG(info, logTag) << "load branding OK: " << path;
            } else if (line != 0) {
                WEBCONFIG_LOG(error, logTag) << "load branding ERROR, line: " << line << " in file " << path;
            }
        }
    }
}

std::string PluginManager::MediaDirectory(std::string const &mountDirectory, std::string const &entry) {
    return PluginDirectory(mountDirectory, entry) + "media";
}

void PluginManager::LoadMedia(std::string const &mountDirectory, Names const &entries) {
    for (auto const &entry : entries) {
        std::string const directory = MediaDirectory(mountDirectory, entry) + "/head";
        WEBCONFIG_LOG(info, logTag) << "search media: " << directory;
        std::string const url = '/' + entry + "/head/";
        auto const collect = [&](char const *pattern, Names &urls) {
            for (auto const &name : FindFiles(directory, FindFilesType::Files, pattern)) {
                WEBCONFIG_LOG(info, logTag) << "adding media: " << directory << '/' << name;
                urls.push_back(url + name);
            }
        };
        collect(".*.css$", styleSheets_);
        collect(".*.js$", scripts_);
    }
}

void PluginManager::LoadLibraries(std::string const &mountDirectory, Names const &entries) {
    std::vector<std::pair<std::string, std::string>> found;  // name and path
    for (auto const &entry : entries) {
        std::string const directory = PluginDirectory(mountDirectory, entry);
        WEBCONFIG_LOG(info, logTag) << "search plugins: " << directory;
        for (auto &name : FindFiles(directory, FindFilesType::Files, ".*-webconfig-plugin.so$"))
            found.emplace_back(name, directory + name);
    }
    std::sort(found.begin(), found.end());
    for (auto const &library : found)
        Guarded("load plugin: ", [&] { LoadLibrary(library.first, library.second); });
}

/// A library that is not fit stays open: what its start-up has registered elsewhere would be left dangling.
void PluginManager::LoadLibrary(std::string const &name, std::string const &path) {
    void *const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        WEBCONFIG_LOG(error, logTag) << "load plugin: " << ::dlerror();
        return;
    }
    ::dlerror();
    auto const create =
        reinterpret_cast<decltype(&create_webconfig_plugin)>(::dlsym(handle, "create_webconfig_plugin"));
    if (char const *const problem = ::dlerror()) {
        WEBCONFIG_LOG(error, logTag) << "load plugin: " << problem;
        return;
    }
    plugins_.push_back({name, create(), handle, path});
    WEBCONFIG_LOG(info, logTag) << "load plugin OK: " << path;
}

template <typename Operation>
void PluginManager::ForEachPlugin(char const *failure, Operation const &operation) {
    for (auto const &loaded : plugins_) {
        if (loaded.plugin)
            Guarded(failure, [&] { operation(*loaded.plugin); });
    }
}

void PluginManager::PopulateMenuStartHook(std::vector<data::Menu> &menus) {
    ForEachPlugin("Failed to populate menu start in plugin: ",
                  [&](Plugin &plugin) { plugin.PopulateMenuStart(menus); });
}

void PluginManager::PopulateMenuEndHook(std::vector<data::Menu> &menus) {
    ForEachPlugin("Failed to populate menu end in plugin: ",
                  [&](Plugin &plugin) { plugin.PopulateMenuEnd(menus); });
}

void PluginManager::AttachSynchronousAppsHook(cppcms::application &root, cppcms::service &service) {
    ForEachPlugin("Failed to attach synchronous app in plugin: ",
                  [&](Plugin &plugin) { plugin.AttachSynchronousApps(root, service); });
}

void PluginManager::AttachAsynchronousAppsHook(cppcms::application &root, cppcms::service &service) {
    ForEachPlugin("Failed to attach asynchronous app in plugin: ",
                  [&](Plugin &plugin) { plugin.AttachAsynchronousApps(root, service); });
}

void PluginManager::PopulateBranding(Branding &branding) const {
    if (!branding_.is_undefined() && !branding_.is_null())
        branding = ReadBranding(branding_.find("branding"));
}

void PluginManager::PopulateStyleSheets(std::string const &prefix,
                                        std::vector<std::string> &styleSheets) const {
    for (auto const &url : styleSheets_)
        styleSheets.push_back(prefix + url);
}

void PluginManager::PopulateScripts(std::string const &prefix, std::vector<std::string> &scripts) const {
    for (auto const &url : scripts_)
        scripts.push_back(prefix + url);
}

void PluginManager::Unload() {
    for (auto &loaded : plugins_)
        UnloadOne(loaded);
    plugins_.clear();
    ForceReload() = true;
}

void PluginManager::UnloadOne(PluginMetaStruct &loaded) {
    WEBCONFIG_LOG(info, logTag) << "Unloading the plugins library";
    if (!loaded.handle) {
        WEBCONFIG_LOG(info, logTag) << "No plugin loaded, skipping unloadPlugin()";
        return;
    }
    WEBCONFIG_LOG(info, logTag) << "Unloading " << loaded.path;
    if (loaded.plugin)
        Guarded("Failed to release plugin: ", [&] { std::exchange(loaded.plugin, nullptr)->Release(); });
    if (::dlclose(loaded.handle) != 0)
        WEBCONFIG_LOG(error, logTag) << "Failed to unload the plugin library!!: " << ::dlerror();
    loaded.handle = nullptr;
    WEBCONFIG_LOG(info, logTag) << "Unloaded plugin OK";
}

}  // namespace webconfig::util
