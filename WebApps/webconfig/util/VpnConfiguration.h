#pragma once

#include <string>

#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::util {

/// Why the text of an OpenVPN client configuration is not to be trusted with the device: the first line by
/// which OpenVPN would run a program, load a library, let itself be controlled, write to or send a file, or
/// read further directives, as a text for the operator. Empty where there is none.
Bilingual HarmInVpnConfiguration(std::string const &configuration);

}  // namespace webconfig::util
