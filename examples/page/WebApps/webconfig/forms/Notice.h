#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// The notice that a log-in shell shows, and whether it does.
class Notice : public Base {
  public:
    Notice();

    cppcms::widgets::checkbox enabled;
    cppcms::widgets::text text;
    widgets::Button save;
};

}  // namespace webconfig::forms
