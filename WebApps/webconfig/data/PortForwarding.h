#pragma once

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/data/PortForwardingRules.h"
#include "WebApps/webconfig/forms/PortForwarding.h"

namespace webconfig::data {

struct PortForwarding : public BaseTabbed {
    PortForwardingRules preset_rules;
    PortForwardingRules user_rules;
    forms::PortForwardingEditRule edit_rule;
    forms::PortForwardingAddRule add_rule;
    forms::PortForwardingGeneral general;

    /// Whether the user rule at position \a row is open for editing.
    bool IsEdited(int row) { return general.editing.value() == "true" && general.IsRow(row); }
};

}  // namespace webconfig::data
