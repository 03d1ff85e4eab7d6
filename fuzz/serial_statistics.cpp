// The serial daemon's reply: a port that is found is one of the records, and its message ends.
#include <cassert>
#include <cstring>

#include "seriald_client/PortStatistics.h"
#include "seriald_client/SerialPRM.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    auto const statistics = SerialdMsg::UnpackStatistics(reinterpret_cast<char const *>(data), size);
    assert(statistics.has_value() == (size == 2492));
    if (!statistics)
        return 0;
    if (auto const *const port = statistics->FindPort(cSerialPRM::functionGprsDialup)) {
        auto const index = port - statistics->ports;
        assert(index >= 0 && index < 10 && index < static_cast<long>(statistics->count));
        assert(::strnlen(port->message, sizeof port->message) < sizeof port->message);
    }
    return 0;
}
