#pragma once

#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/AccessPoint.h"

namespace webconfig::data {

struct AccessPoint : public BaseTabbed {
    forms::AccessPoint form;

    // As stored.
    bool enabled = false;
    std::string channel;  // such as "36:5180", or "0:" for automatic
    std::string ssid;
    std::string country;
    std::string key;

    bool laird = false;  // whose module has one radio for the access point and the WLAN client
    bool channel_read_only = false;
    bool blocked = false;         // the WLAN client is on, and the channel is in the 5 GHz band
    bool country_locked = false;  // the regulatory domain leaves no choice

    std::string chosen_channel;  // the one that the page shows
};

}  // namespace webconfig::data
