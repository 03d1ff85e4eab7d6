#include "WebApps/webconfig/forms/AdvancedDownloads.h"

namespace webconfig::forms {

AdvancedConfiguration::AdvancedConfiguration() {
    backup.name("submit");
    backup.value("Backup Configuration");
    backup.message("Backup Configuration");
    add(backup);

    file.name("configurationFile");
    file.message("Configuration file");
    file.disabled(true);
    add(file);

    reboot.name("rebootAfterRestore");
    reboot.message("Reboot afterwards");
    reboot.disabled(true);
    add(reboot);

    restore.name("submit");
    restore.value("Restore Configuration");
    restore.message("Restore Configuration (not available)");
    restore.disabled(true);
    add(restore);
}

AdvancedSyslog::AdvancedSyslog() {
    download.name("submit");
    download.value("Download");
    download.message("Download the system log");
    add(download);
}

AdvancedDeployerLog::AdvancedDeployerLog() {
    download.name("submit");
    download.value("Download log");
    download.message("Download the deployer log");
    add(download);
}

}  // namespace webconfig::forms
