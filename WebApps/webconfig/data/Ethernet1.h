#pragma once

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/data/ShellOutput.h"
#include "WebApps/webconfig/forms/Ethernet1.h"

namespace webconfig::data {

struct Ethernet1 : public BaseTabbed {
    forms::Ethernet1 form;
    ShellOutput commands;
};

}  // namespace webconfig::data
