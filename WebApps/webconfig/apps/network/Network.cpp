#include "WebApps/webconfig/apps/Network.h"

#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>

namespace webconfig::apps {

Network::Network(cppcms::service &service) : Base(service, "") {
    _Page("ethernet1", &Network::Ethernet1);
    _Page("openvpn", &Network::OpenVPN);
    _Page("orvane", &Network::Orvane);
    _Page("port_forwarding", &Network::PortForwarding);
    _Page("cellular", &Network::Cellular);
    _Page("ntp", &Network::Ntpd);
    _Page("dns_server", &Network::DNSServer);
    _Page("access_point", &Network::AccessPoint);
    _Page("wlan", &Network::Wlan);
}

void Network::_Page(std::string const &name, void (Network::*handler)()) {
    mapper().assign(name, '/' + name);
    dispatcher().assign('/' + name, handler, this);
}

}  // namespace webconfig::apps
