#include "WebApps/webconfig/util/Flags.h"

#include <fstream>
#include <string>

#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/Files.h"

namespace webconfig::util {

namespace {

std::string const rebootFlag = "/tmp/webconfig_reboot_flag";
std::string const reloadFlag = "/tmp/webconfig_freload_flag";
std::string const upgradeFlag = "/tmp/webconfig_fwsugd_flag";

std::string const upgradeStatusFile = "/tmp/fwtool_status.txt";
constexpr char upgradeDone[] = "'done'";

}  // namespace

void MarkRebootRequired() {
    RunCommand("touch " + rebootFlag);
}

bool IsRebootRequired() {
    if (FileExists(rebootFlag))
        return true;
    std::ifstream status(upgradeStatusFile);
    std::string line;
    return std::getline(status, line) && line.find(upgradeDone) != std::string::npos;
}

void MarkForceReload(bool on) {
    // Without -f on purpose: clearing a flag that is not set shows on standard error.
    RunCommand((on ? "touch " : "rm ") + reloadFlag);
}

bool IsForceReloadFlagged() {
    return FileExists(reloadFlag);
}

void MarkFirmwareUpgrade(bool on) {
    RunCommand((on ? "touch " : "rm -f ") + upgradeFlag);
}

bool IsFirmwareUpgradeFlagged() {
    return FileExists(upgradeFlag);
}

}  // namespace webconfig::util
