#pragma once

#include <string>

#include "WebApps/webconfig/data/Base.h"
#include "WebApps/webconfig/forms/Reboot.h"

namespace webconfig::data {

/// For the Reboot page and for the page that waits for the device.
struct Reboot : public Base {
    forms::Reboot form;
    std::string current_address;
    std::string lan_address;  // the configured one, which the device has after the reboot
    int wait_limit = 100;     // seconds
};

}  // namespace webconfig::data
