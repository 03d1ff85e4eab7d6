#pragma once

#include <string>

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// A new password, twice.
class AdvancedPassword : public Base {
  public:
    /// \a word says whose password it is: "Web" or "Root". It is part of names, ids and captions.
    AdvancedPassword(std::string const &word, std::string const &caption);

    /// Whether both entries are empty, once the form is loaded.
    bool IsEmpty();
    /// Whether both entries agree; where not, both are marked.
    bool Agree();

    cppcms::widgets::text password;
    cppcms::widgets::text confirmation;
    widgets::Button save;
};

}  // namespace webconfig::forms
