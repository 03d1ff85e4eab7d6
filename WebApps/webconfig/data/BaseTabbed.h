#pragma once

#include "WebApps/webconfig/data/Base.h"

namespace webconfig::data {

struct BaseTabbed : public Base {
    unsigned selected_tab = 0;  // index of the tab that the page opens on
};

}  // namespace webconfig::data
