#pragma once

#include <cppcms/application.h>

#include <string>

namespace webconfig::apps {

/// What the device's web server does besides passing requests on, for development with the built-in HTTP
/// server: the site's root leads to the start page, media files are served from the folder named by the
/// setting "webconfig.media_directory", those of the service page from folders beside it, and those of
/// plug-ins from the volumes below MOUNT_DIR.
class DevelopmentSite : public cppcms::application {
  public:
    explicit DevelopmentSite(cppcms::service &service);

    /// Expression of the paths that it serves, in whole.
    static std::string Paths(cppcms::service &service);

    void StartPage();
    /// \a path is below the media root, with the slash that it begins with.
    void MediaFile(std::string path);
    /// \a path is a whole one.
    void ServiceFile(std::string path);
    /// \a path is below the plug-in media root and the \a volume.
    void PluginMediaFile(std::string volume, std::string path);

  private:
    void _Serve(std::string const &path);

    std::string const _mediaDirectory;
};

}  // namespace webconfig::apps
