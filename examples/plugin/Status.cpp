#include "Status.h"

#include <chrono>

#include "Counters.h"

namespace traffic_plugin {

namespace {

cppcms::json::value Json(Counters::Direction const &direction) {
    cppcms::json::value value;
    value["bytes"] = static_cast<double>(direction.bytes);
    value["packets"] = static_cast<double>(direction.packets);
    value["errors"] = static_cast<double>(direction.errors);
    return value;
}

}  // namespace

Status::Status(cppcms::service &service) : cppcms::rpc::json_rpc_server(service) {
    bind("traffic_counters", cppcms::rpc::json_method(&Status::TrafficCounters, this), method_role);
}

void Status::TrafficCounters() {
    using namespace std::chrono;
    cppcms::json::array interfaces;
    for (auto const &counters : ReadCounters()) {
        cppcms::json::value entry;
        entry["name"] = counters.name;
        entry["received"] = Json(counters.received);
        entry["sent"] = Json(counters.sent);
        interfaces.push_back(entry);
    }
    auto const now = duration_cast<milliseconds>(steady_clock::now().time_since_epoch());
    cppcms::json::value result;
    result["time"] = static_cast<double>(now.count());
    result["interfaces"] = interfaces;
    return_result(result);
}

}  // namespace traffic_plugin
