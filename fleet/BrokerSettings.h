#pragma once

#include <cppcms/json.h>

#include <string>
#include <typeinfo>

namespace fleet {

/// Members of one object of a configuration. All throw std::runtime_error with the name of what is wrong.
class SettingsReader {
  public:
    /// \a room is the object's path, "webconfig.fleet".
    SettingsReader(cppcms::json::value const &configuration, char const *room)
        : _fleet(configuration.find(room)), _room(room) {}

    /// Leaves \a value alone where there is no such member.
    template <typename T>
    void Read(char const *member, T &value) const {
        try {
            if (!_fleet.find(member).is_undefined())
                value = _fleet.get<T>(member);
        } catch (std::bad_cast const &) {
            Refuse(member, std::is_same_v<T, std::string> ? "no text" : "no whole number");
        }
    }
    [[noreturn]] void Refuse(std::string const &member, std::string const &what) const;

  private:
    cppcms::json::value const &_fleet;
    char const *const _room;
};

/// Where the broker is, and who comes: docs/fleet.md.
struct BrokerSettings {
    std::string host;
    int port = 0;
    bool tls = false;
    std::string ca;  ///< empty: the system's
    std::string certificate;
    std::string key;
    std::string user;
    std::string password;
};

/// "broker", "ca", "certificate", "key", "user" and "password_file"; the files are looked at.
BrokerSettings ReadBroker(SettingsReader const &reader);

}  // namespace fleet
