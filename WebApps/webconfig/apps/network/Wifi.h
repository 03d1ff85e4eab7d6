#pragma once

#include <cppcms/form.h>

#include <optional>
#include <string>

#include "WebApps/webconfig/data/Message.h"
#include "WebApps/webconfig/settings/Catalogue.h"

/// What the access point and the WLAN page have in common.
namespace webconfig::apps::wifi {

inline constexpr char const *countryKey = settings::Key("net/wifi/country");
inline constexpr char const *clientEnabledKey = settings::Key("net/wifi/client/enabled");

/// What is stored about a network.
struct Credentials {
    std::string ssid;
    std::string key;
};

/// The key that protects \a ssid. An empty \a passPhrase keeps the key of the same network. None where
/// there is no such key, or \a passPhrase makes none.
std::optional<std::string> Key(Credentials const &stored, std::string const &ssid,
                               std::string const &passPhrase);

/// Marks an input whose value cannot be taken.
void Refuse(cppcms::widgets::base_widget &widget);

/// Whether the module's regulatory domain leaves no choice of the country.
bool IsCountryLocked();

/// Applies the settings with the device's script, whose \a function is "wifi_ap" or "wifi_client". The page
/// message: saved, or that \a what could not be configured (which is logged).
data::Message Apply(std::string const &function, std::string const &what);

}  // namespace webconfig::apps::wifi
