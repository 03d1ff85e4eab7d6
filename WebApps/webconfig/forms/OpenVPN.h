#pragma once

#include <string>

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// Whether the OpenVPN client is wanted.
class OpenVPN : public Base {
  public:
    OpenVPN();

    cppcms::widgets::checkbox enabled;
    widgets::Button save;
};

/// Upload of a client configuration.
class OpenVPNFileConfiguration : public Base {
  public:
    OpenVPNFileConfiguration();

    void Disable();

    cppcms::widgets::file file;
    widgets::Button upload;
};

/// A client configuration from a provisioning server.
class OpenVPNRemoteConfiguration : public Base {
  public:
    /// \a defaultServer and \a ownId are what the inputs begin with.
    OpenVPNRemoteConfiguration(std::string const &defaultServer, std::string const &ownId);

    void Disable();

    cppcms::widgets::text server;
    cppcms::widgets::text oneTimeCode;
    cppcms::widgets::text deviceId;
    widgets::Button submit;
};

}  // namespace webconfig::forms
