#pragma once

#include <string>

#include "WebApps/webconfig/data/Base.h"

namespace webconfig::data {

struct BaseTabbed : public Base {
    unsigned selected_tab = 0;         // index of the tab that the page opens on
    unsigned refresh_interval = 1000;  // milliseconds between two status calls of the page's script
    std::string status_url;            // where they go
};

}  // namespace webconfig::data
