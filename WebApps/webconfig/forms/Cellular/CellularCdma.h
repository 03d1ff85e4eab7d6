#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"
#include "WebApps/webconfig/widgets/Secret.h"

namespace webconfig::forms {

/// Settings of a CDMA carrier. No tab shows them; they are only taken.
class CellularCdma : public Base {
  public:
    CellularCdma();

    cppcms::widgets::select carrier;
    cppcms::widgets::text username;
    widgets::Secret<cppcms::widgets::password> password;
    cppcms::widgets::text dialCommand;
    cppcms::widgets::text activationCommand;
    cppcms::widgets::text activationResponse;
    cppcms::widgets::checkbox forceActivation;
    widgets::Button save;
};

}  // namespace webconfig::forms
