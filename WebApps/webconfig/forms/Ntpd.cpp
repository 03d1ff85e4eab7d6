#include "WebApps/webconfig/forms/Ntpd.h"

#include <string>

namespace webconfig::forms {

Ntpd::Ntpd() {
    ntpdEnabled.name("ntpdEnabled");
    ntpdEnabled.id("ntpd_enabled");
    ntpdEnabled.message("Allow ntpd");
    add(ntpdEnabled);

    for (std::size_t i = 0; i < servers.size(); ++i) {
        std::string const number = std::to_string(i);
        servers[i].name("server" + number);
        servers[i].id("cfg_ntpd_server" + number);
        servers[i].message("Server " + number + " Address");
        add(servers[i]);
    }

    submit.name("submit");
    submit.id("cfg_ntpd_save");
    submit.value("Save");
    add(submit);
}

NtpManualSync::NtpManualSync() {
    submit.name("submit");
    submit.id("status_ntp_manual_sync");
    submit.value("Jump system time");
    add(submit);
}

}  // namespace webconfig::forms
