#include "WebApps/webconfig/forms/InlineAttribute.h"

#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/security/Policy.h"

namespace webconfig::forms {

void SetInlineAttribute(cppcms::widgets::base_widget &widget, InlineAttribute const &attribute) {
    bool const forbidden = security::ThePolicy().headers;
    widget.attributes_string(forbidden ? "" : attribute.text);
    if (forbidden)
        util::validation::AddClass(widget, attribute.cssClass);
}

}  // namespace webconfig::forms
