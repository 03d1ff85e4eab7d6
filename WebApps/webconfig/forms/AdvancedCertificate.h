#pragma once

#include "WebApps/webconfig/forms/Base.h"

namespace webconfig::forms {

/// Upload of the web server's private key and certificate.
class AdvancedCertificate : public Base {
  public:
    AdvancedCertificate();

    cppcms::widgets::file file;
    cppcms::widgets::submit install;
};

}  // namespace webconfig::forms
