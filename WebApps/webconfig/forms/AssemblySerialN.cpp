#include "WebApps/webconfig/forms/AssemblySerialN.h"

#include "WebApps/webconfig/forms/InlineAttribute.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

AssemblySerialN::AssemblySerialN() {
    SetUp(current, "currentAssemblySN", "cfg_current_assembly_sn", "Current Assembly SN");
    current.readonly(true);
    SetInlineAttribute(current, lightGround);
    add(current);

    SetUp(next, "newAssemblySN", "cfg_new_assembly_sn", "New Assembly SN");
    util::validation::Length(next, 10, 30);
    add(next);

    SetUpSubmit(button, "btnASN", "btn_asn", saveSerialNumber);
    add(button);
}

void AssemblySerialN::OfferReboot() {
    next.disabled(true);
    button.value(rebootForSerialNumber);
    SetInlineAttribute(button, boldText);
}

}  // namespace webconfig::forms
