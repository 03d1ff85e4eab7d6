#include "WebApps/webconfig/forms/Ntpd.h"

#include <string>

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

Ntpd::Ntpd() {
    SetUp(ntpdEnabled, "ntpdEnabled", "ntpd_enabled", "Allow ntpd");
    add(ntpdEnabled);

    for (std::size_t i = 0; i < servers.size(); ++i) {
        std::string const number = std::to_string(i);
        SetUp(servers[i], "server" + number, "cfg_ntpd_server" + number,
              util::Translate("Server {1} Address", number));
        add(servers[i]);
    }

    SetUpSubmit(submit, "submit", "cfg_ntpd_save", "Save");
    add(submit);
}

NtpManualSync::NtpManualSync() {
    SetUpSubmit(submit, "submit", "status_ntp_manual_sync", "Jump system time");
    add(submit);
}

}  // namespace webconfig::forms
