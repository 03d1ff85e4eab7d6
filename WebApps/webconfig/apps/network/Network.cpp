#include "WebApps/webconfig/apps/Network.h"

#include "WebApps/webconfig/apps/Page.h"

namespace webconfig::apps {

Network::Network(cppcms::service &service) : Base(service, "") {
    static constexpr Page<Network> pages[] = {
        {"ethernet1", &Network::Ethernet1},
        {"openvpn", &Network::OpenVPN},
        {"orvane", &Network::Orvane},
        {"port_forwarding", &Network::PortForwarding},
        {"cellular", &Network::Cellular},
        {"ntp", &Network::Ntpd},
        {"dns_server", &Network::DNSServer},
        {"access_point", &Network::AccessPoint},
        {"wlan", &Network::Wlan},
    };
    AddPages(*this, pages);
}

}  // namespace webconfig::apps
