#pragma once

#include <string>

namespace ctl {

/// Where the service of this device takes status calls.
struct LocalService {
    std::string socket = "/run/webconfig/webconfig.sock";
    std::string path = "/status/rpc";  ///< of the status calls: webconfig.root in the service's configuration
    long seconds = 90;                 ///< limit of a call: a save may have to run commands for a minute
};

/// An answer over HTTP.
struct Answer {
    long status = 0;
    std::string body;
};

/// Posts \a call, the text of a status call, to \a service over the socket that the web server has for it, as
/// \a user. Who may open the socket, which is root only, is trusted as who has logged in. Throws Problem.
Answer PostLocally(LocalService const &service, std::string const &user, std::string const &call);

}  // namespace ctl
