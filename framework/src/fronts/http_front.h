#pragma once

#include <string>
#include <vector>

namespace cppcms::impl {

/// How the built-in HTTP front sees itself.
struct http_front {
    std::string server_name;  ///< the configured address
    int port = 0;
    int timeout = 30;                       ///< seconds of silence after which a client is dropped
    std::vector<std::string> script_names;  ///< prefixes of the path that become SCRIPT_NAME
    std::string headers;                    ///< lines of the answers that no application makes
    bool names_itself = true;               ///< in the header Server of the others
};

}  // namespace cppcms::impl
