#pragma once

#include <cppcms/rpc_json.h>

namespace traffic_plugin {

/// The status application: /traffic in the status space.
class Status : public cppcms::rpc::json_rpc_server {
  public:
    explicit Status(cppcms::service &service);

    /// Answers the method "traffic_counters", without parameters: {"time": milliseconds of a clock that only
    /// runs forward, "interfaces": [{"name", "received": {"bytes", "packets", "errors"}, "sent": the same}]}.
    void TrafficCounters();
};

}  // namespace traffic_plugin
