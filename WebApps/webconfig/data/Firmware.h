#pragma once

#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Firmware.h"

namespace webconfig::data {

/// For the Firmware page and for the progress of an upgrade.
struct Firmware : public BaseTabbed {
    forms::Firmware form;
    std::string platform;  // empty on the progress page
    bool internal_server = false;
    std::string base_version;
    std::string versions;
    std::string tool_status;
};

}  // namespace webconfig::data
