#pragma once

#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Ntpd.h"

namespace webconfig::data {

struct Ntpd : public BaseTabbed {
    forms::Ntpd form;
    forms::NtpManualSync manual_sync;
    unsigned refresh_interval = 2000;  // milliseconds; each refresh asks the daemon three times
    std::string status_url;
};

}  // namespace webconfig::data
