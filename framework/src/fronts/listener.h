#pragma once

#include <cppcms/json.h>

#include <memory>
#include <vector>

#include "descriptor.h"
#include "http_front.h"

namespace cppcms::impl {

/// A listening socket and the front that speaks on it.
struct listener {
    int socket = -1;
    /// The same, except where the process inherited the socket: that one is never closed here.
    descriptor owned;
    /// Set for HTTP; the other front is FastCGI.
    std::shared_ptr<http_front const> http;
};

/// Opens the sockets that `service.api` or `service.list` name; none where neither is there. \a threads sets
/// the length of the queue of waiting clients. Throws cppcms_error for contradictory settings and
/// booster::system::system_error where a socket cannot be had.
std::vector<listener> open_listeners(json::value const &settings, int threads);

}  // namespace cppcms::impl
