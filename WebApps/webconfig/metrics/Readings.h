#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace webconfig::metrics {

/// Seconds since the device was started. Whoever sets its clock does not change them.
double Uptime();

/// What an interface has carried, in bytes.
struct Traffic {
    std::string interface;
    std::uint64_t received = 0;
    std::uint64_t sent = 0;
};

/// In KiB.
struct Memory {
    std::uint64_t total = 0;
    std::uint64_t used = 0;
};

struct Tunnel {
    bool connected = false;
    std::uint32_t seconds = 0;  ///< in this state
    std::string status;
};

/// What the device does at one moment. What nobody tells is not there.
struct Readings {
    double uptime = 0;           ///< the moment: Uptime()
    std::optional<double> load;  ///< of the last minute
    std::optional<Memory> memory;
    std::optional<double> temperature;  ///< degrees Celsius: of the hottest sensor, or else of the modem
    std::optional<int> signal;          ///< dBm
    std::vector<Traffic> traffic;       ///< of all interfaces that have carried any, but the loopback
    std::string uplink;                 ///< interface of the default route; empty: there is none
    bool modem = false;                 ///< the device is to dial up
    bool vpn = false;                   ///< the tunnel is to be there
    std::optional<Tunnel> tunnel;
};

/// What /proc and /sys below \a root tell.
Readings ReadSystem(std::string const &root = "");

/// Asks the daemons of what is switched on, and the store for that. A silent one costs a second.
void AddDaemons(Readings &readings);

}  // namespace webconfig::metrics
