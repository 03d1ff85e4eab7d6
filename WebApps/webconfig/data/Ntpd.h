#pragma once

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Ntpd.h"

namespace webconfig::data {

struct Ntpd : public BaseTabbed {
    Ntpd() { refresh_interval = 2000; }  // each refresh asks the daemon three times

    forms::Ntpd form;
    forms::NtpManualSync manual_sync;
};

}  // namespace webconfig::data
