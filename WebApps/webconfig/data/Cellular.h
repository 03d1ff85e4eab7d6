#pragma once

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Cellular/Cellular.h"
#include "WebApps/webconfig/forms/Cellular/CellularCdma.h"
#include "WebApps/webconfig/forms/Cellular/CellularGprs.h"

namespace webconfig::data {

struct Cellular : public BaseTabbed {
    Cellular() { refresh_interval = 2000; }

    forms::Cellular main;
    forms::CellularGprs gprs;
    forms::CellularCdma cdma;
};

}  // namespace webconfig::data
