#include "WebApps/webconfig/util/Flags.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <string>

#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/FolderStates.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Flags";

std::string const rebootFlag = "/tmp/webconfig_reboot_flag";
std::string const reloadFlag = "/tmp/webconfig_freload_flag";
std::string const upgradeFlag = "/tmp/webconfig_fwsugd_flag";

std::string const upgradeStatusFile = "/tmp/fwtool_status.txt";
constexpr char upgradeDone[] = "'done'";
constexpr std::size_t maxStatusLine = 4096;

/// Stands for the reload's flag where that cannot be written: to end the process instead would cost more.
std::atomic<bool> unwrittenReload = false;

/// The command alone would follow a link that somebody has left there.
void Raise(std::string const &flag) {
    if (!ClaimFile(flag))
        WEBCONFIG_LOG(error, logTag) << "Cannot write " << flag << ": " << std::strerror(errno);
    else
        RunCommand(Command("touch").Arg(flag));
}

}  // namespace

void MarkRebootRequired() {
    Raise(rebootFlag);
}

bool IsRebootRequired() {
    if (AreAbsent({rebootFlag.c_str(), upgradeStatusFile.c_str()}))
        return false;
    if (IsTrustedFile(rebootFlag))
        return true;
    std::string const status = ReadTrusted(upgradeStatusFile, maxStatusLine).value_or("");
    return status.substr(0, status.find('\n')).find(upgradeDone) != std::string::npos;
}

void MarkForceReload(bool on) {
    if (on)
        Raise(reloadFlag);
    else
        RunCommand(Command("rm").Arg(reloadFlag));  // without -f on purpose: what is not set shows
    unwrittenReload = on && !IsTrustedFile(reloadFlag);
}

bool IsForceReloadFlagged() {
    return IsTrustedFile(reloadFlag) || unwrittenReload;
}

void MarkFirmwareUpgrade(bool on) {
    if (on)
        Raise(upgradeFlag);
    else
        RunCommand(Command("rm -f").Arg(upgradeFlag));
}

bool IsFirmwareUpgradeFlagged() {
    return IsTrustedFile(upgradeFlag);
}

}  // namespace webconfig::util
