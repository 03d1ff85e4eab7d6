#pragma once

#include "WebApps/webconfig/forms/Base.h"

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
    cppcms::widgets::submit save;
    cppcms::widgets::select eraseType;
    cppcms::widgets::submit erase;
    cppcms::widgets::select partition;
    cppcms::widgets::submit erasePartition;
};

}  // namespace webconfig::forms
