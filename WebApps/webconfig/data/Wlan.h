#pragma once

#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Wlan.h"

namespace webconfig::data {

struct Wlan : public BaseTabbed {
    forms::Wlan form;

    // As stored.
    bool enabled = false;
    std::string ssid;
    std::string country;
    std::string security;
    std::string key;
    std::string identity;
    std::string password_hash;
    bool mobile = false;

    bool country_locked = false;  // the regulatory domain leaves no choice
};

}  // namespace webconfig::data
