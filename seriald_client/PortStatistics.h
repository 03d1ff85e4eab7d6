#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace SerialdMsg {

/// One serial port in the statistics of the daemon.
struct PortRecord {
    std::uint32_t functionId = 0;  ///< see cSerialPRM
    std::uint32_t receivedPackets = 0;
    std::uint32_t transmittedPackets = 0;
    std::uint32_t reserved[2]{};
    char portData[100]{};
    char message[128]{};
};
static_assert(sizeof(PortRecord) == 248);

/// The daemon's reply to Command::RequestStats, as it is on the wire.
struct Statistics {
    static constexpr unsigned maxPorts = 10;

    std::uint32_t type = 0;
    std::uint32_t clientId = 0;
    PortRecord ports[maxPorts];
    std::uint32_t count = 0;  ///< of the ports that are valid

    /// The first valid port with this function, or null.
    PortRecord const *FindPort(std::uint32_t functionId) const;
};
static_assert(sizeof(Statistics) == 2492);

/// The reply in the \a size bytes at \a data; nothing where it has another length. Whatever arrived, the
/// count is at most that of the records, and the messages are terminated.
std::optional<Statistics> UnpackStatistics(char const *data, std::size_t size);

/// Asks the serial daemon and waits at most half a second. Nothing where no reply of the right length came.
std::optional<Statistics> QueryStatistics();

}  // namespace SerialdMsg
