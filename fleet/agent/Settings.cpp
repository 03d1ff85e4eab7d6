#include "fleet/agent/Settings.h"

#include <stdexcept>

#include "fleet/Messages.h"

namespace fleet::agent {

namespace {

namespace json = cppcms::json;

constexpr char room[] = "webconfig.fleet";
constexpr int leastHealth = 10;  // seconds

}  // namespace

bool IsAskedFor(json::value const &configuration) {
    return !configuration.find(std::string(room) + ".broker").is_undefined();
}

Settings ReadSettings(json::value const &configuration) {
    SettingsReader const reader(configuration, room);
    Settings settings;
    int health = static_cast<int>(settings.health.count());
    reader.Read("id", settings.id);
    reader.Read("health", health);
    reader.Read("file", settings.file);
    reader.Read("socket", settings.service.socket);
    settings.broker = ReadBroker(reader);
    if (!configuration.get("webconfig.api", false) || configuration.get("webconfig.history.file", "").empty())
        reader.Refuse("broker", "needs webconfig.api and webconfig.history.file");
    if (!settings.id.empty() && !IsId(settings.id))
        reader.Refuse("id", "not 1 to 64 letters, digits, '-', '_' and '.'");
    if (health < leastHealth)
        reader.Refuse("health", "less than " + std::to_string(leastHealth) + " seconds");
    settings.health = std::chrono::seconds(health);
    settings.service.path = '/' + configuration.get("webconfig.root.async", "status") + '/' +
                            configuration.get("webconfig.root.rpc", "rpc");
    return settings;
}

std::string IdOf(std::string const &serial, std::string const &host) {
    for (auto const &name : {serial, host}) {
        if (IsId(name))
            return name;
    }
    throw std::runtime_error(std::string(room) +
                             ".id: is needed: neither the serial number nor the host's name can be one");
}

}  // namespace fleet::agent
