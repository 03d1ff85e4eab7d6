#include "WebApps/webconfig/forms/Base.h"

#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

bool Base::validate() {
    bool allValid = true;
    for (auto &widget : *this) {
        if (!widget.validate()) {
            util::validation::AddClass(widget, util::validation::errorClass);
            allValid = false;
        }
    }
    return allValid;
}

}  // namespace webconfig::forms
