#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/jsonrpc/CommandOutputs.h"

namespace webconfig::apps {

namespace {

constexpr CommandOutput bridge[] = {
    {"br1", "ifconfig br1"},
    {"brctl", "brctl show"},
};

constexpr CommandOutput packetFilter[] = {
    {"filtering", "iptables -n -L -v"},
    {"nat", "iptables -t nat -n -L -v"},
};

constexpr CommandOutput resolver[] = {
    {"currentConf", "cat /etc/resolv.conf 2>&1"},
};

}  // namespace

cppcms::json::value JsonRpc::Ethernet1Status() {
    cppcms::json::value status;
    AddOutputs(status, bridge);
    return status;
}

cppcms::json::value JsonRpc::PortForwardingStatus() {
    cppcms::json::value status;
    AddOutputs(status, packetFilter);
    return status;
}

cppcms::json::value JsonRpc::DnsServerStatus() {
    cppcms::json::value status;
    AddOutputs(status, resolver);
    return status;
}

}  // namespace webconfig::apps
