#pragma once

#include "WebApps/webconfig/forms/Base.h"

namespace webconfig::forms {

class General : public Base {
  public:
    General();

    cppcms::widgets::text deviceName;
    cppcms::widgets::select language;
    cppcms::widgets::submit save;
};

}  // namespace webconfig::forms
