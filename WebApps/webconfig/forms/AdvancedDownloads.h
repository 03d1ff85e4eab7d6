#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// The backup of all parameters, and the upload of one. Where the configuration does not ask for that, its
/// part is disabled.
class AdvancedConfiguration : public Base {
  public:
    AdvancedConfiguration();

    void EnableRestore();

    widgets::Button backup;
    cppcms::widgets::file file;
    cppcms::widgets::checkbox reboot;
    widgets::Button restore;
};

class AdvancedSyslog : public Base {
  public:
    AdvancedSyslog();

    widgets::Button download;
};

class AdvancedDeployerLog : public Base {
  public:
    AdvancedDeployerLog();

    widgets::Button download;
};

}  // namespace webconfig::forms
