#include "WebApps/webconfig/apps/JsonRpc.h"

#include <cppcms/service.h>

#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

void CleanTexts(cppcms::json::value &value) {
    switch (value.type()) {
        case cppcms::json::is_string:
            value.str(util::CleanText(value.str()));
            break;
        case cppcms::json::is_array:
            for (auto &element : value.array())
                CleanTexts(element);
            break;
        case cppcms::json::is_object:
            for (auto &member : value.object())
                CleanTexts(member.second);
            break;
        default:
            break;
    }
}

}  // namespace

JsonRpc::JsonRpc(cppcms::service &service) : cppcms::rpc::json_rpc_server(service) {
    _Bind("fw_upgrade_status", &JsonRpc::FirmwareUpgradeStatus);
    _Bind("general_dynamic_status", &JsonRpc::GeneralStatus);
    _Bind("ethernet1_status", &JsonRpc::Ethernet1Status);
    _Bind("cellular_status", &JsonRpc::CellularStatus);
    _Bind("openvpn_status", &JsonRpc::OpenvpnStatus);
    _Bind("port_forwarding_status", &JsonRpc::PortForwardingStatus);
    _Bind("orvane_status", &JsonRpc::OrvaneStatus);
    _Bind("tail_syslog", &JsonRpc::TailSyslog);
    _Bind("ntpd_status", &JsonRpc::NtpServerStatus);
    _Bind("dns_server_status", &JsonRpc::DnsServerStatus);
    _Bind("reload", &JsonRpc::Reload);
    _Bind("wifi_ap_status", &JsonRpc::wifiApStatus);
    _Bind("wifi_client_status", &JsonRpc::wifiClientStatus);
    bind("wifi_get_channels", cppcms::rpc::json_method(&JsonRpc::wifiGetChannels, this), method_role);
    _Bind("prepare_fw_upgrade", &JsonRpc::PrepareFWUpgrade);
}

/// Binds a method without parameters, as a call: notifications are refused.
void JsonRpc::_Bind(char const *method, void (JsonRpc::*handler)()) {
    bind(method, cppcms::rpc::json_method(handler, this), method_role);
}

void JsonRpc::_Return(cppcms::json::value result) {
    CleanTexts(result);
    return_result(result);
}

void JsonRpc::Reload() {
    util::MarkForceReload(true);
    service().shutdown();
}

}  // namespace webconfig::apps
