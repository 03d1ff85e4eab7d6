#include "WebApps/webconfig/apps/MediaRoot.h"

#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

std::string WithLeadingSlash(std::string const &root) {
    return root.empty() || root.front() == '/' ? root : '/' + root;
}

}  // namespace

std::string MediaRoot(cppcms::json::value const &settings) {
    return WithLeadingSlash(util::EnvOrSettings("MEDIA_ROOT", "webconfig.media_root", settings));
}

std::string PluginMediaRoot(cppcms::json::value const &settings) {
    return WithLeadingSlash(
        util::EnvOrSettings("PLUGIN_MEDIA_ROOT", "webconfig.plugin_media_root", settings));
}

}  // namespace webconfig::apps
