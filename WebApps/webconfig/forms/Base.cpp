#include "WebApps/webconfig/forms/Base.h"

#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

namespace {

/// Browsers send no control characters for an input of one line. In a configuration file a line end would
/// begin a line of the sender's own.
bool HasRefusedControls(cppcms::widgets::base_widget &widget) {
    auto *const line = dynamic_cast<cppcms::widgets::text *>(&widget);  // text areas are none
    return security::ThePolicy().refuse_control_characters && line && line->set() &&
           util::HasControls(line->value());
}

std::string NameOf(cppcms::widgets::base_widget &widget) {
    return widget.has_message() ? widget.message().str(util::Locale()) : widget.name();
}

}  // namespace

bool Base::validate() {
    bool allValid = true;
    for (auto &widget : *this) {
        bool valid = widget.validate();
        if (HasRefusedControls(widget)) {
            valid = false;
            util::validation::Refuse(
                widget,
                util::Translate("\"{1}\" must not have line ends or control characters", NameOf(widget)));
        } else if (!valid) {
            util::validation::AddClass(widget, util::validation::errorClass);
        }
        allValid = allValid && valid;
    }
    return allValid;
}

}  // namespace webconfig::forms
