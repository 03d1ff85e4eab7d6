#include <curl/curl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "ctl/Status.h"
#include "ctl/Transport.h"

namespace ctl {

namespace {

constexpr long connectSeconds = 10;
constexpr std::size_t maxAnswer = 16 << 20;  // bytes

/// Asks on the terminal, which shows nothing of the answer; standard input may be the file of a command.
std::string AskPassword(std::string const &user) {
    std::unique_ptr<FILE, decltype(&std::fclose)> const terminal(std::fopen("/dev/tty", "r+"), std::fclose);
    termios before{};
    if (!terminal || ::tcgetattr(::fileno(terminal.get()), &before) != 0)
        throw Problem(Usage,
                      "No password: neither a file nor WEBCONFIG_PASSWORD has it, and nobody can be asked");
    termios silent = before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(::fileno(terminal.get()), TCSAFLUSH, &silent);
    std::fprintf(terminal.get(), "Password of %s: ", user.c_str());
    std::fflush(terminal.get());
    std::array<char, 256> line{};
    bool const read = std::fgets(line.data(), line.size(), terminal.get());
    ::tcsetattr(::fileno(terminal.get()), TCSAFLUSH, &before);
    std::fputc('\n', terminal.get());
    std::string const password = read ? line.data() : "";
    return password.substr(0, password.find('\n'));
}

std::string Password(Options const &options) {
    if (!options.passwordFile.empty()) {
        std::ifstream file(options.passwordFile);
        std::string password;
        if (!std::getline(file, password))
            throw Problem(Usage, "No password in " + options.passwordFile);
        return password;
    }
    char const *const variable = std::getenv("WEBCONFIG_PASSWORD");
    static std::string const password = variable ? variable : AskPassword(options.user);
    return password;
}

std::size_t Collect(char const *data, std::size_t size, std::size_t count, void *body) {
    auto &text = *static_cast<std::string *>(body);
    if (text.size() + size * count > maxAnswer)
        return 0;
    text.append(data, size * count);
    return size * count;
}

using Curl = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

void SetTrust(CURL *curl, Options const &options) {
    if (!options.authorities.empty())
        curl_easy_setopt(curl, CURLOPT_CAINFO, options.authorities.c_str());
    if (options.pin.empty())
        return;
    curl_easy_setopt(curl, CURLOPT_PINNEDPUBLICKEY, options.pin.c_str());
    if (options.authorities
            .empty()) {  // the key alone tells who it is, as that of a device's own certificate
        curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 0L);
        curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 0L);
    }
}

}  // namespace

Answer PostRemotely(Options const &options, std::string const &call) {
    Curl const curl(curl_easy_init(), curl_easy_cleanup);
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> const headers(
        curl_slist_append(nullptr, "Content-Type: application/json"), curl_slist_free_all);
    std::string const url = options.url + options.path;
    std::string const password = Password(options);
    Answer answer;
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "https");
    curl_easy_setopt(curl.get(), CURLOPT_HTTPAUTH, CURLAUTH_DIGEST);
    curl_easy_setopt(curl.get(), CURLOPT_USERNAME, options.user.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PASSWORD, password.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(call.size()));
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, call.data());
    curl_easy_setopt(curl.get(), CURLOPT_CONNECTTIMEOUT, connectSeconds);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, options.seconds);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, Collect);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer.body);
    SetTrust(curl.get(), options);
    if (CURLcode const result = curl_easy_perform(curl.get()); result != CURLE_OK)
        throw Problem(Unreachable, options.url + ": " + curl_easy_strerror(result));
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &answer.status);
    return answer;
}

}  // namespace ctl
