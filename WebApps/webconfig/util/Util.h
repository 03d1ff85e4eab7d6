#pragma once

// The system utilities, all subjects at once.
#include "WebApps/webconfig/util/Certificates.h"
#include "WebApps/webconfig/util/Command.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/CountryChannels.h"
#include "WebApps/webconfig/util/Device.h"
#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/Firmware.h"
#include "WebApps/webconfig/util/Flags.h"
#include "WebApps/webconfig/util/Reboot.h"
#include "WebApps/webconfig/util/Settings.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Utf8.h"
#include "WebApps/webconfig/util/Wifi.h"
