#include "fleet/BrokerSettings.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace fleet {

namespace {

constexpr int mqttPort = 1883;
constexpr int mqttsPort = 8883;

/// mqtt://HOST[:PORT] or mqtts://HOST[:PORT]; an IPv6 address has brackets.
void ReadUrl(SettingsReader const &reader, std::string const &url, BrokerSettings &settings) {
    std::size_t const mark = url.find("://");
    std::string const scheme = url.substr(0, mark);
    if (mark == std::string::npos || (scheme != "mqtt" && scheme != "mqtts"))
        reader.Refuse("broker", "not mqtt://HOST or mqtts://HOST: " + url);
    settings.tls = scheme == "mqtts";
    settings.port = settings.tls ? mqttsPort : mqttPort;
    std::string const place = url.substr(mark + 3);
    bool const brackets = place.starts_with('[');
    std::size_t const end = brackets ? place.find(']') : place.find(':');
    settings.host = place.substr(brackets ? 1 : 0, end - (brackets ? 1 : 0));
    std::string const rest = end == std::string::npos ? "" : place.substr(end + (brackets ? 1 : 0));
    if (settings.host.empty() || settings.host.find_first_of("/@ ") != std::string::npos ||
        (brackets && end == std::string::npos))
        reader.Refuse("broker", "no host: " + url);
    if (rest.empty())
        return;
    auto const [stop, error] = std::from_chars(rest.data() + 1, rest.data() + rest.size(), settings.port);
    if (rest[0] != ':' || error != std::errc() || stop != rest.data() + rest.size() || settings.port < 1 ||
        settings.port > 65535)
        reader.Refuse("broker", "no port: " + url);
}

/// A file that is there and can be read; a \a secret one by nobody but root and its owner, who is this user.
void CheckFile(SettingsReader const &reader, char const *member, std::string const &path, bool secret) {
    struct stat info {};
    if (path.empty())
        return;
    if (::stat(path.c_str(), &info) != 0 || ::access(path.c_str(), R_OK) != 0)
        reader.Refuse(member, path + ": " + std::strerror(errno));
    if (!S_ISREG(info.st_mode))
        reader.Refuse(member, path + ": not a file");
    if (secret &&
        ((info.st_mode & (S_IRWXG | S_IRWXO)) != 0 || (info.st_uid != 0 && info.st_uid != ::geteuid())))
        reader.Refuse(member, path + ": others may read it, or own it; chown root and chmod 600");
}

}  // namespace

void SettingsReader::Refuse(std::string const &member, std::string const &what) const {
    throw std::runtime_error(std::string(_room) + '.' + member + ": " + what);
}

BrokerSettings ReadBroker(SettingsReader const &reader) {
    BrokerSettings settings;
    std::string url;
    std::string passwordFile;
    reader.Read("broker", url);
    reader.Read("ca", settings.ca);
    reader.Read("certificate", settings.certificate);
    reader.Read("key", settings.key);
    reader.Read("user", settings.user);
    reader.Read("password_file", passwordFile);
    ReadUrl(reader, url, settings);
    if (!settings.tls && !(settings.ca + settings.certificate + settings.key).empty())
        reader.Refuse("broker", "certificates need mqtts://");
    if (settings.certificate.empty() != settings.key.empty())
        reader.Refuse("certificate", "a certificate needs its key, and a key its certificate");
    CheckFile(reader, "ca", settings.ca, false);
    CheckFile(reader, "certificate", settings.certificate, false);
    CheckFile(reader, "key", settings.key, true);
    CheckFile(reader, "password_file", passwordFile, true);
    if (!passwordFile.empty()) {
        std::ifstream file(passwordFile);
        std::getline(file, settings.password);
    }
    return settings;
}

}  // namespace fleet
