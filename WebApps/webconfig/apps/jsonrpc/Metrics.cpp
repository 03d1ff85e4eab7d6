#include <unistd.h>

#include <chrono>
#include <cmath>

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/history/Trial.h"
#include "WebApps/webconfig/metrics/Sampler.h"
#include "WebApps/webconfig/util/Device.h"

namespace webconfig::apps {

namespace {

cppcms::json::value VpnOf(metrics::Readings const &readings) {
    cppcms::json::value vpn;
    vpn["enabled"] = readings.vpn;
    if (readings.tunnel) {
        vpn["connected"] = readings.tunnel->connected;
        vpn["status"] = readings.tunnel->status;
        vpn["seconds"] = readings.tunnel->seconds;
    }
    return vpn;
}

cppcms::json::value Described(metrics::Readings const &readings) {
    cppcms::json::value now;
    now["processors"] = static_cast<int>(::sysconf(_SC_NPROCESSORS_ONLN));
    now["modem"] = readings.modem;
    now["uplink"] = readings.uplink;
    now["address"] = readings.uplink.empty() ? "" : util::AddressOf(readings.uplink);
    now["vpn"] = VpnOf(readings);
    if (readings.load)
        now["load"] = *readings.load;
    if (readings.memory) {
        now["memory_total"] = readings.memory->total;
        now["memory_used"] = readings.memory->used;
    }
    if (readings.temperature)
        now["temperature"] = *readings.temperature;
    if (readings.signal)
        now["signal"] = *readings.signal;
    return now;
}

cppcms::json::value Described(metrics::Series const &series) {
    cppcms::json::value samples;
    samples["uptime"] = series.uptime;
    samples["load"] = series.load;
    samples["memory"] = series.memory;
    samples["temperature"] = series.temperature;
    samples["signal"] = series.signal;
    samples["traffic"] = cppcms::json::object();
    for (auto const &[interface, rates] : series.traffic) {
        cppcms::json::value &both = samples["traffic"].object()[interface];
        both["received"] = rates.received;
        both["sent"] = rates.sent;
    }
    return samples;
}

}  // namespace

cppcms::json::value JsonRpc::Metrics(CallQueue::Call const &call) {
    auto const [readings, series] = metrics::Ask(call.parameters[0].get_value<std::int64_t>());
    cppcms::json::value status;
    status["boot"] = history::CurrentBoot();
    status["time"] = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    status["uptime"] = std::floor(metrics::Uptime());
    status["interval"] = metrics::Samples::interval;
    status["now"] = Described(readings);
    status["samples"] = Described(series);
    return status;
}

}  // namespace webconfig::apps
