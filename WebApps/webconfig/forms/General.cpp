#include "WebApps/webconfig/forms/General.h"

#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

General::General() {
    deviceName.name("deviceName");
    deviceName.id("cfg_grl_device_name");
    deviceName.message("Device Name");
    util::validation::Length(deviceName, 1, 64);
    add(deviceName);

    language.name("language");
    language.id("cfg_grl_lang");
    language.message("Language");
    language.add("English", "");
    util::validation::NonEmpty(language);
    add(language);

    save.name("save");
    save.id("cfg_grl_save");
    save.value("Save");
    add(save);
}

}  // namespace webconfig::forms
