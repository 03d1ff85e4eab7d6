#pragma once

#include <cppcms/json.h>

#include <string>
#include <vector>

#include "WebApps/webconfig/plugin.h"
#include "WebApps/webconfig/util/Branding.h"

namespace webconfig::util {

/// Finds, loads and unloads what other volumes add to the pages. Of each folder E in the one that the
/// environment variable MOUNT_DIR names, it takes below E/var/www/webconfig/plugins
/// - libraries "*-webconfig-plugin.so" (see plugin.h),
/// - the branding file "*branding.json": an object whose member "branding" has the texts of Branding,
/// - style sheets and scripts for every page in the folder media/head.
///
/// The hooks take no lock: nobody may call Unload() or set the reload flag while they run. What is broken
/// in a plug-in is logged and skipped.
class PluginManager {
  public:
    struct PluginMetaStruct {
        std::string name;  // of the file
        Plugin *plugin;    // ends with its own Release(); null where the factory gave none
        void *handle;      // of the dynamic loader; null once the library is closed
        std::string path;
    };

    /// The manager, built at the first call and again at the first one after Unload() or ForceReload().
    /// Without MOUNT_DIR, and while a firmware upgrade runs, it has nothing loaded.
    static PluginManager *Instance();

    /// Set to true, it makes the next Instance() build a new manager. The libraries of the old one stay
    /// loaded, and its plug-in objects are never released: call Unload() instead unless that is wanted.
    static bool &ForceReload();

    /// Where the volume \a entry has its media, without a slash at the end.
    static std::string MediaDirectory(std::string const &mountDirectory, std::string const &entry);

    /// Call the operation of that name of every plug-in, in the order of loading.
    void PopulateMenuStartHook(std::vector<data::Menu> &menus);
    void PopulateMenuEndHook(std::vector<data::Menu> &menus);
    void AttachSynchronousAppsHook(cppcms::application &root, cppcms::service &service);
    void AttachAsynchronousAppsHook(cppcms::application &root, cppcms::service &service);

    /// Replaces all texts by those of the plug-ins' branding, if there is one.
    void PopulateBranding(Branding &branding) const;
    /// Append the URLs of the media: \a prefix, which is the plug-in media root, then "/E/head/FILE".
    void PopulateStyleSheets(std::string const &prefix, std::vector<std::string> &styleSheets) const;
    void PopulateScripts(std::string const &prefix, std::vector<std::string> &scripts) const;

    /// Releases the plug-ins and closes their libraries. Nothing that a plug-in made may be left by then.
    void Unload();

  private:
    using Names = std::vector<std::string>;

    PluginManager() = default;

    void LoadBranding(std::string const &mountDirectory, Names const &entries);
    void LoadMedia(std::string const &mountDirectory, Names const &entries);
    void LoadLibraries(std::string const &mountDirectory, Names const &entries);

    void LoadAll();
    void LoadLibrary(std::string const &name, std::string const &path);
    template <typename Operation>
    void ForEachPlugin(char const *failure, Operation const &operation);
    static void UnloadOne(PluginMetaStruct &loaded);

    std::vector<PluginMetaStruct> plugins_;
    Names styleSheets_;
    Names scripts_;
    cppcms::json::value branding_;
};

}  // namespace webconfig::util
