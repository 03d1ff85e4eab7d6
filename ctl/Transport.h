#pragma once

#include <string>

#include "ctl/Options.h"

namespace ctl {

/// An answer over HTTP.
struct Answer {
    long status = 0;
    std::string body;
};

/// Posts \a call, the text of a status call, to the service of this device over the socket that the web
/// server has for it, as the user of this process. Who may open the socket, which is root only, is trusted as
/// who has logged in. Throws Problem.
Answer PostLocally(Options const &options, std::string const &call);

/// The same to another device over HTTPS, with the log-in.
Answer PostRemotely(Options const &options, std::string const &call);

}  // namespace ctl
