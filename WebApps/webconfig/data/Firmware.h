#pragma once

#include <string>
#include <vector>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Firmware.h"

namespace webconfig::data {

/// For the Firmware page and for the progress of an upgrade.
struct Firmware : public BaseTabbed {
    /// A line of what was found out about an uploaded image.
    struct Finding {
        char const *name;
        std::string text;
        bool caution = false;
    };

    forms::Firmware form;
    std::string platform;  // empty on the progress page
    bool internal_server = false;
    std::string base_version;
    std::string versions;
    std::string tool_status;
    std::vector<Finding> verdict;  // empty where nobody looked
};

}  // namespace webconfig::data
