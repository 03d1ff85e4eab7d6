#include "seriald_client/PortStatistics.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "seriald_client/SerialdClient.h"

namespace SerialdMsg {

PortRecord const *Statistics::FindPort(std::uint32_t functionId) const {
    auto const end = std::begin(ports) + std::min(count, maxPorts);
    auto const found = std::find_if(std::begin(ports), end,
                                    [&](PortRecord const &port) { return port.functionId == functionId; });
    return found == end ? nullptr : found;
}

std::optional<Statistics> UnpackStatistics(char const *data, std::size_t size) {
    if (size != sizeof(Statistics))
        return std::nullopt;
    Statistics statistics;
    std::memcpy(&statistics, data, size);
    statistics.count = std::min(statistics.count, Statistics::maxPorts);
    for (PortRecord &port : statistics.ports)
        port.message[sizeof port.message - 1] = '\0';
    return statistics;
}

std::optional<Statistics> QueryStatistics() {
    cSerialdClient client(SerialdStatusClientID);
    if (!client.RequestStats())
        return std::nullopt;
    char reply[sizeof(Statistics) + 1];  // a byte that tells a longer reply
    int const size = client.WaitRead(reply, sizeof reply);
    return size > 0 ? UnpackStatistics(reply, size) : std::nullopt;
}

}  // namespace SerialdMsg
