#pragma once

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/AssemblySerialN.h"

namespace webconfig::data {

struct AssemblySerialN : public BaseTabbed {
    forms::AssemblySerialN form;
    bool rebooting = false;  // the page waits for the device; its inputs are disabled meanwhile
};

}  // namespace webconfig::data
