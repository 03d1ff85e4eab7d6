#pragma once

#include "WebApps/webconfig/apps/Base.h"

namespace webconfig::apps {

/// Pages of the network settings.
class Network : public Base {
  public:
    explicit Network(cppcms::service &service);

  private:
    /// Registers a page at "/" + \a name, under \a name for links.
    void _Page(std::string const &name, void (Network::*handler)());
};

}  // namespace webconfig::apps
