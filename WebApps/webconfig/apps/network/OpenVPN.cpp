#include "WebApps/webconfig/data/OpenVPN.h"

#include <cppcms/http_file.h>
#include <cppcms/json.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/network/CurlLibrary.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Network";

constexpr char enabledKey[] = "net/openvpn/enabled";
// Read with a leading slash, unlike written: kept.
constexpr char enabledKeyToRead[] = "/net/openvpn/enabled";
constexpr char fileKey[] = "net/openvpn/client_ovpn";
constexpr unsigned fileMode = 0666;

constexpr char downloadFolder[] = "/tmp/";
constexpr char installFolder[] = "/etc/openvpn";
constexpr char fallbackFile[] = "/etc/openvpn/client.conf";

constexpr std::uintmax_t minFileSize = 1024;  // bytes
constexpr std::size_t maxFileName = 127;      // bytes

// A provisioning server must neither hold a worker for long nor fill its memory.
constexpr long connectSeconds = 10;
constexpr long transferSeconds = 30;
constexpr long maxRedirects = 5;
constexpr std::streamoff maxAnswer = 1'048'576;  // bytes
constexpr char noCommunication[] = "Failed to communicate with server.";
constexpr char badJson[] = "Unexpected JSON response.";

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
    return util::FileExists(fallbackFile) ? BaseName(fallbackFile) : "None";
}

/// The message for an installation that failed with \a error, which may be empty.
data::Message Failure(std::string const &error) {
    return error.empty() ? data::Message::SaveError() : data::Message::Error(error);
}

bool SaveText(std::string const &path, std::string const &text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return !file.fail();
}

}  // namespace

void Network::OpenVPN() {
    data::OpenVPN content(settings().get("webconfig.openvpn.provisioning_server", ""), util::DeviceName());
    Prepare(content);
    content.title = "OpenVPN Configuration";
    content.status_url = StatusUrl();

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
    // Some browsers send the whole path.
    std::string const path = downloadFolder + BaseName(upload->filename());
    try {
        upload->save_to(path);
    } catch (std::exception const &problem) {
        WEBCONFIG_LOG(error, logTag) << "Failed to save " << path << ": " << problem.what();
        content.message = data::Message::SaveError();
        return;
    }
    std::string error;
    content.message = _OpenVPNUpdate(path, error) ? data::Message::SaveOK() : Failure(error);
}

void Network::_OpenVPNProvision(data::OpenVPN &content) {
    content.selected_tab = RemoteTab;
    forms::OpenVPNRemoteConfiguration &form = content.remote;
    if (!ValidateForm(form)) {
        content.message = data::Message::ValidationError();
        return;
    }
    auto const *const library = CurlLibrary::Load();
    std::unique_ptr<CURL, void (*)(CURL *)> const curl(library ? library->easyInit() : nullptr,
                                                       library ? library->easyCleanup : nullptr);
    if (!curl) {
        WEBCONFIG_LOG(error, logTag) << "Unable to create CURL handle";
        content.message = data::Message::Error(noCommunication);
        return;
    }
    constexpr bool tls = false;
    std::string const server = form.server.value();
    std::string error;

    cppcms::json::value request;
    request["token"] = form.oneTimeCode.value();
    cppcms::json::value registration = request;
    registration["device_id"] = form.deviceId.value();
    cppcms::json::value answer;
    if (!_PostQuery(curl.get(), server, "register_client", tls, registration, &answer, error)) {
        content.message = data::Message::Error(error);
        return;
    }
    auto const &configuration = answer.find("vpn_config");
    if (configuration.type() != cppcms::json::is_string) {
        WEBCONFIG_LOG(error, logTag) << "Unexpected JSON response - vpn_config missing";
        content.message = data::Message::Error(badJson);
        return;
    }
    std::string const path = downloadFolder + _GenerateCertFileName(answer);
    if (!SaveText(path, configuration.str())) {
        WEBCONFIG_LOG(error, logTag) << "Failed to save " << path << ": " << std::strerror(errno);
        content.message = data::Message::SaveError();
        return;
    }
    _PostQuery(curl.get(), server, "acknowledge_bootstrap", tls, request, nullptr, error);
    form.oneTimeCode.clear();
    content.message = _OpenVPNUpdate(path, error) ? data::Message::SaveOK() : Failure(error);
}

bool Network::_PostQuery(CURL *curl, std::string const &server, std::string const &endpoint, bool tls,
                         cppcms::json::value const &request, cppcms::json::value *answer,
                         std::string &error) {
    CurlLibrary const &library = *CurlLibrary::Load();  // there is a handle of it
    std::unique_ptr<curl_slist, decltype(library.slistFreeAll)> const headers(
        library.slistAppend(nullptr, "Content-Type: application/json"), library.slistFreeAll);
    std::string const body = request.save();
    std::string const url =
        (tls ? "https://" : "http://") + server + (server.ends_with('/') ? "" : "/") + endpoint;
    std::cout << "Sending <" << body << "> to url " << url << std::endl;

    std::stringstream received;
    library.easyReset(curl);
    library.easySetopt(curl, CURLOPT_URL, url.c_str());
    library.easySetopt(curl, CURLOPT_POSTFIELDS, body.c_str());
    library.easySetopt(curl, CURLOPT_HTTPHEADER, headers.get());
    library.easySetopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    library.easySetopt(curl, CURLOPT_MAXREDIRS, maxRedirects);
    library.easySetopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    library.easySetopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    library.easySetopt(curl, CURLOPT_CONNECTTIMEOUT, connectSeconds);
    library.easySetopt(curl, CURLOPT_TIMEOUT, transferSeconds);
    library.easySetopt(curl, CURLOPT_NOSIGNAL, 1L);
    library.easySetopt(curl, CURLOPT_WRITEFUNCTION, &_OpenVPNWriteDataCallback);
    library.easySetopt(curl, CURLOPT_WRITEDATA, static_cast<void *>(static_cast<std::ostream *>(&received)));
    if (tls) {
        library.easySetopt(curl, CURLOPT_SSL_VERIFYPEER, 0L);
        library.easySetopt(curl, CURLOPT_SSL_VERIFYHOST, 0L);
    }

    error.clear();
    if (CURLcode const result = library.easyPerform(curl); result != CURLE_OK) {
        WEBCONFIG_LOG(error, logTag) << "curl_easy_perform() failed: " << library.easyStrerror(result);
        error = noCommunication;
        return false;
    }
    long code = 0;
    if (CURLcode const result = library.easyGetinfo(curl, CURLINFO_RESPONSE_CODE, &code);
        result != CURLE_OK) {
        WEBCONFIG_LOG(error, logTag) << "curl_easy_getinfo() failed: " << library.easyStrerror(result);
        error = noCommunication;
        return false;
    }
    std::cout << "Response code was: " << code << std::endl;
    if (code < 200 || code > 202) {
        error = "Unexpected remote server response: " + std::to_string(code) + '.';
        return false;
    }
    if (answer && !answer->load(received, true)) {
        WEBCONFIG_LOG(error, logTag) << "Unexpected JSON response";
        error = badJson;
        return false;
    }
    return true;
}

/// Taking less than what was given makes curl give up.
std::size_t Network::_OpenVPNWriteDataCallback(char *data, std::size_t size, std::size_t count,
                                               void *stream) {
    auto &answer = *static_cast<std::ostream *>(stream);
    auto const bytes = static_cast<std::streamoff>(size * count);
    if (answer.tellp() + bytes > maxAnswer)
        return 0;
    answer.write(data, bytes);
    return size * count;
}

std::string Network::_GenerateCertFileName(cppcms::json::value const &answer) {
    auto const text = [&answer](char const *name) {
        return util::StripChars(answer.get(name, ""), "\\/:?\"<>|'");
    };
    std::string name = text("client_full_name");
    std::string const organisation = text("organisation_name");
    bool valid = !name.empty();
    if (!organisation.empty())
        name += '(' + organisation + ')';
    valid = valid && name.size() <= maxFileName && name != "." && name != ".." &&
            name.find('\0') == std::string::npos;
    if (!valid) {
        WEBCONFIG_LOG(error, logTag)
            << "Failed to generate a valid filename from remote response, using client.ovpn";
        return "client.ovpn";
    }
    return name;
}

bool Network::_OpenVPNUpdate(std::string const &path, std::string &error) {
    error.clear();
    if (auto const size = util::FileSize(path); size < minFileSize) {
        WEBCONFIG_LOG(error, logTag) << "File size of " << size
                                     << " bytes is too small to be a configuration file";
        error = "File is too small to be a configuration file";
        return false;
    }
    std::string const destination = std::string(installFolder) + '/' + BaseName(path);
    std::cout << "Renaming \"" << path << "\" to \"" << destination << '"' << std::endl;
    if (!util::MoveFile(path, destination)) {
        int const number = errno;
        WEBCONFIG_LOG(error, logTag) << "Failed to replace config file: " << std::strerror(number) << '['
                                     << number << ']';
        return false;
    }
    if (!util::Prm::AddFile(fileKey, destination, fileMode)) {
        WEBCONFIG_LOG(error, logTag) << "Failed to update PRM";
        return false;
    }
    util::Prm::Set(fileKey, destination);
    return true;
}

}  // namespace webconfig::apps
