#pragma once

#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/OpenVPN.h"

namespace webconfig::data {

struct OpenVPN : public BaseTabbed {
    /// The arguments are what the remote form begins with.
    OpenVPN(std::string const &defaultServer, std::string const &deviceId)
        : remote(defaultServer, deviceId) {}

    forms::OpenVPN common;
    forms::OpenVPNFileConfiguration file;
    forms::OpenVPNRemoteConfiguration remote;
    std::string configuration_name = "None";  // of the installed file
};

}  // namespace webconfig::data
