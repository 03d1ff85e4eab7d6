#pragma once

#include <string>

#include "ctl/LocalSocket.h"
#include "ctl/Options.h"

namespace ctl {

/// Posts \a call, the text of a status call, to another device over HTTPS, with the log-in. Throws Problem.
Answer PostRemotely(Options const &options, std::string const &call);

}  // namespace ctl
