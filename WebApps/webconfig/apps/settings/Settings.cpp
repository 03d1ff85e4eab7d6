#include "WebApps/webconfig/apps/Settings.h"

#include "WebApps/webconfig/apps/settings/Pages.h"

namespace webconfig::apps {

Settings::Settings(cppcms::service &service) : Base(service, "") {
    mapper().assign("/");
    dispatcher().assign("/?", &Settings::Firmware, this);
    AddPages(*this, settingsPages);

    mapper().assign("about2", "/about/{1}/{2}");
    dispatcher().assign("/about/([A-Za-z0-9][A-Za-z0-9-\\+\\.]*)/([A-Za-z0-9][A-Za-z0-9-_\\+\\.]*)",
                        static_cast<void (Settings::*)(std::string, std::string)>(&Settings::About), this, 1,
                        2);
    dispatcher().assign("[\\s\\S]*", &Settings::Firmware, this);  // any other text
}

}  // namespace webconfig::apps
