#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/jsonrpc/CleanTexts.h"
#include "WebApps/webconfig/apps/jsonrpc/CommandOutputs.h"
#include "WebApps/webconfig/util/CountryChannels.h"
#include "WebApps/webconfig/util/Switch.h"

namespace webconfig::apps {

namespace {

constexpr CommandOutput wifiLog = {"status_from_syslog", "grep ' WIFI ' /var/log/messages | tail -8"};

constexpr CommandOutput accessPoint[] = {
    {"ap0_status", "iw dev ap0 info"},
    {"connected_clients", "iw dev ap0 station dump"},
    {"clients_dhcp_lease", "cat /tmp/dhcp.leases"},
    wifiLog,
};

constexpr CommandOutput client[] = {
    {"client0_status", "iw dev client0 info; iw dev client0 link | grep -e 'signal:' -e 'tx bitrate:'"},
    {"client0_ifconfig_status", "ifconfig client0"},
    {"Routing", "route -n"},
    wifiLog,
};

/// An interface that is off has no more to tell than that.
cppcms::json::value InterfaceStatus(char const *enabledKey, bool enabled,
                                    std::span<CommandOutput const> outputs) {
    cppcms::json::value status;
    status[enabledKey] = enabled;
    if (enabled)
        AddOutputs(status, outputs);
    return status;
}

}  // namespace

cppcms::json::value JsonRpc::wifiApStatus() {
    return InterfaceStatus("ap0_enabled", util::IsOn("net/wifi/ap/enabled"), accessPoint);
}

cppcms::json::value JsonRpc::wifiClientStatus() {
    return InterfaceStatus("client0_enabled", util::IsOn("net/wifi/client/enabled"), client);
}

void JsonRpc::wifiGetChannels(std::string const &countryCode) {
    cppcms::json::value status;
    status["countryCode"] = countryCode;
    if (auto const channels = util::ChannelEntries(countryCode); !channels.empty())
        status["channels"] = channels;
    CleanTexts(status);
    return_result(status);
}

}  // namespace webconfig::apps
