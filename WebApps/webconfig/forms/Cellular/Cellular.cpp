#include "WebApps/webconfig/forms/Cellular/Cellular.h"

#include "WebApps/webconfig/forms/Cellular/SaveButton.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

Cellular::Cellular() {
    SetUp(enabled, noName, "cfg_cell_enabled", "Enabled");
    add(enabled);

    SetUp(radioTechnology, noName, "cfg_cell_radiotech", "Radio Technology");
    util::validation::Limit(radioTechnology, settings::Row("cellular/radio_technology"));
    add(radioTechnology);

    SetUp(allowRoaming, noName, "cfg_cell_roam", "Allow Roaming");
    add(allowRoaming);

    SetUp(checkReceiving, noName, "cfg_cell_check_receiving", "Reset On No Data Reception");
    add(checkReceiving);

    SetUp(useSimPin, noName, "cfg_cell_use_sim_pin", "Use SIM PIN");
    add(useSimPin);

    SetUp(simPin, noName, "cfg_cell_sim_pin", "SIM PIN");
    add(simPin);

    SetUpSaveButton(save, "cellular", "cfg_cell_save");
    add(save);
}

}  // namespace webconfig::forms
