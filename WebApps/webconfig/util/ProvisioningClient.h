#pragma once

#include <optional>
#include <string>
#include <utility>

namespace cppcms::json {
class value;
}

namespace webconfig::util {

/// How long, in seconds, a provisioning server may take to accept the connection, and for each request.
struct ProvisioningLimits {
    long connect = 10;
    long transfer = 30;
};

/// Fetches the configuration of an OpenVPN client from a provisioning server, for a one-time code.
class ProvisioningClient {
  public:
    struct Configuration {
        std::string fileName;  ///< made of the names in the answer; a plain name, without a folder
        std::string text;
    };

    /// \a server is a host, host:port, or either with the begin of a path. Where "https://" is in front, it
    /// is asked by TLS only, and verified with libcurl's certificates.
    ProvisioningClient(std::string server, std::string oneTimeCode, ProvisioningLimits limits = {})
        : server_(std::move(server)), oneTimeCode_(std::move(oneTimeCode)), limits_(limits) {}

    /// What the server has for the device. Nothing, with a text for the operator in Error() and more in the
    /// log, where that fails.
    std::optional<Configuration> Register(std::string const &deviceId);
    /// Tells the server that the configuration has come.
    void Acknowledge();

    std::string const &Error() const { return error_; }

  private:
    /// Posts \a request to an endpoint and, where \a answer is not null, reads the answer into it.
    bool PostQuery(std::string const &endpoint, cppcms::json::value const &request,
                   cppcms::json::value *answer);
    bool Fail(std::string error);

    std::string const server_;
    std::string const oneTimeCode_;
    ProvisioningLimits const limits_;
    std::string error_;
};

}  // namespace webconfig::util
