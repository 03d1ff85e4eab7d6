#pragma once

#include <string>

#include "WebApps/webconfig/apps/Base.h"
#include "WebApps/webconfig/data/RegulatoryWifi.h"

class cPrmLib;

namespace webconfig::apps {

/// The service page that changes the regulatory domain of the Wi-Fi module.
class Regulatory : public Base {
  public:
    Regulatory(cppcms::service &service, std::string appVolumeName);

    void WifiHandler();

  private:
    void _SetDomain(data::RegulatoryWifi &content, cPrmLib &store);
};

}  // namespace webconfig::apps
