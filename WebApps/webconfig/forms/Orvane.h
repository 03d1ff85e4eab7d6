#pragma once

#include <string>

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// Whether the link to the site server is wanted.
class OrvaneConfig : public Base {
  public:
    OrvaneConfig();

    cppcms::widgets::checkbox enabled;
    widgets::Button save;
};

/// The site server that is reached over one path.
class Orvane : public Base {
  public:
    /// \a path is the name of the path and of its submit button.
    explicit Orvane(std::string const &path);

    /// Lets the inputs be used only where the link is \a enabled.
    void SetState(bool enabled);

    cppcms::widgets::text server;
    cppcms::widgets::numeric<int> port;
    widgets::Button save;
};

}  // namespace webconfig::forms
