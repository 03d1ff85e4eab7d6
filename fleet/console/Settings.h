#pragma once

#include <cppcms/json.h>

#include <string>

#include "fleet/BrokerSettings.h"

namespace fleet::console {

/// "fleet" of the console's configuration: docs/fleet.md.
struct Settings {
    BrokerSettings broker;
    std::string file = "/var/lib/webconfig-fleet/fleet.db";
    std::string group;           ///< of consoles that share results; empty: there is one
    std::string root = "fleet";  ///< of the pages' paths
    int most = 100000;           ///< devices
    int keep = 365;              ///< days that changes and rollouts stay when they have ended
};

/// Throws std::runtime_error with what is wrong: with a member, or with a file that one names.
Settings ReadSettings(cppcms::json::value const &configuration);

}  // namespace fleet::console
