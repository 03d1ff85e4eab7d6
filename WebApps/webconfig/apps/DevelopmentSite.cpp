#include "WebApps/webconfig/apps/DevelopmentSite.h"

#include <cppcms/http_response.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <cppcms/url_dispatcher.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "WebApps/webconfig/apps/MediaRoot.h"
#include "WebApps/webconfig/util/PluginManager.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace fs = std::filesystem;

namespace {

struct MediaType {
    std::string_view extension;
    std::string_view type;
};

constexpr std::array<MediaType, 6> mediaTypes{{{".css", "text/css"},
                                               {".js", "text/javascript"},
                                               {".gif", "image/gif"},
                                               {".png", "image/png"},
                                               {".svg", "image/svg+xml"},
                                               {".ico", "image/x-icon"}}};

constexpr std::string_view servicePaths = "/service(?:_plugin)?_imgs/.*";

std::string_view TypeOf(fs::path const &path) {
    for (auto const &media : mediaTypes) {
        if (path.extension() == media.extension)
            return media.type;
    }
    return "application/octet-stream";
}

}  // namespace

DevelopmentSite::DevelopmentSite(cppcms::service &service)
    : cppcms::application(service), _mediaDirectory(settings().get("webconfig.media_directory", "")) {
    dispatcher().assign("/?", &DevelopmentSite::StartPage, this);
    dispatcher().assign(MediaRoot(settings()) + "(/.*)", &DevelopmentSite::MediaFile, this, 1);
    dispatcher().assign('(' + std::string(servicePaths) + ')', &DevelopmentSite::ServiceFile, this, 1);
    dispatcher().assign(PluginMediaRoot(settings()) + "/([^/]+)(/.*)", &DevelopmentSite::PluginMediaFile,
                        this, 1, 2);
}

std::string DevelopmentSite::Paths(cppcms::service &service) {
    auto const &settings = service.settings();
    std::string const plugins = PluginMediaRoot(settings);
    std::string media = MediaRoot(settings) + "/.*";
    if (MediaRoot(settings).empty())  // all that is not the status space's, which is asked last
        media = "(?!/" + settings.get<std::string>("webconfig.root.async") + ')' + media;
    return "(/?|" + media + '|' + std::string(servicePaths) + (plugins.empty() ? "" : '|' + plugins + "/.*") +
           ')';
}

void DevelopmentSite::StartPage() {
    response().set_redirect_header('/' + settings().get<std::string>("webconfig.root.sync") + '/');
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the URL dispatcher hands texts over by value
void DevelopmentSite::MediaFile(std::string path) {
    _Serve(_mediaDirectory.empty() ? "" : _mediaDirectory + path);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): as above
void DevelopmentSite::ServiceFile(std::string path) {
    _Serve(_mediaDirectory.empty() ? "" : fs::path(_mediaDirectory).parent_path().string() + path);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): as above
void DevelopmentSite::PluginMediaFile(std::string volume, std::string path) {
    std::string const volumes = util::GetEnv("MOUNT_DIR");
    _Serve(volumes.empty() ? "" : util::PluginManager::MediaDirectory(volumes, volume) + path);
}

void DevelopmentSite::_Serve(std::string const &path) {
    std::ifstream file;
    std::error_code ignored;
    // No part of a path may lead out of its folder.
    if (path.find("/..") == std::string::npos && fs::is_regular_file(path, ignored))
        file.open(path, std::ios::binary);
    if (!file.is_open()) {
        response().make_error_response(cppcms::http::response::not_found);
        return;
    }
    response().content_type(std::string(TypeOf(path)));
    response().erase_header(
        "Cache-Control");  // media have nothing to hide, and links to them carry the build
    response().out() << file.rdbuf();
}

}  // namespace webconfig::apps
