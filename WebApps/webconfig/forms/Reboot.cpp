#include "WebApps/webconfig/forms/Reboot.h"

namespace webconfig::forms {

Reboot::Reboot() {
    reboot.id("cfg_rbt_reboot");
    reboot.message("Reboot");
    reboot.value("Reboot");
    add(reboot);
}

}  // namespace webconfig::forms
