#pragma once

#include <sys/types.h>

#include <string>

namespace webconfig::util {

/// Starts a detached child that stops the applications below \a mountDirectory and becomes the firmware
/// tool with the image at \a imagePath. Returns at once with the id of the child, negative where the fork
/// failed; later failures are only logged. From then on the process ignores SIGCHLD. To be called while
/// no service runs.
pid_t ForkFirmwareUpgrade(std::string const &imagePath, std::string const &mountDirectory);

/// Whether the firmware tool holds its lock. True also where that cannot be told, but not for ever; a lock
/// that a user other than root or our own holds, or whose file is not theirs, is none.
bool IsFirmareUpgradeInProgress();

/// Whether an upgrade keeps the pages from anything else: the tool holds its lock, or what
/// ForkFirmwareUpgrade() started last has not ended, be it that it still stops the applications.
bool IsFirmwareUpgradeRunning();

/// The image of the requested upgrade: set by the page, read between two runs of the service.
std::string &FirmwareUpgradeFile();

/// What ForkFirmwareUpgrade() returned last; 0 at first.
int &FirmwareUpgradePid();

}  // namespace webconfig::util
