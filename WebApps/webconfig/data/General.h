#pragma once

#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/data/ShellOutput.h"
#include "WebApps/webconfig/forms/General.h"

namespace webconfig::data {

struct General : public BaseTabbed {
    std::string assembly_sn;
    std::string device_id;
    forms::General form;
    ShellOutput status;
    bool metrics = false;  // the overview is shown
};

}  // namespace webconfig::data
