#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// What of the audit is to be shown. Sent as a query: it changes nothing.
class AdvancedAudit : public Base {
  public:
    AdvancedAudit();

    cppcms::widgets::select event;  // its first option, with an empty id, is all of them
    cppcms::widgets::text text;
    widgets::Button show;
};

}  // namespace webconfig::forms
