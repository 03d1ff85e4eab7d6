#include "WebApps/webconfig/util/CountryChannels.h"

#include <json/json.h>

#include <fstream>
#include <mutex>

#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/CountryChannels";
constexpr char database[] = "/etc/countryChannels";
constexpr char lairdDatabase[] = "/etc/countryChannelsLaird";
constexpr char band[] = "band1";

/// The member \a name of \a value; null where there is none.
Json::Value Member(Json::Value const &value, std::string const &name) {
    return value.isObject() ? value.get(name, Json::Value()) : Json::Value();
}

std::string Channels(Json::Value const &country) {
    std::string channels;
    for (Json::Value const &channel : Member(country, band)) {
        if (channel.isInt() && channel.asInt() > 0 && channel.asInt() <= 0xFF)
            channels += static_cast<char>(channel.asInt());
    }
    return channels;
}

Json::Value ReadDatabase() {
    std::ifstream file(Prm::GetString("net/wifi/vendor") == "laird" ? lairdDatabase : database);
    if (!file) {
        WEBCONFIG_LOG(error, logTag) << "Error: Cannot open countryChannels database for reading";
        return {};
    }
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    Json::Value root;
    std::string errors;
    if (!Json::parseFromStream(builder, file, &root, &errors)) {
        WEBCONFIG_LOG(error, logTag) << "Error: " << errors;
        return {};
    }
    return root;
}

CountryChannels ReadTable() {
    Json::Value const root = ReadDatabase();
    std::string const region = Prm::GetString("net/wifi/region_code");
    Json::Value const countries = region.empty() ? root : Member(root, region);
    CountryChannels table;
    if (countries.isObject()) {
        for (std::string const &country : countries.getMemberNames())
            table[country] = Channels(countries[country]);
    }
    return table;
}

unsigned Frequency(unsigned channel) {
    if (channel == 14)
        return 2484;
    return (channel < 30 ? 2407 : 5000) + 5 * channel;
}

}  // namespace

CountryChannels const &getCountryChannels() {
    static std::mutex guard;
    static CountryChannels table;
    static CountryChannels const none;

    std::lock_guard const lock(guard);
    if (table.empty())
        table = ReadTable();
    return table.empty() ? none : table;  // what callers hold never changes under them
}

std::string WifiCountry() {
    auto const &table = getCountryChannels();
    std::string const stored = Prm::GetString("net/wifi/country");
    return table.empty() || table.count(stored) ? stored : table.begin()->first;
}

std::vector<std::string> ChannelEntries(std::string const &country) {
    auto const &table = getCountryChannels();
    auto const found = table.find(country);
    std::vector<std::string> entries;
    for (unsigned char const channel : found == table.end() ? std::string() : found->second)
        entries.push_back(std::to_string(channel) + ':' + std::to_string(Frequency(channel)));
    return entries;
}

}  // namespace webconfig::util
