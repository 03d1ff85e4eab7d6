#pragma once

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// Name servers of the LAN beside those that the system finds by itself.
class DNSServer : public Base {
  public:
    DNSServer();

    cppcms::widgets::text dnsServer0;
    cppcms::widgets::text dnsServer1;
    cppcms::widgets::text dnsSuffix;
    cppcms::widgets::checkbox isAppend;
    widgets::Button saveButton;
};

}  // namespace webconfig::forms
