#pragma once

/// Files in /tmp by which the parts of the system tell one another what is pending. They vanish with a
/// reboot.
namespace webconfig::util {

/// A saved setting takes effect with the next reboot. Nothing but the reboot takes this back.
void MarkRebootRequired();
/// Whether a reboot is pending, be it for a setting or for a finished firmware upgrade.
bool IsRebootRequired();

/// The service is to be torn down and started again in this process, which remembers that itself where the
/// file cannot be written.
void MarkForceReload(bool on);
bool IsForceReloadFlagged();

/// A firmware upgrade is to be started between two runs of the service.
void MarkFirmwareUpgrade(bool on);
bool IsFirmwareUpgradeFlagged();

}  // namespace webconfig::util
