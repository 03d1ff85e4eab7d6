#pragma once

#include "WebApps/webconfig/util/PluginManager.h"

namespace webconfig::apps {

/// The plug-ins, or null where the setting "webconfig.plugins.enable" does not ask for them.
util::PluginManager *Plugins(cppcms::json::value const &settings);

}  // namespace webconfig::apps
