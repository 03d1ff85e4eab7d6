#include "fleet/console/Settings.h"

#include "fleet/Messages.h"

namespace fleet::console {

namespace {

constexpr int mostDevices = 1000000;
constexpr int mostDays = 36500;

}  // namespace

Settings ReadSettings(cppcms::json::value const &configuration) {
    SettingsReader const reader(configuration, "fleet");
    Settings settings;
    reader.Read("file", settings.file);
    reader.Read("group", settings.group);
    reader.Read("root", settings.root);
    reader.Read("most", settings.most);
    reader.Read("keep", settings.keep);
    settings.broker = ReadBroker(reader);
    if (settings.file.empty())
        reader.Refuse("file", "no file");
    if (!settings.group.empty() && !IsId(settings.group))
        reader.Refuse("group", "not 1 to 64 letters, digits, '-', '_' and '.'");
    if (!IsId(settings.root))
        reader.Refuse("root", "not 1 to 64 letters, digits, '-', '_' and '.'");
    if (settings.most < 1 || settings.most > mostDevices)
        reader.Refuse("most", "not 1 to " + std::to_string(mostDevices) + " devices");
    if (settings.keep < 1 || settings.keep > mostDays)
        reader.Refuse("keep", "not 1 to " + std::to_string(mostDays) + " days");
    return settings;
}

}  // namespace fleet::console
