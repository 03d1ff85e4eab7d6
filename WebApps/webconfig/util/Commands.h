#pragma once

#include <string>

namespace webconfig::util {

/// Runs \a command through the shell and returns its standard output. Output of more than \a maximum
/// characters is cut there, and its last three characters are replaced with "..." where it has more than
/// three. The exit status is not reported.
std::string ShellCommand(std::string const &command, unsigned maximum);

/// Runs \a command through the shell, replaces \a output with its standard output and returns the status
/// of the device library (0 on success).
int ShellCommand(std::string const &command, std::string &output);

/// Runs \a command through the shell and returns its wait status as system() does: 0 on success, -1 where
/// it could not be started. Unlike system() it gives the command a clean signal state, and the right
/// status also after this process has begun to ignore SIGCHLD.
int RunCommand(std::string const &command);

}  // namespace webconfig::util
