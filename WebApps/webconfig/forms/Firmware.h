#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// The upload of a firmware image.
class Firmware : public Base {
  public:
    Firmware();

    /// Tells a file that is no image from one of the wrong size.
    bool validate() override;

    cppcms::widgets::file file;
    widgets::Button load;
};

}  // namespace webconfig::forms
