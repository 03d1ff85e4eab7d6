#pragma once

#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/DNSServer.h"

namespace webconfig::data {

struct DNSServer : public BaseTabbed {
    forms::DNSServer form;
    unsigned refresh_interval = 1000;  // milliseconds
    std::string status_url;
};

}  // namespace webconfig::data
