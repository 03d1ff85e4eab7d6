#pragma once

#include <string>

namespace cppcms::json {
class value;
}

namespace webconfig::apps {

/// URL prefix of the static media: the environment variable "MEDIA_ROOT", else the setting
/// "webconfig.media_root". It begins with a slash unless it is empty.
std::string MediaRoot(cppcms::json::value const &settings);

/// The same of plug-in media: "PLUGIN_MEDIA_ROOT", "webconfig.plugin_media_root".
std::string PluginMediaRoot(cppcms::json::value const &settings);

}  // namespace webconfig::apps
