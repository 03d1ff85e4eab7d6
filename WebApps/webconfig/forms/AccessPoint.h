#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/forms/WifiCountry.h"
#include "WebApps/webconfig/widgets/Button.h"
#include "WebApps/webconfig/widgets/Secret.h"

namespace webconfig::forms {

/// The channel is no part of it: the page's script fills that select with the channels of the country.
class AccessPoint : public Base {
  public:
    AccessPoint();

    /// An access point that is on needs a network name and a country of the module's.
    bool validate() override;

    cppcms::widgets::checkbox enabled;
    WifiCountry country{"ap"};
    cppcms::widgets::select security;
    cppcms::widgets::text ssid;
    widgets::Secret<cppcms::widgets::password> passPhrase;
    widgets::Button save;
};

}  // namespace webconfig::forms
