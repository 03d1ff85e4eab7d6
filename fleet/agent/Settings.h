#pragma once

#include <cppcms/json.h>

#include <chrono>
#include <string>

#include "ctl/LocalSocket.h"
#include "fleet/BrokerSettings.h"

namespace fleet::agent {

/// "webconfig.fleet" of the service's configuration: docs/fleet.md.
struct Settings {
    std::string id;  ///< empty: what the service says of the device
    BrokerSettings broker;
    std::chrono::seconds health{60};
    std::string file = "/var/lib/webconfig/fleet.db";
    ctl::LocalService service;
};

/// Whether the device belongs to a fleet at all.
bool IsAskedFor(cppcms::json::value const &configuration);

/// Throws std::runtime_error with what is wrong: with a member, or with a file that one names.
Settings ReadSettings(cppcms::json::value const &configuration);

/// What the device is called on the broker: the first of \a serial and \a host that can be. Throws
/// std::runtime_error where none can.
std::string IdOf(std::string const &serial, std::string const &host);

}  // namespace fleet::agent
