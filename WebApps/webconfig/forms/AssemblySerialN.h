#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

class AssemblySerialN : public Base {
  public:
    AssemblySerialN();

    /// Offers the reboot in the place of a further change.
    void OfferReboot();

    cppcms::widgets::text current;
    cppcms::widgets::text next;
    widgets::Button button;
};

/// Captions of the button, which tell what was pressed.
inline constexpr char const *saveSerialNumber = util::Translatable("Save");
inline constexpr char const *rebootForSerialNumber = util::Translatable("Reboot to take effect");

}  // namespace webconfig::forms
