#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/forms/WifiCountry.h"
#include "WebApps/webconfig/widgets/Button.h"
#include "WebApps/webconfig/widgets/Secret.h"

namespace webconfig::forms {

class Wlan : public Base {
  public:
    Wlan();

    /// A client that is on needs the name of a network, a kind of security and a country of the module's.
    bool validate() override;

    cppcms::widgets::checkbox enabled;
    cppcms::widgets::text ssid;
    WifiCountry country{"wlan"};
    cppcms::widgets::select security;
    cppcms::widgets::text identity;
    widgets::Secret<cppcms::widgets::password> passPhrase;
    cppcms::widgets::checkbox mobile;
    widgets::Button save;
};

}  // namespace webconfig::forms
