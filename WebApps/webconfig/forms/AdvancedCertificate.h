#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// Upload of the web server's private key and certificate.
class AdvancedCertificate : public Base {
  public:
    AdvancedCertificate();

    cppcms::widgets::file file;
    widgets::Button install;
};

}  // namespace webconfig::forms
