#pragma once

#include "WebApps/webconfig/forms/Base.h"

namespace webconfig::forms {

/// The backup of all parameters. To restore one is not possible yet: that part is disabled.
class AdvancedConfiguration : public Base {
  public:
    AdvancedConfiguration();

    cppcms::widgets::submit backup;
    cppcms::widgets::file file;
    cppcms::widgets::checkbox reboot;
    cppcms::widgets::submit restore;
};

class AdvancedSyslog : public Base {
  public:
    AdvancedSyslog();

    cppcms::widgets::submit download;
};

class AdvancedDeployerLog : public Base {
  public:
    AdvancedDeployerLog();

    cppcms::widgets::submit download;
};

}  // namespace webconfig::forms
