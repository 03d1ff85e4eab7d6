#include "WebApps/webconfig/util/Flags.h"

#include <atomic>
#include <fstream>
#include <string>

#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Flags";

constexpr ConstantText touch("touch");

std::string const rebootFlag = "/tmp/webconfig_reboot_flag";
std::string const reloadFlag = "/tmp/webconfig_freload_flag";
std::string const upgradeFlag = "/tmp/webconfig_fwsugd_flag";

std::string const upgradeStatusFile = "/tmp/fwtool_status.txt";
constexpr char upgradeDone[] = "'done'";

/// Stands for the reload's flag where that cannot be written: to end the process instead would cost more.
std::atomic<bool> unwrittenReload = false;

}  // namespace

void MarkRebootRequired() {
    RunCommand(Command(touch).Arg(rebootFlag));
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
    RunCommand(Command(on ? touch : ConstantText("rm")).Arg(reloadFlag));
    unwrittenReload = on && !FileExists(reloadFlag);
    if (unwrittenReload)
        WEBCONFIG_LOG(error, logTag) << "Cannot write " << reloadFlag;
}

bool IsForceReloadFlagged() {
    return FileExists(reloadFlag) || unwrittenReload;
}

void MarkFirmwareUpgrade(bool on) {
    RunCommand(Command(on ? touch : ConstantText("rm -f")).Arg(upgradeFlag));
}

bool IsFirmwareUpgradeFlagged() {
    return FileExists(upgradeFlag);
}

}  // namespace webconfig::util
