#pragma once

#include <cppcms/form.h>

namespace webconfig::forms {

/// Base of all forms: an invalid widget is marked with a style class of its own.
class Base : public cppcms::form {
  public:
    /// Validates every widget, so that all invalid ones are marked in one pass, also by the rule for all
    /// inputs of one line that the policy may set. Forms with rules across fields call this first and
    /// combine.
    bool validate() override;
};

}  // namespace webconfig::forms
