#include "WebApps/webconfig/forms/AssemblySerialN.h"

#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

AssemblySerialN::AssemblySerialN() {
    current.name("currentAssemblySN");
    current.id("cfg_current_assembly_sn");
    current.message("Current Assembly SN");
    current.readonly(true);
    current.attributes_string("style='background-color:#F5F5F5;'");
    add(current);

    next.name("newAssemblySN");
    next.id("cfg_new_assembly_sn");
    next.message("New Assembly SN");
    util::validation::Length(next, 10, 30);
    add(next);

    button.name("btnASN");
    button.id("btn_asn");
    button.value(saveSerialNumber);
    add(button);
}

void AssemblySerialN::OfferReboot() {
    next.disabled(true);
    button.value(rebootForSerialNumber);
    button.attributes_string("style='font-weight: bold;'");
}

}  // namespace webconfig::forms
