#include "WebApps/webconfig/forms/Orvane.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

OrvaneConfig::OrvaneConfig() {
    SetUp(enabled, "enabled", "cfg_orvane_enabled", "Orvane Enabled");
    add(enabled);

    SetUpSubmit(save, "configuration", "cfg_orvane_save", "Save");
    add(save);
}

Orvane::Orvane(std::string const &path) {
    SetUp(server, "server", "cfg_orv_server", "Server Address");
    util::validation::Limit(server, settings::Row("tern/*/server"));
    add(server);

    SetUp(port, "port", "cfg_orv_port", "Port");
    util::validation::Limit(port, settings::Row("tern/*/ipport"));
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
