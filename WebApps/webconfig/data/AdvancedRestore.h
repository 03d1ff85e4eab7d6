#pragma once

#include <string>
#include <vector>

#include "WebApps/webconfig/data/ChangedSetting.h"
#include "WebApps/webconfig/forms/AdvancedRestore.h"

namespace webconfig::data {

/// What a backup would change, before it does.
struct AdvancedRestore {
    struct Group {
        std::string title;
        std::vector<ChangedSetting> changes;
    };

    forms::AdvancedRestore form;
    std::string name;           ///< of the file
    std::string device;         ///< the serial number that the file's name tells; empty where it tells none
    std::string this_device;    ///< and that of this one
    bool is_ambiguous = false;  ///< it can be read in two ways, and somebody has to say which one is right
    std::vector<Group> known;
    std::vector<ChangedSetting> unknown;  ///< of parameters that the table does not know: taken where ticked

    bool IsOfOther() const { return !device.empty() && device != this_device; }
};

}  // namespace webconfig::data
