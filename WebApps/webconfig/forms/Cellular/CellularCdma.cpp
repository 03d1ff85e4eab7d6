#include "WebApps/webconfig/forms/Cellular/CellularCdma.h"

#include "WebApps/webconfig/forms/Cellular/SaveButton.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

CellularCdma::CellularCdma() {
    SetUp(carrier, noName, "cfg_cell_cdma_carrier", "CDMA Carrier");
    util::validation::Limit(carrier, settings::Row("cdma/current_carrier"));
    add(carrier);

    SetUp(username, noName, "cfg_cell_username", "Username");
    add(username);

    SetUp(password, noName, "cfg_cell_password", "Password");
    add(password);

    SetUp(dialCommand, noName, "cfg_cell_cdma_dial_cmd", "Dial Command");
    util::validation::Limit(dialCommand, settings::Row("cdma/dial_command"));
    add(dialCommand);

    SetUp(activationCommand, noName, "cfg_cell_cdma_custom_activation_command",
          "CDMA Custom Activation Command");
    add(activationCommand);

    SetUp(activationResponse, noName, "cfg_cell_cdma_custom_activation_response",
          "CDMA Custom Activation Response");
    add(activationResponse);

    // The doubled word of the id: the installers' scripts and style sheets know it so.
    SetUp(forceActivation, noName, "cfg_cell_cell_force_activation", "Force Activation");
    add(forceActivation);

    SetUpSaveButton(save, "cdma", "cfg_cell_cdma_save");
    add(save);
}

}  // namespace webconfig::forms
