#pragma once

#include <cppcms/rpc_json.h>

namespace webconfig::apps {

/// The status calls that the pages poll. Each handler gathers its data afresh; missing data gives a text
/// such as "Unknown", never an error.
class JsonRpc : public cppcms::rpc::json_rpc_server {
  public:
    explicit JsonRpc(cppcms::service &service);

    void FirmwareUpgradeStatus();
    void GeneralStatus();
    /// Rebuilds the whole service in this process. There is no result: the service stops.
    void Reload();
    void PrepareFWUpgrade();

  private:
    void _Bind(char const *method, void (JsonRpc::*handler)());
};

}  // namespace webconfig::apps
