#include "WebApps/webconfig/apps/JsonRpc.h"

#include <cppcms/service.h>

#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

JsonRpc::JsonRpc(cppcms::service &service) : cppcms::rpc::json_rpc_server(service) {
    _Bind("fw_upgrade_status", &JsonRpc::FirmwareUpgradeStatus);
    _Bind("general_dynamic_status", &JsonRpc::GeneralStatus);
    _Bind("reload", &JsonRpc::Reload);
    _Bind("prepare_fw_upgrade", &JsonRpc::PrepareFWUpgrade);
}

/// Binds a method without parameters, as a call: notifications are refused.
void JsonRpc::_Bind(char const *method, void (JsonRpc::*handler)()) {
    bind(method, cppcms::rpc::json_method(handler, this), method_role);
}

void JsonRpc::Reload() {
    util::MarkForceReload(true);
    service().shutdown();
}

}  // namespace webconfig::apps
