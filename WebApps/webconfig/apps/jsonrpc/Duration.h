#pragma once

#include <cstdint>
#include <string>

namespace webconfig::apps {

/// A duration in the unit that fits it, rounded down. The unit is always in the plural.
inline std::string DurationText(std::uint32_t seconds) {
    if (seconds <= 300)
        return std::to_string(seconds) + " seconds";
    if (seconds <= 18000)
        return std::to_string(seconds / 60) + " minutes";
    return std::to_string(seconds / 3600) + " hours";
}

}  // namespace webconfig::apps
