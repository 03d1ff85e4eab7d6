#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

class General : public Base {
  public:
    General();

    cppcms::widgets::text deviceName;
    cppcms::widgets::select language;
    widgets::Button save;
};

}  // namespace webconfig::forms
