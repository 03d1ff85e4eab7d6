#include "WebApps/webconfig/forms/Notice.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

Notice::Notice() {
    SetUp(enabled, "enabled", "cfg_notice_enabled", "Show at log-in");
    add(enabled);

    SetUp(text, "text", "cfg_notice_text", "Text");
    util::validation::Length(text, 1, 200);
    add(text);

    SetUpSubmit(save, "save", "cfg_notice_save", "Save");
    add(save);
}

}  // namespace webconfig::forms
