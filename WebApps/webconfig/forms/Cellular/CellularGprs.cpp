#include "WebApps/webconfig/forms/Cellular/CellularGprs.h"

#include <sstream>

#include "WebApps/webconfig/forms/Cellular/SaveButton.h"
#include "WebApps/webconfig/forms/InlineAttribute.h"
#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

namespace {

/// What of the modem's list of operators counts.
constexpr std::size_t maxOperators = 127;  // bytes

/// Ways of choosing the network, as the modem numbers them.
enum NetworkMode : unsigned { Manual = 1, ManualThenAutomatic = 4 };
constexpr char manualByName[] = "1,0,";
constexpr char automaticMode[] = "0";

}  // namespace

CellularGprs::CellularGprs() {
    SetUp(preferredNetwork, noName, "cfg_cell_preferred_network", "Preferred Network");
    preferredNetwork.add(util::Translate("Automatic"), automatic);
    AddOperators(util::Prm::GetString(operatorsKey).substr(0, maxOperators));
    util::validation::NonEmpty(preferredNetwork);
    add(preferredNetwork);

    SetUpSubmit(refresh, "gprsNetwork", "cfg_refresh_network", refreshCaption);
    add(refresh);

    SetUp(simType, noName, "cfg_cell_sim_type", "SIM Type");
    simType.readonly(true);
    SetInlineAttribute(simType, greyGround);
    add(simType);

    SetUp(apn, noName, "cfg_cell_apn", "APN");
    util::validation::Limit(apn, settings::Row("gprs/apn"));
    add(apn);

    SetUp(username, noName, "cfg_cell_username", "Username");
    add(username);

    SetUp(password, noName, "cfg_cell_password", "Password");
    add(password);

    SetUp(dialCommand, noName, "cfg_cell_gprs_dial_cmd", "Dial Command");
    util::validation::Limit(dialCommand, settings::Row("gprs/dial_command"));
    add(dialCommand);

    SetUpSaveButton(save, "gprs", "cfg_cell_gprs_save");
    add(save);
}

/// The operators stand in quotes, among codes for their state.
void CellularGprs::AddOperators(std::string const &list) {
    std::istringstream pieces(list);
    for (std::string piece; std::getline(pieces, piece, ',');) {
        auto const end = piece.find('"', 1);
        if (!piece.starts_with('"') || end == std::string::npos)
            continue;
        std::string const id = piece.substr(0, end + 1);
        preferredNetwork.add("network_" + id, id);  // the page takes the name out of it
    }
}

void CellularGprs::SelectNetwork(std::string const &mode) {
    preferredNetwork.selected_id(automatic);
    unsigned const kind = util::LeadingNumber(mode);
    if (kind != Manual && kind != ManualThenAutomatic)
        return;
    auto const format = mode.find(",0,\"");
    if (format == std::string::npos || format != mode.find(','))
        return;
    SelectByValue(preferredNetwork, mode.substr(mode.find('"')));
    if (preferredNetwork.selected() < 0)
        preferredNetwork.selected_id(automatic);
}

std::string CellularGprs::NetworkMode() {
    std::string const network = preferredNetwork.selected_id();
    return network == automatic ? automaticMode : manualByName + network;
}

}  // namespace webconfig::forms
