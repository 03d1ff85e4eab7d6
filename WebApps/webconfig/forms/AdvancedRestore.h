#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// What becomes of an uploaded backup when it has been shown. Which of the parameters that the table of
/// settings does not know are taken is not in it: they are as many as the backup has.
class AdvancedRestore : public Base {
  public:
    AdvancedRestore();

    cppcms::widgets::hidden token;   // of the kept upload,
    cppcms::widgets::hidden name;    // its name,
    cppcms::widgets::hidden format;  // and as what it is read, where there are two ways
    cppcms::widgets::checkbox reboot;
    widgets::Button apply;
    widgets::Button discard;
};

}  // namespace webconfig::forms
