#pragma once

#include "WebApps/webconfig/forms/Base.h"

namespace webconfig::forms {

class AssemblySerialN : public Base {
  public:
    AssemblySerialN();

    /// Offers the reboot in the place of a further change.
    void OfferReboot();

    cppcms::widgets::text current;
    cppcms::widgets::text next;
    cppcms::widgets::submit button;
};

/// Captions of the button, which tell what was pressed.
inline constexpr char saveSerialNumber[] = "Save";
inline constexpr char rebootForSerialNumber[] = "Reboot to take effect";

}  // namespace webconfig::forms
