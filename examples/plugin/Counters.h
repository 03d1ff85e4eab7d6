#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace traffic_plugin {

/// What an interface has carried since it exists. Errors include packets that were dropped.
struct Counters {
    struct Direction {
        std::uint64_t bytes = 0;
        std::uint64_t packets = 0;
        std::uint64_t errors = 0;
    };

    std::string name;
    Direction received;
    Direction sent;
};

/// The counters of all network interfaces, sorted by name; those that cannot be read are 0.
std::vector<Counters> ReadCounters();

}  // namespace traffic_plugin
