#pragma once

#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Cellular/Cellular.h"
#include "WebApps/webconfig/forms/Cellular/CellularCdma.h"
#include "WebApps/webconfig/forms/Cellular/CellularGprs.h"

namespace webconfig::data {

struct Cellular : public BaseTabbed {
    forms::Cellular main;
    forms::CellularGprs gprs;
    forms::CellularCdma cdma;
    unsigned refresh_interval = 2000;  // milliseconds
    std::string status_url;
};

}  // namespace webconfig::data
