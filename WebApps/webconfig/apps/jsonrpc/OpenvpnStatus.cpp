#include <filesystem>
#include <mutex>
#include <string>
#include <system_error>

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/jsonrpc/CommandOutputs.h"
#include "WebApps/webconfig/apps/jsonrpc/Duration.h"
#include "WebApps/webconfig/util/Certificates.h"
#include "WebApps/webconfig/util/DaemonQuery.h"
#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::apps {

namespace {

constexpr char defaultConfiguration[] = "/etc/openvpn/client.conf";

constexpr CommandOutput log[] = {
    {"logOutput", "tail -20 /tmp/openvpn.log 2>/dev/null"},
};

void AddConnection(cppcms::json::value &status) {
    if (auto const tunnel = util::AskOpenvpnd().answer) {
        status["connectionStatus"] = std::string(tunnel->status);
        status["isConnected"] = tunnel->connected != 0;
        status["currentStateTimeString"] = DurationText(tunnel->secondsInState);
    } else {
        for (char const *const key : {"connectionStatus", "isConnected", "currentStateTimeString"})
            status[key] = util::Translatable("Unknown");
    }
}

std::string OrMissing(std::string const &text) {
    return text.empty() ? util::Translatable("Missing") : text;
}

/// Adds where the configuration and the keys are; returns the file with the certificate to tell about.
std::string AddConfiguration(cppcms::json::value &status) {
    if (std::string uploaded = util::Prm::GetString("net/openvpn/client_ovpn");
        !uploaded.empty() && util::FileExists(uploaded)) {
        status["configurationFile"] = uploaded;
        for (char const *const key : {"caCertificate", "clientCertificate", "clientKey"})
            status[key] = "Embedded in " + uploaded;
        return uploaded;
    }
    std::string authority = util::Prm::GetString("net/openvpn/ca_crt");
    status["configurationFile"] =
        util::FileExists(defaultConfiguration) ? defaultConfiguration : util::Translatable("Missing");
    status["caCertificate"] = OrMissing(authority);
    status["clientCertificate"] = OrMissing(util::Prm::GetString("net/openvpn/client_crt"));
    status["clientKey"] = OrMissing(util::Prm::GetString("net/openvpn/client_key"));
    return authority;
}

/// Tells a file from what was at its path before.
std::string VersionOf(std::string const &path) {
    std::error_code none;
    auto const changed = std::filesystem::last_write_time(path, none).time_since_epoch().count();
    return path + ' ' + std::to_string(changed) + ' ' + std::to_string(util::FileSize(path));
}

/// Inspects a file in which there was no certificate only when it has changed: each time leaves a line in the
/// log, and this is asked once a second.
void GetDetails(std::string const &file, std::string &issuer, std::string &subject) {
    static std::mutex guard;
    static std::string withoutCertificate;
    std::lock_guard const lock(guard);
    std::string const version = VersionOf(file);
    if (version != withoutCertificate)
        withoutCertificate = util::GetCertificateDetails(file, issuer, subject) ? "" : version;
}

/// Who signed the certificate, which is the server's side, and whom it is for.
void AddNames(cppcms::json::value &status, std::string const &certificateFile) {
    std::string issuer;
    std::string subject;
    GetDetails(certificateFile, issuer, subject);
    status["server"] = util::TextBetween(issuer, "CN=", "-,/");
    status["organization"] = util::TextBetween(issuer, "O=", ",/");
    status["organizationalUnit"] = util::TextBetween(issuer, "OU=", ",/");
    status["client"] = util::TextBetween(subject, "CN=", ",/");
}

}  // namespace

cppcms::json::value JsonRpc::OpenvpnStatus() {
    cppcms::json::value status;
    AddConnection(status);
    AddNames(status, AddConfiguration(status));
    AddOutputs(status, log);
    return status;
}

}  // namespace webconfig::apps
