#pragma once

#include <array>

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// Whether the time daemon runs, and its servers.
class Ntpd : public Base {
  public:
    Ntpd();

    cppcms::widgets::checkbox ntpdEnabled;
    std::array<cppcms::widgets::text, 4> servers;
    widgets::Button submit;
};

/// The button of the status tab that sets the clock at once.
class NtpManualSync : public Base {
  public:
    NtpManualSync();

    widgets::Button submit;
};

}  // namespace webconfig::forms
