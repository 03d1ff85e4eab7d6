#include "WebApps/webconfig/forms/DNSServer.h"

namespace webconfig::forms {

DNSServer::DNSServer() {
    dnsServer0.name("dnsServer0");
    dnsServer0.id("cfg_eth1_dns0");
    dnsServer0.message("Preferred DNS Server");
    add(dnsServer0);

    dnsServer1.name("dnsServer1");
    dnsServer1.id("cfg_eth1_dns1");
    dnsServer1.message("Alternate DNS Server");
    add(dnsServer1);

    dnsSuffix.name("dnsSuffix");
    dnsSuffix.id("cfg_eth1_dnssfx");
    dnsSuffix.message("DNS Suffix");
    add(dnsSuffix);

    isAppend.name("isAppend");
    isAppend.message("Append to System DNS Configuration");
    add(isAppend);

    saveButton.name("saveButton");
    saveButton.id("cfg_eth1_save");
    saveButton.value("Save");
    add(saveButton);
}

}  // namespace webconfig::forms
