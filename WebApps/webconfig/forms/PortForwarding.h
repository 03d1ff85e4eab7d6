#pragma once

#include <cstddef>
#include <string>

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"
#include "WebApps/webconfig/widgets/IpAddress.h"
#include "WebApps/webconfig/widgets/Port.h"

namespace webconfig::forms {

/// The inputs of one forwarding rule. Ports have no range, on purpose.
class PortForwardingRule : public Base {
  public:
    cppcms::widgets::select protocol;
    widgets::Port sourcePort;
    widgets::IpAddress destinationIP;
    widgets::Port destinationPort;

  protected:
    /// \a id is what the ids of the other inputs begin with. The widgets are not in the form yet.
    PortForwardingRule(std::string const &id, std::string const &protocolId);
};

class PortForwardingAddRule : public PortForwardingRule {
  public:
    PortForwardingAddRule();

    widgets::Button addButton;
};

/// An open rule: beside each input the hidden value that the rule had before.
class PortForwardingEditRule : public PortForwardingRule {
  public:
    PortForwardingEditRule();

    /// Puts the values from before back into the inputs.
    void Restore();

    cppcms::widgets::hidden protocolOld;
    cppcms::widgets::hidden sourcePortOld;
    cppcms::widgets::hidden destinationIPOld;
    cppcms::widgets::hidden destinationPortOld;
    widgets::Button saveButton;
    widgets::Button cancelButton;
};

/// State of the page.
class PortForwardingGeneral : public Base {
  public:
    PortForwardingGeneral();

    /// Whether the rule at position \a row is the one that the row's form acts on.
    bool IsRow(std::ptrdiff_t row);

    cppcms::widgets::hidden editing;  // "true" while the rule at rowId is open
    cppcms::widgets::hidden rowId;
};

}  // namespace webconfig::forms
