#pragma once

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/DNSServer.h"

namespace webconfig::data {

struct DNSServer : public BaseTabbed {
    forms::DNSServer form;
};

}  // namespace webconfig::data
