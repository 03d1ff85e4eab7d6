#pragma once

#include "WebApps/webconfig/apps/Base.h"

namespace traffic_plugin {

/// The page application: /traffic/interfaces in the page space.
class Page : public webconfig::apps::Base {
  public:
    explicit Page(cppcms::service &service);

    void Interfaces();
};

}  // namespace traffic_plugin
