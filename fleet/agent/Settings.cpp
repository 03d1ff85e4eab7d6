#include "fleet/agent/Settings.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "fleet/Messages.h"

namespace fleet::agent {

namespace {

namespace json = cppcms::json;

constexpr char room[] = "webconfig.fleet";
constexpr int mqttPort = 1883;
constexpr int mqttsPort = 8883;
constexpr int leastHealth = 10;  // seconds

[[noreturn]] void Refuse(std::string const &member, std::string const &what) {
    throw std::runtime_error(std::string(room) + '.' + member + ": " + what);
}

template <typename T>
void Read(json::value const &fleet, char const *member, T &value) {
    try {
        if (!fleet.find(member).is_undefined())
            value = fleet.get<T>(member);
    } catch (std::bad_cast const &) {
        Refuse(member, std::is_same_v<T, std::string> ? "no text" : "no whole number");
    }
}

/// mqtt://HOST[:PORT] or mqtts://HOST[:PORT]; an IPv6 address has brackets.
void ReadBroker(std::string const &url, Settings &settings) {
    std::size_t const mark = url.find("://");
    std::string const scheme = url.substr(0, mark);
    if (mark == std::string::npos || (scheme != "mqtt" && scheme != "mqtts"))
        Refuse("broker", "not mqtt://HOST or mqtts://HOST: " + url);
    settings.tls = scheme == "mqtts";
    settings.port = settings.tls ? mqttsPort : mqttPort;
    std::string const place = url.substr(mark + 3);
    bool const brackets = place.starts_with('[');
    std::size_t const end = brackets ? place.find(']') : place.find(':');
    settings.host = place.substr(brackets ? 1 : 0, end - (brackets ? 1 : 0));
    std::string const rest = end == std::string::npos ? "" : place.substr(end + (brackets ? 1 : 0));
    if (settings.host.empty() || settings.host.find_first_of("/@ ") != std::string::npos ||
        (brackets && end == std::string::npos))
        Refuse("broker", "no host: " + url);
    if (rest.empty())
        return;
    auto const [stop, error] = std::from_chars(rest.data() + 1, rest.data() + rest.size(), settings.port);
    if (rest[0] != ':' || error != std::errc() || stop != rest.data() + rest.size() || settings.port < 1 ||
        settings.port > 65535)
        Refuse("broker", "no port: " + url);
}

/// A file that is there and can be read; a \a secret one by nobody but root and its owner, who is this user.
void CheckFile(char const *member, std::string const &path, bool secret) {
    struct stat info {};
    if (path.empty())
        return;
    if (::stat(path.c_str(), &info) != 0 || ::access(path.c_str(), R_OK) != 0)
        Refuse(member, path + ": " + std::strerror(errno));
    if (!S_ISREG(info.st_mode))
        Refuse(member, path + ": not a file");
    if (secret &&
        ((info.st_mode & (S_IRWXG | S_IRWXO)) != 0 || (info.st_uid != 0 && info.st_uid != ::geteuid())))
        Refuse(member, path + ": others may read it, or own it; chown root and chmod 600");
}

}  // namespace

bool IsAskedFor(json::value const &configuration) {
    return !configuration.find(std::string(room) + ".broker").is_undefined();
}

Settings ReadSettings(json::value const &configuration) {
    json::value const &fleet = configuration.find(room);
    Settings settings;
    std::string url;
    std::string passwordFile;
    int health = static_cast<int>(settings.health.count());
    Read(fleet, "broker", url);
    Read(fleet, "id", settings.id);
    Read(fleet, "ca", settings.ca);
    Read(fleet, "certificate", settings.certificate);
    Read(fleet, "key", settings.key);
    Read(fleet, "user", settings.user);
    Read(fleet, "password_file", passwordFile);
    Read(fleet, "health", health);
    Read(fleet, "file", settings.file);
    Read(fleet, "socket", settings.service.socket);
    ReadBroker(url, settings);
    if (!configuration.get("webconfig.api", false) || configuration.get("webconfig.history.file", "").empty())
        Refuse("broker", "needs webconfig.api and webconfig.history.file");
    if (!settings.id.empty() && !IsId(settings.id))
        Refuse("id", "not 1 to 64 letters, digits, '-', '_' and '.'");
    if (health < leastHealth)
        Refuse("health", "less than " + std::to_string(leastHealth) + " seconds");
    settings.health = std::chrono::seconds(health);
    if (!settings.tls && !(settings.ca + settings.certificate + settings.key).empty())
        Refuse("broker", "certificates need mqtts://");
    if (settings.certificate.empty() != settings.key.empty())
        Refuse("certificate", "a certificate needs its key, and a key its certificate");
    CheckFile("ca", settings.ca, false);
    CheckFile("certificate", settings.certificate, false);
    CheckFile("key", settings.key, true);
    CheckFile("password_file", passwordFile, true);
    if (!passwordFile.empty()) {
        std::ifstream file(passwordFile);
        std::getline(file, settings.password);
    }
    settings.service.path = '/' + configuration.get("webconfig.root.async", "status") + '/' +
                            configuration.get("webconfig.root.rpc", "rpc");
    return settings;
}

std::string IdOf(std::string const &serial, std::string const &host) {
    for (auto const &name : {serial, host}) {
        if (IsId(name))
            return name;
    }
    Refuse("id", "is needed: neither the serial number nor the host's name can be one");
}

}  // namespace fleet::agent
