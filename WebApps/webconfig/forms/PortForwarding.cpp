#include "WebApps/webconfig/forms/PortForwarding.h"

#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/util/Strings.h"

namespace webconfig::forms {

PortForwardingRule::PortForwardingRule(std::string const &id, std::string const &protocolId) {
    SetUp(protocol, "protocol", protocolId);
    protocol.add("TCP", "tcp");
    protocol.add("UDP", "udp");
    protocol.selected_id("tcp");
    util::validation::NonEmpty(protocol);

    SetUp(sourcePort, "sourcePort", id + "src_port");
    SetUp(destinationIP, "destinationIP", id + "dest_ip");
    destinationIP.error_message("Invalid IP address");
    SetUp(destinationPort, "destinationPort", id + "dest_port");
}

PortForwardingAddRule::PortForwardingAddRule() : PortForwardingRule("cfg_pfwadd_", "cfg_pfwadd_proto") {
    SetUpSubmit(addButton, "add", "cfg_pfwadd_add", "Add Row");

    add(protocol);
    add(sourcePort);
    add(destinationIP);
    add(destinationPort);
    add(addButton);
}

PortForwardingEditRule::PortForwardingEditRule() : PortForwardingRule("cfg_pfw_", "cfg_pfw_protocol") {
    SetUp(protocolOld, "protocolOld", "cfg_pfw_protocol_old");
    SetUp(sourcePortOld, "sourcePortOld", "cfg_pfw_src_port_old");
    SetUp(destinationIPOld, "destinationIPOld", "cfg_pfw_dest_ip_old");
    SetUp(destinationPortOld, "destinationPortOld", "cfg_pfw_dest_port_old");
    SetUpSubmit(saveButton, "save", "cfg_pfw_save", "Save");
    SetUpSubmit(cancelButton, "cancel", "cfg_pfw_cancel", "Cancel");

    add(protocol);
    add(protocolOld);
    add(sourcePort);
    add(sourcePortOld);
    add(destinationIP);
    add(destinationIPOld);
    add(destinationPort);
    add(destinationPortOld);
    add(saveButton);
    add(cancelButton);
}

void PortForwardingEditRule::Restore() {
    SelectByValue(protocol, protocolOld.value());
    sourcePort.value(util::LeadingNumber(sourcePortOld.value()));
    destinationIP.value(destinationIPOld.value());
    destinationPort.value(util::LeadingNumber(destinationPortOld.value()));
}

PortForwardingGeneral::PortForwardingGeneral() {
    SetUp(editing, "editing", noId);
    SetUp(rowId, "rowId", noId);
    add(editing);
    add(rowId);
}

bool PortForwardingGeneral::IsRow(std::ptrdiff_t row) {
    return rowId.value() == std::to_string(row);
}

}  // namespace webconfig::forms
