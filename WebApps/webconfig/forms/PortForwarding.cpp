#include "WebApps/webconfig/forms/PortForwarding.h"

#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/util/Strings.h"

namespace webconfig::forms {

namespace {

void SetUpPort(widgets::Port &port, char const *name, std::string const &id) {
    port.name(name);
    port.id(id);
}

void SetUpHidden(cppcms::widgets::hidden &field, char const *name, std::string const &id = {}) {
    field.name(name);
    if (!id.empty())
        field.id(id);
}

void SetUpSubmit(cppcms::widgets::submit &button, char const *name, char const *caption, char const *id) {
    button.name(name);
    button.id(id);
    button.value(caption);
}

}  // namespace

PortForwardingRule::PortForwardingRule(std::string const &id) {
    protocol.name("protocol");
    protocol.add("TCP", "tcp");
    protocol.add("UDP", "udp");
    protocol.selected_id("tcp");
    util::validation::NonEmpty(protocol);

    SetUpPort(sourcePort, "sourcePort", id + "src_port");
    destinationIP.name("destinationIP");
    destinationIP.id(id + "dest_ip");
    destinationIP.error_message("Invalid IP address");
    SetUpPort(destinationPort, "destinationPort", id + "dest_port");
}

PortForwardingAddRule::PortForwardingAddRule() : PortForwardingRule("cfg_pfwadd_") {
    protocol.id("cfg_pfwadd_proto");
    SetUpSubmit(addButton, "add", "Add Row", "cfg_pfwadd_add");

    add(protocol);
    add(sourcePort);
    add(destinationIP);
    add(destinationPort);
    add(addButton);
}

PortForwardingEditRule::PortForwardingEditRule() : PortForwardingRule("cfg_pfw_") {
    protocol.id("cfg_pfw_protocol");
    SetUpHidden(protocolOld, "protocolOld", "cfg_pfw_protocol_old");
    SetUpHidden(sourcePortOld, "sourcePortOld", "cfg_pfw_src_port_old");
    SetUpHidden(destinationIPOld, "destinationIPOld", "cfg_pfw_dest_ip_old");
    SetUpHidden(destinationPortOld, "destinationPortOld", "cfg_pfw_dest_port_old");
    SetUpSubmit(saveButton, "save", "Save", "cfg_pfw_save");
    SetUpSubmit(cancelButton, "cancel", "Cancel", "cfg_pfw_cancel");

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
    SetUpHidden(editing, "editing");
    SetUpHidden(rowId, "rowId");
    add(editing);
    add(rowId);
}

bool PortForwardingGeneral::IsRow(std::ptrdiff_t row) {
    return rowId.value() == std::to_string(row);
}

}  // namespace webconfig::forms
