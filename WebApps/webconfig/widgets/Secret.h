#pragma once

#include <cppcms/form.h>
#include <cppcms/util.h>

#include <string>

#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::widgets {

/// A text or password input of something that nobody is to read again. Where the policy hides secrets, no
/// page gets its value, and an empty input keeps the one that is stored.
template <typename Input>
class Secret : public Input {
  public:
    /// Fills the input; where secrets are hidden it only tells whether there is one.
    void ShowStored(std::string const &stored) {
        this->value(stored);
        if (IsHidden() && !stored.empty())
            this->attributes_string("placeholder='" + cppcms::util::escape(util::Translate("(unchanged)")) +
                                    '\'');
    }

    /// Whether what was sent leaves the stored one as it is.
    bool KeepsStored() { return IsHidden() && this->value().empty(); }

    void render_input(cppcms::form_context &context) override {
        if (IsHidden())
            this->value("");
        Input::render_input(context);
    }

  private:
    static bool IsHidden() { return security::ThePolicy().hide_secrets; }
};

}  // namespace webconfig::widgets
