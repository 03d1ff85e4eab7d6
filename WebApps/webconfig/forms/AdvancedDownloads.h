#pragma once

#include "WebApps/webconfig/forms/Base.h"

namespace webconfig::forms {

/// The backup of all parameters, and the upload of one. Where the configuration does not ask for that, its
/// part is disabled.
class AdvancedConfiguration : public Base {
  public:
    AdvancedConfiguration();

    void EnableRestore();

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
