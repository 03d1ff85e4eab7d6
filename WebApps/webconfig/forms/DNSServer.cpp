#include "WebApps/webconfig/forms/DNSServer.h"

#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

DNSServer::DNSServer() {
    SetUp(dnsServer0, "dnsServer0", "cfg_eth1_dns0", "Preferred DNS Server");
    add(dnsServer0);

    SetUp(dnsServer1, "dnsServer1", "cfg_eth1_dns1", "Alternate DNS Server");
    add(dnsServer1);

    SetUp(dnsSuffix, "dnsSuffix", "cfg_eth1_dnssfx", "DNS Suffix");
    add(dnsSuffix);

    SetUp(isAppend, "isAppend", noId, "Append to System DNS Configuration");
    add(isAppend);

    SetUpSubmit(saveButton, "saveButton", "cfg_eth1_save", "Save");
    add(saveButton);
}

}  // namespace webconfig::forms
