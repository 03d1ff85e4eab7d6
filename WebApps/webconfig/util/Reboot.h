#pragma once

namespace webconfig::util {

/// Starts a detached child that runs "/sbin/reboot -d 5"; returns at once and only logs a failure.
/// From then on the process ignores SIGCHLD.
void ForkReboot();

}  // namespace webconfig::util
