#pragma once

#include <string>

namespace webconfig::util {

/// Who asks for what happens, and where.
struct Requester {
    std::string user;     ///< the name of the log-in, or of the program
    std::string address;  ///< empty where it is this device
    std::string page;     ///< the path below the site's root; empty where it is none
};

}  // namespace webconfig::util
