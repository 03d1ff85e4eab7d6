#pragma once

#include <net/if.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>

#include "WebApps/webconfig/metrics/Readings.h"

namespace webconfig::metrics {

/// Samples, oldest first. Each series is a text of whole numbers with commas between them, one a sample, and
/// nothing where it is not known: as values of JSON a day of them would take megabytes.
struct Series {
    struct Rates {
        std::string received, sent;  ///< bytes a second since the sample before
    };

    std::string uptime;       ///< seconds
    std::string load;         ///< hundredths
    std::string memory;       ///< in use, hundredths of a percent
    std::string temperature;  ///< tenths of a degree
    std::string signal;       ///< dBm
    std::map<std::string, Rates> traffic;
};

/// The readings of a day, in rings: the newest sample takes the place of the oldest. An object that is only
/// zeroes is an empty one, and an interface that is not there touches no memory.
class Samples {
  public:
    static constexpr int interval = 30;  ///< seconds
    static constexpr std::size_t length = std::size_t{24} * 60 * 60 / interval;
    static constexpr std::size_t maxInterfaces = 8;

    void Add(Readings const &readings);

    /// Those of after \a uptime. Where that has yet to come, it is of before a restart: all.
    Series After(std::int64_t uptime) const;

  private:
    template <typename Number>
    struct Ring {
        static constexpr Number unknown = std::numeric_limits<Number>::max();

        std::array<Number, length> numbers;
    };

    struct Interface {
        std::array<char, IFNAMSIZ> name;  // empty: nobody's
        double seen;                      // uptime of the counters
        std::uint64_t received, sent;     // the counters then
        Ring<std::uint32_t> receivedRate, sentRate;
    };

    template <typename Number>
    void _Put(Ring<Number> &ring, std::optional<double> value);
    template <typename Number>
    std::string _Text(Ring<Number> const &ring, std::size_t newest) const;
    Interface *_Find(Traffic const &traffic);
    void _AddTraffic(Readings const &readings);

    std::size_t _count;  // of all samples that have come; the next one has its place at this, modulo length
    Ring<std::uint32_t> _uptime;
    Ring<std::uint16_t> _load, _memory;
    Ring<std::int16_t> _temperature, _signal;
    std::array<Interface, maxInterfaces> _interfaces;
};

static_assert(sizeof(Samples) < std::size_t{300} * 1024);

}  // namespace webconfig::metrics
