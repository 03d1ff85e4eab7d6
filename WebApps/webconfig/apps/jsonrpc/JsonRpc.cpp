#include "WebApps/webconfig/apps/JsonRpc.h"

#include <cppcms/service.h>

#include "WebApps/webconfig/apps/Shutdown.h"
#include "WebApps/webconfig/history/Trial.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

JsonRpc::JsonRpc(cppcms::service &service) : cppcms::rpc::json_rpc_server(service) {
    auto const action = [this](auto handler) { return cppcms::rpc::json_method(handler, this); };
    _BindStatus("fw_upgrade_status", &JsonRpc::FirmwareUpgradeStatus);
    _BindStatus("general_dynamic_status", &JsonRpc::GeneralStatus);
    _BindStatus("ethernet1_status", &JsonRpc::Ethernet1Status);
    _BindStatus("cellular_status", &JsonRpc::CellularStatus);
    _BindStatus("openvpn_status", &JsonRpc::OpenvpnStatus);
    _BindStatus("port_forwarding_status", &JsonRpc::PortForwardingStatus);
    _BindStatus("orvane_status", &JsonRpc::OrvaneStatus);
    _BindStatus("tail_syslog", &JsonRpc::TailSyslog);
    _BindStatus("ntpd_status", &JsonRpc::NtpServerStatus);
    _BindStatus("dns_server_status", &JsonRpc::DnsServerStatus);
    bind("reload", action(&JsonRpc::Reload), method_role);
    _BindStatus("wifi_ap_status", &JsonRpc::wifiApStatus);
    _BindStatus("wifi_client_status", &JsonRpc::wifiClientStatus);
    bind("wifi_get_channels", action(&JsonRpc::wifiGetChannels), method_role);
    _BindStatus("prepare_fw_upgrade", &JsonRpc::PrepareFWUpgrade);
    if (history::TheTrialFile()) {
        _BindStatus("trial_status", &JsonRpc::TrialStatus);
        _BindStatus("trial_keep", &JsonRpc::TrialKeep);
        _BindStatus("trial_take_back", &JsonRpc::TrialTakeBack);
    }
}

void JsonRpc::_BindStatus(char const *method, SharedPoll::Gather gather) {
    SharedPoll &poll = *_polls.emplace_back(std::make_unique<SharedPoll>(service(), gather));
    auto const join = [this, &poll](cppcms::json::array const &parameters) {
        if (!parameters.empty())
            throw cppcms::rpc::call_error("Invalid parametres number");  // as the framework says it
        if (poll.IsFull())
            throw cppcms::rpc::call_error("Too many calls wait for this answer");
        poll.Join(release_call());
    };
    bind(method, join, method_role);
}

void JsonRpc::Reload() {
    util::MarkForceReload(true);
    Shutdown(service());
}

}  // namespace webconfig::apps
