#include "WebApps/webconfig/data/OpenVPN.h"

#include <cppcms/http_file.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/ProvisioningClient.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"
#include "WebApps/webconfig/util/VpnConfiguration.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Network";

constexpr char const *enabledKey = settings::Key("net/openvpn/enabled");
// Read with a leading slash, unlike written: for the store both are one key.
constexpr char enabledKeyToRead[] = "/net/openvpn/enabled";
constexpr char const *fileKey = settings::Key("net/openvpn/client_ovpn");
constexpr unsigned fileMode = 0666;

constexpr char installFolder[] = "/etc/openvpn";
constexpr char fallbackFile[] = "/etc/openvpn/client.conf";

constexpr std::uintmax_t minFileSize = 1024;  // bytes

/// The index of each form's tab.
enum Tab : unsigned { CommonTab = 0, FileTab = 1, RemoteTab = 2 };

/// What follows the last slash, of either kind.
std::string BaseName(std::string const &path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

std::string CurrentConfiguration() {
    std::string const file = util::Prm::GetString(fileKey);
    if (util::FileExists(file))
        return BaseName(file);
    return util::FileExists(fallbackFile) ? BaseName(fallbackFile) : util::Translate("None");
}

/// The message for an installation that failed with \a error, which may be empty.
data::Message Failure(std::string const &error) {
    return error.empty() ? data::Message::SaveError() : data::Message::Error(error);
}

/// False, with a log line and the text for the page in \a error, for what can be no configuration.
bool IsLargeEnough(std::uintmax_t size, std::string &error) {
    if (size >= minFileSize)
        return true;
    WEBCONFIG_LOG(error, logTag) << "File size of " << size
                                 << " bytes is too small to be a configuration file";
    error = util::Translate("File is too small to be a configuration file");
    return false;
}

/// The same for what is not to be trusted, where the policy demands it.
bool IsHarmless(std::string const &path, std::string &error) {
    if (!security::ThePolicy().refuse_vpn_scripts)
        return true;
    auto const text = util::ReadTrusted(path, util::FileSize(path));
    auto const harm =
        text ? util::HarmInVpnConfiguration(*text) : util::Bilingual("The configuration cannot be read");
    if (!harm.empty())
        WEBCONFIG_LOG(error, logTag) << harm.english;
    error = harm.shown;
    return harm.empty();
}

}  // namespace

void Network::OpenVPN() {
    data::OpenVPN content(settings().get("webconfig.openvpn.provisioning_server", ""), util::DeviceName());
    Prepare(content);
    content.title = util::Translate("OpenVPN Configuration");

    if (HttpPost()) {
        std::string const action = HttpPost("submit");
        if (action == "Save")
            _OpenVPNSave(content);
        else if (action == "Upload")
            _OpenVPNUpload(content);
        else if (action == "Submit")
            _OpenVPNProvision(content);
        else
            WEBCONFIG_LOG(error, logTag) << "Unknown submit received";
    }

    bool const enabled = util::IsOn(enabledKeyToRead);
    content.common.enabled.value(enabled);
    if (!enabled) {
        content.file.Disable();
        content.remote.Disable();
    }
    content.configuration_name = CurrentConfiguration();
    render("OpenVPN", content);
}

void Network::_OpenVPNSave(data::OpenVPN &content) {
    content.selected_tab = CommonTab;
    if (ValidateForm(content.common))
        ParameterWriter().SetSwitch(enabledKey, content.common.enabled.value());
    else
        content.message = data::Message::ValidationError();
}

void Network::_OpenVPNUpload(data::OpenVPN &content) {
    content.selected_tab = FileTab;
    if (!ValidateForm(content.file)) {
        content.message = data::Message::ValidationError();
        return;
    }
    auto const upload = content.file.file.value();
    if (upload->mime() != "application/octet-stream" && upload->mime() != "text/plain") {
        WEBCONFIG_LOG(error, logTag) << "Unrecognized openvpn file MIME type " << upload->mime();
        content.message = data::Message::Error("Unrecognized file type");
        return;
    }
    util::PrivateFolder const folder;
    // Some browsers send the whole path.
    std::string const path = folder / BaseName(upload->filename());
    std::string error;
    bool const installed = util::SaveUpload(*upload, path) && _OpenVPNUpdate(path, error);
    content.message = installed ? data::Message::SaveOK() : Failure(error);
}

void Network::_OpenVPNProvision(data::OpenVPN &content) {
    content.selected_tab = RemoteTab;
    forms::OpenVPNRemoteConfiguration &form = content.remote;
    if (!ValidateForm(form)) {
        content.message = data::Message::ValidationError();
        return;
    }
    util::ProvisioningClient client(form.server.value(), form.oneTimeCode.value());
    auto const configuration = client.Register(form.deviceId.value());
    if (!configuration) {
        content.message = data::Message::Error(client.Error());
        return;
    }
    std::string error;
    bool const largeEnough = IsLargeEnough(configuration->text.size(), error);
    util::PrivateFolder const folder;
    std::string const path = folder / configuration->fileName;
    if (largeEnough && !util::WritePrivately(path, configuration->text)) {
        WEBCONFIG_LOG(error, logTag) << "Failed to save " << path << ": " << std::strerror(errno);
        content.message = data::Message::SaveError();
        return;
    }
    client.Acknowledge();
    form.oneTimeCode.clear();
    bool const installed = largeEnough && _OpenVPNUpdate(path, error);
    content.message = installed ? data::Message::SaveOK() : Failure(error);
}

bool Network::_OpenVPNUpdate(std::string const &path, std::string &error) {
    error.clear();
    if (!IsLargeEnough(util::FileSize(path), error) || !IsHarmless(path, error))
        return false;
    std::string const destination = std::string(installFolder) + '/' + BaseName(path);
    bool const replaces = util::FileExists(destination);
    std::cout << "Renaming \"" << path << "\" to \"" << destination << '"' << std::endl;
    if (!util::MoveFile(path, destination)) {
        int const number = errno;
        WEBCONFIG_LOG(error, logTag) << "Failed to replace config file: " << std::strerror(number) << '['
                                     << number << ']';
        return false;
    }
    if (!util::Prm::AddFile(fileKey, destination, fileMode)) {
        WEBCONFIG_LOG(error, logTag) << "Failed to update PRM";
        if (!replaces)
            std::remove(destination.c_str());
        return false;
    }
    util::Prm::Set(fileKey, destination);
    return true;
}

}  // namespace webconfig::apps
