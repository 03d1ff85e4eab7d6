// What a device says of itself to a fleet's console: taken, or refused. Whatever was taken can be found,
// told, and forgotten again.
#include <cassert>
#include <string>
#include <string_view>

#include "fleet/Messages.h"
#include "fleet/console/Registry.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    using namespace fleet;
    constexpr char const *names[] = {topics::online, topics::reported, topics::health};
    constexpr std::int64_t now = 1795322738;
    if (size == 0)
        return 0;
    console::Registry registry(2);
    std::string_view const message(reinterpret_cast<char const *>(data) + 1, size - 1);
    for (int time = 0; time < 2; ++time) {
        try {
            registry.Take("d", names[data[0] % std::size(names)], message, data[0] > 127, now + time);
        } catch (Malformed const &) {
        }
    }
    if (registry.Knows("d")) {
        auto const device = registry.Device("d");
        assert(!device.save().empty() && !registry.Health("d").save().empty());
        assert(registry.Before("d", device["settings"].object()) == device["settings"].object());
        console::Filter filter;
        filter.search = device["name"].str();
        assert(registry.Select(filter).size() == 1);
        assert(registry.Devices(filter, {.limit = 1})["devices"].array().size() == 1);
    }
    registry.Forget("d");
    assert(registry.Count()[0] == 0);
    return 0;
}
