#pragma once

#include "WebApps/webconfig/apps/Page.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::apps {

/// The pages of the settings, and the built-in menu. The General page is the site's start page; below
/// "/settings" its name leads to the Firmware page, on purpose.
inline constexpr Page<Settings> settingsPages[] = {
    {"general", &Settings::Firmware},
    {"firmware", &Settings::Firmware, util::Translatable("Firmware")},
    {"firmware_upgrade_status", &Settings::FirmwareUpgradeStatus},
    {"reboot", &Settings::Reboot, util::Translatable("Reboot")},
    {"advanced", &Settings::Advanced, util::Translatable("Advanced")},
    {"history", &Settings::History, util::Translatable("History"), &history::IsKept},
    {"about", &Settings::About},
};

}  // namespace webconfig::apps
