#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"
#include "WebApps/webconfig/widgets/Secret.h"

namespace webconfig::forms {

/// Main settings of the modem.
class Cellular : public Base {
  public:
    Cellular();

    cppcms::widgets::checkbox enabled;
    cppcms::widgets::select radioTechnology;
    cppcms::widgets::checkbox allowRoaming;
    cppcms::widgets::checkbox checkReceiving;
    cppcms::widgets::checkbox useSimPin;
    widgets::Secret<cppcms::widgets::text> simPin;
    widgets::Button save;
};

}  // namespace webconfig::forms
