#pragma once

#include "WebApps/webconfig/forms/Base.h"

namespace webconfig::forms {

/// The upload of a firmware image.
class Firmware : public Base {
  public:
    Firmware();

    /// Tells a file that is no image from one of the wrong size.
    bool validate() override;

    cppcms::widgets::file file;
    cppcms::widgets::submit load;
};

}  // namespace webconfig::forms
