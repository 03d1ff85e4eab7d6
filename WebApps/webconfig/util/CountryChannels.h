#pragma once

#include <map>
#include <string>
#include <vector>

namespace webconfig::util {

/// By country code, the Wi-Fi channels allowed there: one character a channel, whose code is the channel's
/// number, in the order of the device's database.
using CountryChannels = std::map<std::string, std::string>;

/// The countries of the module's regulatory domain, or what the database has at its top where none is set.
/// Read once in the life of the process; empty, and tried again by the next call, where that fails (which
/// is logged). Any thread may call it.
CountryChannels const &getCountryChannels();

/// The country of the Wi-Fi settings: the one stored or, where the table does not have that, the table's
/// first. With an empty table, the one stored.
std::string WifiCountry();

/// The channels of a country as number, colon and centre frequency in MHz ("36:5180"); none for a country
/// that is not in the table.
std::vector<std::string> ChannelEntries(std::string const &country);

}  // namespace webconfig::util
