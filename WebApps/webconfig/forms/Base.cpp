#include "WebApps/webconfig/forms/Base.h"

#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

namespace {

constexpr char errorClass[] = "cppcms_error_msg";

}  // namespace

bool Base::validate() {
    bool allValid = true;
    for (auto &widget : *this) {
        if (!widget.validate()) {
            util::validation::AddClass(widget, errorClass);
            allValid = false;
        }
    }
    return allValid;
}

}  // namespace webconfig::forms
