#pragma once

#include <compare>
#include <map>
#include <string>

namespace webconfig::data {

/// What makes a forwarding rule unique. All TCP rules come before all UDP rules, each by source port.
struct PortForwardingKey {
    enum : unsigned { Tcp = 0, Udp = 1 };

    unsigned protocol = Tcp;
    unsigned source_port = 0;

    auto operator<=>(PortForwardingKey const &) const = default;

    /// Name of the protocol in parameter keys and forms.
    char const *ProtocolId() const { return protocol == Tcp ? "tcp" : "udp"; }
    /// The same for people.
    char const *ProtocolName() const { return protocol == Tcp ? "TCP" : "UDP"; }
};

/// Where a rule leads to.
struct PortForwardingEntry {
    std::string destination_ip;
    unsigned destination_port = 0;
};

/// Pages name a rule by its position in the table.
using PortForwardingRules = std::map<PortForwardingKey, PortForwardingEntry>;

}  // namespace webconfig::data
