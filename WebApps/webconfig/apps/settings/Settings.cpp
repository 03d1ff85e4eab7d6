#include "WebApps/webconfig/apps/Settings.h"

#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>

namespace webconfig::apps {

Settings::Settings(cppcms::service &service) : Base(service, "") {
    mapper().assign("/");
    mapper().assign("general", "/general");
    mapper().assign("firmware", "/firmware");
    mapper().assign("firmware_upgrade_status", "/firmware_upgrade_status");
    mapper().assign("reboot", "/reboot");
    mapper().assign("advanced", "/advanced");
    mapper().assign("about", "/about");
    mapper().assign("about2", "/about/{1}/{2}");

    dispatcher().assign("/?", &Settings::Firmware, this);
    dispatcher().assign("/general", &Settings::Firmware, this);
    dispatcher().assign("/firmware", &Settings::Firmware, this);
    dispatcher().assign("/firmware_upgrade_status", &Settings::FirmwareUpgradeStatus, this);
    dispatcher().assign("/reboot", &Settings::Reboot, this);
    dispatcher().assign("/advanced", &Settings::Advanced, this);
    dispatcher().assign("/about", static_cast<void (Settings::*)()>(&Settings::About), this);
    dispatcher().assign("/about/([A-Za-z0-9][A-Za-z0-9-\\+\\.]*)/([A-Za-z0-9][A-Za-z0-9-_\\+\\.]*)",
                        static_cast<void (Settings::*)(std::string, std::string)>(&Settings::About), this, 1,
                        2);
    dispatcher().assign("[\\s\\S]*", &Settings::Firmware, this);  // any other text
}

}  // namespace webconfig::apps
