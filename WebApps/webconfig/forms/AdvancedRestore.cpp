#include "WebApps/webconfig/forms/AdvancedRestore.h"

#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

AdvancedRestore::AdvancedRestore() {
    SetUp(token, "backup", noId);
    add(token);
    SetUp(name, "backupName", noId);
    add(name);
    SetUp(format, "backupFormat", noId);
    add(format);

    SetUp(reboot, "rebootAfterRestore", noId, "Reboot afterwards");
    add(reboot);
    SetUpSubmit(apply, "submit", noId, "Apply Backup");
    add(apply);
    SetUpSubmit(discard, "submit", noId, "Discard Backup");
    add(discard);
}

}  // namespace webconfig::forms
