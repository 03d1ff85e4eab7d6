#pragma once

#include <functional>

/// The steps, common to the detached children of this process, from fork() to exec().
namespace webconfig::util {

/// Ignores SIGCHLD in this process from now on, so that children end without being waited for, and forks.
/// The child runs \a child, with the default dispositions and no blocked signal, and exits with what that
/// returns. Returns what fork() did in the parent.
int ForkDetached(std::function<int()> const &child);

/// Closes every descriptor but standard input, output and error, and reopens these on /dev/null.
void DetachDescriptors();

}  // namespace webconfig::util
