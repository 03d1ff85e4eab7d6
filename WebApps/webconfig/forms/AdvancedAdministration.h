#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// Remote access, logging and erasing. Its three buttons share the name "submit".
class AdvancedAdministration : public Base {
  public:
    AdvancedAdministration();

    cppcms::widgets::checkbox remoteSsh;
    cppcms::widgets::checkbox remoteWeb;
    cppcms::widgets::checkbox remotePing;
    cppcms::widgets::checkbox persistentLog;
    cppcms::widgets::checkbox cellularDebug;
    widgets::Button save;
    cppcms::widgets::select eraseType;
    widgets::Button erase;
    cppcms::widgets::select partition;
    widgets::Button erasePartition;
};

}  // namespace webconfig::forms
