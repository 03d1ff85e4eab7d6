#pragma once

#include <string>

namespace webconfig::util {

/// Where in a shell command a value stands.
enum class ShellPosition {
    DoubleQuoted,  ///< between double quotes that the command already has
    Bare,          ///< a word of its own, outside of quotes
};

/// Hardens the commands of the whole process, or not, from now on. The setting
/// "webconfig.hardening.shell" decides; off at first.
void HardenShell(bool on);

/// \a value as it goes into a shell command at \a position. Unhardened, that is the value itself. Hardened,
/// the shell reads it as the value's very characters: it cannot end its quotes, start an expansion or begin
/// another command, and one of letters, digits and "_-+=.,:/@%" stays what it is. NUL characters, which no
/// command can hold, are left out.
std::string ShellQuote(std::string const &value, ShellPosition position);

}  // namespace webconfig::util
