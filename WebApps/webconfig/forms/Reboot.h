#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

class Reboot : public Base {
  public:
    Reboot();

    widgets::Button reboot;
};

}  // namespace webconfig::forms
