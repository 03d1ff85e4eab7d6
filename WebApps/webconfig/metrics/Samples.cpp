#include "WebApps/webconfig/metrics/Samples.h"

#include <algorithm>
#include <cmath>

namespace webconfig::metrics {

namespace {

/// Bytes a second, where the counter has not begun anew meanwhile.
std::optional<double> Rate(std::uint64_t before, std::uint64_t now, double seconds) {
    if (now < before || seconds <= 0)
        return {};
    return static_cast<double>(now - before) / seconds;
}

std::optional<double> Times(std::optional<double> value, double factor) {
    return value ? std::optional(*value * factor) : value;
}

}  // namespace

template <typename Number>
void Samples::_Put(Ring<Number> &ring, std::optional<double> value) {
    using Limits = std::numeric_limits<Number>;
    Number &place = ring.numbers[_count % length];
    if (value)
        place = static_cast<Number>(std::clamp<double>(std::round(*value), Limits::min(), ring.unknown - 1));
    else
        place = ring.unknown;
}

/// The \a newest last numbers of a ring.
template <typename Number>
std::string Samples::_Text(Ring<Number> const &ring, std::size_t newest) const {
    std::string text;
    for (std::size_t i = _count - newest; i < _count; ++i) {
        if (i > _count - newest)
            text += ',';
        if (Number const number = ring.numbers[i % length]; number != ring.unknown)
            text += std::to_string(number);
    }
    return text;
}

/// The place of an interface: its own, or one that nobody has, or that of the interface which is away for
/// longest. Null where all are there.
Samples::Interface *Samples::_Find(Traffic const &traffic) {
    auto const &name = traffic.interface;
    if (name.empty() || name.size() >= IFNAMSIZ)
        return nullptr;
    auto place = std::find_if(_interfaces.begin(), _interfaces.end(),
                              [&name](Interface const &one) { return name == one.name.data(); });
    if (place != _interfaces.end())
        return &*place;
    place = std::min_element(_interfaces.begin(), _interfaces.end(),
                             [](Interface const &a, Interface const &b) { return a.seen < b.seen; });
    double const before = _count > 0 ? _uptime.numbers[(_count - 1) % length] : 0;
    if (place->name[0] != '\0' && place->seen >= before)
        return nullptr;
    place->name = {};
    name.copy(place->name.data(), name.size());
    place->received = place->sent = std::numeric_limits<std::uint64_t>::max();  // no rate yet
    place->receivedRate.numbers.fill(place->receivedRate.unknown);
    place->sentRate.numbers.fill(place->sentRate.unknown);
    return &*place;
}

void Samples::_AddTraffic(Readings const &readings) {
    for (auto &one : _interfaces) {
        if (one.name[0] == '\0')
            continue;
        _Put(one.receivedRate, {});
        _Put(one.sentRate, {});
    }
    for (auto const &traffic : readings.traffic) {
        auto *const place = _Find(traffic);
        if (!place)
            continue;
        double const seconds = readings.uptime - place->seen;
        _Put(place->receivedRate, Rate(place->received, traffic.received, seconds));
        _Put(place->sentRate, Rate(place->sent, traffic.sent, seconds));
        place->received = traffic.received;
        place->sent = traffic.sent;
        place->seen = readings.uptime;
    }
}

void Samples::Add(Readings const &readings) {
    auto const &memory = readings.memory;
    _AddTraffic(readings);
    _Put(_uptime, std::floor(readings.uptime));
    _Put(_load, Times(readings.load, 100));
    _Put(_memory,
         memory ? std::optional(1e4 * static_cast<double>(memory->used) / static_cast<double>(memory->total))
                : std::nullopt);
    _Put(_temperature, Times(readings.temperature, 10));
    _Put(_signal, readings.signal);
    ++_count;
}

Series Samples::After(std::int64_t uptime) const {
    std::size_t const kept = std::min(_count, length);
    std::size_t newest = 0;
    auto const at = [this](std::size_t back) { return _uptime.numbers[(_count - 1 - back) % length]; };
    if (kept > 0 && uptime > at(0))
        uptime = -1;
    while (newest < kept && at(newest) > uptime)
        ++newest;
    Series series{_Text(_uptime, newest),      _Text(_load, newest),   _Text(_memory, newest),
                  _Text(_temperature, newest), _Text(_signal, newest), {}};
    for (auto const &one : _interfaces) {
        if (one.name[0] != '\0')
            series.traffic[one.name.data()] = {_Text(one.receivedRate, newest), _Text(one.sentRate, newest)};
    }
    return series;
}

}  // namespace webconfig::metrics
