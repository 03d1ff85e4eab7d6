#pragma once

#include <string>

#include "WebApps/webconfig/apps/Base.h"
#include "WebApps/webconfig/data/AssemblySerialN.h"

namespace webconfig::apps {

/// Pages for service staff, with a menu and media of their own.
class Service : public Base {
  public:
    Service(cppcms::service &service, std::string appVolumeName);

    /// Shows the assembly serial number, changes it, and reboots the device on request.
    void SerialNumberHandler();

  private:
    data::Message _ChangeSerialNumber(forms::AssemblySerialN &form, std::string const &current);
};

}  // namespace webconfig::apps
