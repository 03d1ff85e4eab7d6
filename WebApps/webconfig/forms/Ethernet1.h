#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/settings/Rules.h"
#include "WebApps/webconfig/widgets/Button.h"
#include "WebApps/webconfig/widgets/IpAddress.h"

namespace webconfig::forms {

/// Settings of a wired port. The options of speedsAvailable come with AddSpeeds().
class Ethernet1 : public Base {
  public:
    Ethernet1();

    /// Offers the link speeds, those of \a mask selected. Bit i stands for the option i.
    void AddSpeeds(unsigned mask);
    /// The mask of the selected speeds.
    unsigned SpeedMask();

    bool IsDhcp() { return !settings::NeedsAddress(addressMode.selected_id()); }

    /// With DHCP the address fields may stay empty.
    bool validate() override;

    cppcms::widgets::select addressMode;
    widgets::IpAddress ipAddress;
    cppcms::widgets::select netmask;
    widgets::IpAddress gateway;
    cppcms::widgets::select_multiple speedsAvailable;
    widgets::Button saveButton;
};

}  // namespace webconfig::forms
