#pragma once

#include "WebApps/webconfig/forms/Base.h"

namespace webconfig::forms {

class Reboot : public Base {
  public:
    Reboot();

    cppcms::widgets::submit reboot;
};

}  // namespace webconfig::forms
