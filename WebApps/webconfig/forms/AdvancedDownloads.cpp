#include "WebApps/webconfig/forms/AdvancedDownloads.h"

#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

namespace {

constexpr int maxBackupSize = 4 << 20;  // bytes: the largest value of the store

}  // namespace

AdvancedConfiguration::AdvancedConfiguration() {
    SetUpSubmit(backup, "submit", noId, "Backup Configuration", "Backup Configuration");
    add(backup);

    SetUp(file, "configurationFile", noId, "Configuration file");
    file.disabled(true);
    add(file);

    SetUp(reboot, "rebootAfterRestore", noId, "Reboot afterwards");
    reboot.disabled(true);
    add(reboot);

    SetUpSubmit(restore, "submit", noId, "Restore Configuration", "Restore Configuration (not available)");
    restore.disabled(true);
    add(restore);
}

void AdvancedConfiguration::EnableRestore() {
    file.disabled(false);
    file.non_empty();
    file.limits(1, maxBackupSize);
    file.error_message("A file of 4 MB at most is required");
    reboot.disabled(false);
    restore.disabled(false);
    restore.message("Restore Configuration (shows first what would change)");
}

AdvancedSyslog::AdvancedSyslog() {
    SetUpSubmit(download, "submit", noId, "Download", "Download the system log");
    add(download);
}

AdvancedDeployerLog::AdvancedDeployerLog() {
    SetUpSubmit(download, "submit", noId, "Download log", "Download the deployer log");
    add(download);
}

}  // namespace webconfig::forms
