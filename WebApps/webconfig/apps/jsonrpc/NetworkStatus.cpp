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

void JsonRpc::Ethernet1Status() {
    cppcms::json::value status;
    AddOutputs(status, bridge);
    _Return(status);
}

void JsonRpc::PortForwardingStatus() {
    cppcms::json::value status;
    AddOutputs(status, packetFilter);
    _Return(status);
}

void JsonRpc::DnsServerStatus() {
    cppcms::json::value status;
    AddOutputs(status, resolver);
    _Return(status);
}

}  // namespace webconfig::apps
