#pragma once

#include "WebApps/webconfig/forms/InlineAttribute.h"
#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

/// The save button of a cellular form, somewhat larger than its other inputs.
inline void SetUpSaveButton(cppcms::widgets::submit &button, char const *name, char const *id) {
    SetUpSubmit(button, name, id, "Save");
    SetInlineAttribute(button, largeText);
}

}  // namespace webconfig::forms
