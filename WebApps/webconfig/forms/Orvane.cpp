#include "WebApps/webconfig/forms/Orvane.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

namespace {

constexpr int minPort = 1;
constexpr int maxPort = 65535;

}  // namespace

OrvaneConfig::OrvaneConfig() {
    SetUp(enabled, "enabled", "cfg_orvane_enabled", "Orvane Enabled");
    add(enabled);

    SetUpSubmit(save, "configuration", "cfg_orvane_save", "Save");
    add(save);
}

Orvane::Orvane(std::string const &path) {
    SetUp(server, "server", "cfg_orv_server", "Server Address");
    util::validation::NonEmpty(server);
    add(server);

    SetUp(port, "port", "cfg_orv_port", "Port");
    port.range(minPort, maxPort);
    // With two blanks: translations are found by the whole text.
    port.error_message("Invalid range;  minimum " + std::to_string(minPort) + ", maximum " +
                       std::to_string(maxPort));
    add(port);

    SetUpSubmit(save, path, "cfg_orv_save", "Save");
    add(save);
}

void Orvane::SetState(bool enabled) {
    server.disabled(!enabled);
    port.disabled(!enabled);
    save.disabled(!enabled);
}

}  // namespace webconfig::forms
