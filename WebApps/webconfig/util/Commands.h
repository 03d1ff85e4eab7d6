#pragma once

#include <chrono>
#include <string>

#include "WebApps/webconfig/util/Command.h"

/// Commands of the shell. They read nothing from this process but the input that a caller gives them, as
/// secrets are, which are not to stand in command lines; and none can hold it: one that is not done within
/// its limit is ended with all that it has started in its process group, and counts as failed. That is logged
/// as an error, with the program, which is the command's first word, and the time; the rest of a command may
/// hold a password, so only its length is told.
namespace webconfig::util {

/// Runs \a command through the shell and returns its standard output. Output of more than \a maximum
/// characters is cut there, and its last three characters are replaced with "..." where it has more than
/// three. The exit status is not reported. For what only tells or shows something: the limit is ten seconds.
std::string ShellCommand(std::string const &command, unsigned maximum, std::string const &input = {});

/// Runs \a command through the shell, replaces \a output with its standard output and returns the status
/// of the device library (0 on success). The limit is a minute; but the maker's library, which starts the
/// command itself, may give it none, and the process' standard input.
int ShellCommand(std::string const &command, std::string &output);

/// How long what a page starts may take where the page does not say.
inline constexpr std::chrono::seconds actionLimit{60};

/// Runs \a command through the shell and returns its wait status as system() does: 0 on success, -1 where
/// it could not be started or was ended. Unlike system() it gives the command a clean signal state, and the
/// right status also when this process begins to ignore SIGCHLD.
int RunCommand(Command const &command, std::chrono::seconds limit = actionLimit,
               std::string const &input = {});
int RunCommand(ConstantText command, std::chrono::seconds limit = actionLimit);

/// From now on all commands, running and new ones, have to be done within \a time from now, whatever their
/// limits. Another call never gives more time.
void EndCommandsWithin(std::chrono::seconds time);

/// Whether it is so far. What waits for something else, a server for example, is to give up then as well.
bool AreCommandsEnding();

/// Takes EndCommandsWithin() back.
void AllowCommands();

}  // namespace webconfig::util
