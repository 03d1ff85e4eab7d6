#include "WebApps/webconfig/apps/JsonRpc.h"

#include <cppcms/http_context.h>
#include <cppcms/http_response.h>
#include <cppcms/service.h>

#include <exception>
#include <memory>

#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/JsonRpc";

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
    _BindShared("cellular_status", &JsonRpc::CellularStatus);
    _BindShared("openvpn_status", &JsonRpc::OpenvpnStatus);
    _Bind("port_forwarding_status", &JsonRpc::PortForwardingStatus);
    _BindShared("orvane_status", &JsonRpc::OrvaneStatus);
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
void JsonRpc::_Bind(char const *method, Handler handler) {
    bind(method, cppcms::rpc::json_method(handler, this), method_role);
}

/// The same for a method that waits for a daemon. Calls are served one after the other, and each would wait
/// its second where the daemon is silent: so those that have come until one is served get one answer.
void JsonRpc::_BindShared(char const *method, Handler handler) {
    auto const waiting = std::make_shared<Calls>();
    auto const join = [this, handler, waiting](cppcms::json::array const &parameters) {
        if (!parameters.empty())
            throw cppcms::rpc::call_error("Invalid parametres number");  // as the framework says it
        waiting->push_back(release_call());
        if (waiting->size() == 1)
            service().post([this, handler, waiting] { _AnswerTogether(handler, *waiting); });
    };
    bind(method, join, method_role);
}

/// Runs outside any call, where an exception would end the service.
void JsonRpc::_AnswerTogether(Handler handler, Calls &waiting) {
    _together.swap(waiting);
    try {
        (this->*handler)();
    } catch (std::exception const &error) {
        WEBCONFIG_LOG(error, logTag) << "A status call failed: " << error.what();
    }
    _together.clear();
}

void JsonRpc::_Return(cppcms::json::value result) {
    CleanTexts(result);
    if (_together.empty())
        return_result(result);
    for (auto const &call : _together)
        call->return_result(result);
}

void JsonRpc::_Refuse() {
    for (auto const &call : _together) {
        call->context().response().status(cppcms::http::response::not_found);
        call->context().async_complete_response();
    }
}

void JsonRpc::Reload() {
    util::MarkForceReload(true);
    service().shutdown();
}

}  // namespace webconfig::apps
