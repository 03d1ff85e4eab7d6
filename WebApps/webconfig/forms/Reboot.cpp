#include "WebApps/webconfig/forms/Reboot.h"

#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

Reboot::Reboot() {
    SetUpSubmit(reboot, noName, "cfg_rbt_reboot", "Reboot", "Reboot");
    add(reboot);
}

}  // namespace webconfig::forms
