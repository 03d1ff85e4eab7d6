#pragma once

#include <cstdint>
#include <optional>

namespace webconfig::util {

/// The strength in dBm that a modem's signal quality stands for: 0 (that or less) to 31 (that or more), or,
/// negative, dBm itself. Nothing for other codes, such as 99: not known or not detectable.
inline std::optional<std::int32_t> SignalDbm(std::int32_t quality) {
    constexpr std::int32_t best = 31;
    if (quality > best)
        return {};
    return quality < 0 ? quality : 2 * quality - 113;
}

}  // namespace webconfig::util
