#include "WebApps/webconfig/util/ProvisioningClient.h"

#include <cppcms/json.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <utility>

#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/CurlLibrary.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/ProvisioningClient";

// A server must not fill the memory of a worker either.
constexpr std::streamoff maxAnswer = 1'048'576;  // bytes
constexpr long maxRedirects = 5;
constexpr char protocols[] = "http,https";
constexpr char tls[] = "https://";

constexpr std::size_t maxFileName = 127;  // bytes

constexpr char const *noCommunication = Translatable("Failed to communicate with server.");
constexpr char const *badJson = Translatable("Unexpected JSON response.");

/// What curl calls with what it received. Taking less than what was given makes it give up.
std::size_t Receive(char *data, std::size_t size, std::size_t count, void *stream) {
    auto &answer = *static_cast<std::ostream *>(stream);
    auto const bytes = static_cast<std::streamoff>(size * count);
    if (answer.tellp() + bytes > maxAnswer)
        return 0;
    answer.write(data, bytes);
    return size * count;
}

/// What curl calls again and again while it waits. Something else than 0 makes it give up.
int HasToEnd(void * /*unused*/, curl_off_t /*toCome*/, curl_off_t /*come*/, curl_off_t /*toGo*/,
             curl_off_t /*gone*/) {
    return AreCommandsEnding() ? 1 : 0;
}

std::string GenerateCertFileName(cppcms::json::value const &answer) {
    auto const text = [&answer](char const *name) { return StripChars(answer.get(name, ""), "\\/:?\"<>|'"); };
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

}  // namespace

std::optional<ProvisioningClient::Configuration> ProvisioningClient::Register(std::string const &deviceId) {
    cppcms::json::value request;
    request["token"] = oneTimeCode_;
    request["device_id"] = deviceId;
    cppcms::json::value answer;
    if (!PostQuery("register_client", request, &answer))
        return {};
    auto const &text = answer.find("vpn_config");
    if (text.type() != cppcms::json::is_string) {
        WEBCONFIG_LOG(error, logTag) << "Unexpected JSON response - vpn_config missing";
        Fail(badJson);
        return {};
    }
    return Configuration{GenerateCertFileName(answer), text.str()};
}

void ProvisioningClient::Acknowledge() {
    cppcms::json::value request;
    request["token"] = oneTimeCode_;
    PostQuery("acknowledge_bootstrap", request, nullptr);
}

bool ProvisioningClient::PostQuery(std::string const &endpoint, cppcms::json::value const &request,
                                   cppcms::json::value *answer) {
    auto const *const library = CurlLibrary::Load();
    std::unique_ptr<CURL, void (*)(CURL *)> const curl(library ? library->curl_easy_init() : nullptr,
                                                       library ? library->curl_easy_cleanup : nullptr);
    if (!curl) {
        WEBCONFIG_LOG(error, logTag) << "Unable to create CURL handle";
        return Fail(noCommunication);
    }
    std::unique_ptr<curl_slist, decltype(library->curl_slist_free_all)> const headers(
        library->curl_slist_append(nullptr, "Content-Type: application/json"), library->curl_slist_free_all);
    std::string const body = request.save();
    bool const encrypted = server_.starts_with(tls);
    std::string const url =
        (encrypted ? "" : "http://") + server_ + (server_.ends_with('/') ? "" : "/") + endpoint;
    std::cout << "Sending <" << (AreSecretsHiddenFromCommands() ? endpoint : body) << "> to url " << url
              << std::endl;

    std::stringstream received;
    auto const set = [&](CURLoption option, auto value) {
        library->curl_easy_setopt(curl.get(), option, value);
    };
    set(CURLOPT_URL, url.c_str());
    set(CURLOPT_POSTFIELDS, body.c_str());
    set(CURLOPT_HTTPHEADER, headers.get());
    // A refusal before the body is read would be a broken stream in HTTP/2, not its status.
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, maxRedirects);
    // What has begun encrypted stays so; libcurl verifies the server by itself.
    for (auto const option : {CURLOPT_PROTOCOLS_STR, CURLOPT_REDIR_PROTOCOLS_STR})
        set(option, encrypted ? "https" : protocols);
    set(CURLOPT_CONNECTTIMEOUT, limits_.connect);
    set(CURLOPT_TIMEOUT, limits_.transfer);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_NOPROGRESS, 0L);
    set(CURLOPT_XFERINFOFUNCTION, &HasToEnd);
    set(CURLOPT_WRITEFUNCTION, &Receive);
    set(CURLOPT_WRITEDATA, static_cast<void *>(static_cast<std::ostream *>(&received)));

    if (CURLcode const result = library->curl_easy_perform(curl.get()); result != CURLE_OK) {
        WEBCONFIG_LOG(error, logTag) << "curl_easy_perform() failed: " << library->curl_easy_strerror(result);
        return Fail(noCommunication);
    }
    long code = 0;
    if (CURLcode const result = library->curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &code);
        result != CURLE_OK) {
        WEBCONFIG_LOG(error, logTag) << "curl_easy_getinfo() failed: " << library->curl_easy_strerror(result);
        return Fail(noCommunication);
    }
    std::cout << "Response code was: " << code << std::endl;
    if (code < 200 || code > 202)
        return Fail(Translate("Unexpected remote server response: {1}.", code));
    if (answer && !answer->load(received, true)) {
        WEBCONFIG_LOG(error, logTag) << "Unexpected JSON response";
        return Fail(badJson);
    }
    return true;
}

bool ProvisioningClient::Fail(std::string error) {
    error_ = std::move(error);
    return false;
}

}  // namespace webconfig::util
