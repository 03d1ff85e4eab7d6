#pragma once

#include <string>

/// Switches in the parameter store are the texts "yes" and "no".
namespace webconfig::util {

/// Whether the switch at \a key is on: it says "yes", and nothing else.
bool IsOn(std::string const &key);

/// The text of a switch.
std::string SwitchText(bool on);

}  // namespace webconfig::util
