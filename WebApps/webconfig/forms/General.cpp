#include "WebApps/webconfig/forms/General.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

General::General() {
    SetUp(deviceName, "deviceName", "cfg_grl_device_name", "Device Name");
    util::validation::Limit(deviceName, settings::Row("net/hostname"));
    add(deviceName);

    SetUp(language, "language", "cfg_grl_lang", "Language");
    util::validation::Limit(language, settings::Row("language"));
    util::validation::NonEmpty(language);
    add(language);

    SetUpSubmit(save, "save", "cfg_grl_save", "Save");
    add(save);
}

}  // namespace webconfig::forms
