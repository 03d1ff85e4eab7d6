#include "WebApps/webconfig/apps/Plugins.h"

namespace webconfig::apps {

util::PluginManager *Plugins(cppcms::json::value const &settings) {
    return settings.get("webconfig.plugins.enable", false) ? util::PluginManager::Instance() : nullptr;
}

}  // namespace webconfig::apps
