#pragma once

#include <string>

#include "WebApps/webconfig/data/Base.h"

namespace traffic_plugin {

/// What the view of the page shows.
struct Content : public webconfig::data::Base {
    std::string status_url;
    unsigned refresh_interval = 1000;  // milliseconds
};

}  // namespace traffic_plugin
