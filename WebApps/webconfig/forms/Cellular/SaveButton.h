#pragma once

#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

/// The save button of a cellular form, somewhat larger than its other inputs.
inline void SetUpSaveButton(cppcms::widgets::submit &button, char const *name, char const *id) {
    SetUpSubmit(button, name, id, "Save");
    button.attributes_string("style='font-size: 1.2em;'");
}

}  // namespace webconfig::forms
