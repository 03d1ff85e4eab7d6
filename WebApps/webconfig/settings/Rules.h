#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

#include "WebApps/webconfig/settings/Catalogue.h"

/// Which values settings may be given, beyond the limits of the table: what forms and machines' calls have
/// in common. What is wrong is said in a text for people; an empty one says that nothing is.
namespace webconfig::settings {

/// What an IPv4 address looks like. A leading zero is let through in two-digit numbers.
inline constexpr char addressExpression[] =
    "^(([0-9]|[0-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])\\.){3}"
    "([0-9]|[0-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])$";

/// The netmask of a network's prefix.
std::string DottedNetmask(unsigned prefix);

/// Whether the LAN needs an address, a netmask and a gateway of its own in this mode.
bool NeedsAddress(std::string const &addressMode);

/// Whether the Wi-Fi module may be used in this country. What is set may stay.
bool IsCountryOffered(std::string const &country);

/// How long the key of a protected network is at least: its hexadecimal digits.
inline constexpr std::size_t wifiKeyLength = 64;

/// Whether the module is one of those whose access point shares the client's radio.
bool IsLairdModule();
/// Whether an access point may have this channel in this country. What is \a stored may stay.
bool IsChannelOffered(std::string const &channel, std::string const &stored, std::string const &country);
/// Whether the channel, the client's, is none on which such a module can have an access point, too.
bool IsChannelBlocked(std::string const &channel);

/// Rules of port forwarding that the device's NAT script has built in, for TCP; of the same kind is the one
/// that the store says, where it has these keys.
struct PresetForward {
    unsigned port;
    char const *address;
    unsigned toPort;
};
inline constexpr PresetForward presetForwards[] = {
    {8002, "192.168.0.100", 8002}, {8003, "192.168.0.101", 8003}, {8800, "192.168.0.20", 80}};
inline constexpr char vncPortKey[] = "net/vnc/port";
inline constexpr char vncAddressKey[] = "net/vnc/ipaddr";

/// Whether \a key is one of the table's, with parts that the device has.
bool IsSetting(std::string const &key);
/// What is wrong with giving \a key this value, whatever other settings have; that of a secret is as people
/// know it. Empty may be what is needed only while other settings say so.
std::string WrongValue(std::string const &key, std::string const &value);
/// Whether that depends on what the device has, or has found: nobody else can tell.
bool IsForDeviceOnly(std::string const &key);
/// The same for a machine that wants \a key gone.
std::string WrongRemoval(std::string const &key);

/// The value that a key will have; empty where it will have none.
using Values = std::function<std::string(std::string const &key)>;
/// What is wrong with settings together when those of \a changed have new values: by their keys. Secrets are
/// as they are stored.
std::map<std::string, std::string> WrongTogether(std::set<std::string> const &changed, Values const &before,
                                                 Values const &after);

}  // namespace webconfig::settings
