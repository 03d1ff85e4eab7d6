#pragma once

#include "WebApps/webconfig/apps/Page.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/history/Recorder.h"

namespace webconfig::apps {

/// The pages of the settings, and the built-in menu. The General page is the site's start page; below
/// "/settings" its name leads to the Firmware page, on purpose.
inline constexpr Page<Settings> settingsPages[] = {
    {"general", &Settings::Firmware},
    {"firmware", &Settings::Firmware, "Firmware"},
    {"firmware_upgrade_status", &Settings::FirmwareUpgradeStatus},
    {"reboot", &Settings::Reboot, "Reboot"},
    {"advanced", &Settings::Advanced, "Advanced"},
    {"history", &Settings::History, "History", &history::IsKept},
    {"about", &Settings::About},
};

}  // namespace webconfig::apps
