#pragma once

#include "WebApps/webconfig/forms/InlineAttribute.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// The save button of a cellular form, somewhat larger than its other inputs.
inline void SetUpSaveButton(widgets::Button &button, char const *name, char const *id) {
    SetUpSubmit(button, name, id, "Save");
    SetInlineAttribute(button, largeText);
}

}  // namespace webconfig::forms
