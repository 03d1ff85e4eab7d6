#pragma once

#include <iterator>
#include <span>
#include <string>
#include <string_view>

#include "WebApps/webconfig/util/Translate.h"

/// The table of settings: all that the pages write to the parameter store. Handlers take their keys from it,
/// forms and machines' calls its limits; history and undo read what a setting is called and what puts it
/// into effect.
namespace webconfig::settings {

enum class Kind {
    Text,
    Name,     ///< a text whose limits count bytes, as those of a network do
    Choice,   ///< one of the choices
    Switch,   ///< "yes" or "no"
    Number,   ///< an integer between the limits
    Port,     ///< a number that the store has as a text
    Address,  ///< of IPv4
    Netmask,  ///< of IPv4, with a prefix between the limits
    Secret,   ///< never shown
    File,     ///< the path of a file that the store holds as well
};

/// What a select offers.
struct Choice {
    char const *label;
    char const *value;
};

/// Which values a setting takes.
struct Limits {
    long least = 0;  ///< of a number, or how many characters a text needs
    long most = 0;   ///< of a number, or how many characters a text may have: 0 for any number of them
    std::span<Choice const> choices = {};
    std::string_view parts = {};  ///< what the "*" of the key may be, in words; empty: anything
};

/// What puts settings into effect when they are stored (settings/Effects.h).
enum class Effect {
    None,     ///< whoever uses them reads them when they need them
    Restart,  ///< the next start of the device
    PortForwarding,
    RemoteAccess,
    TimeServers,
    SiteServer,
    AccessPoint,
    WifiClient,
    WebPassword,
    RootPassword,
};

struct Setting {
    std::string_view key;  ///< where a part of it is "*", any text without a slash may stand
    char const *label;     ///< what people call it, in English; "*" is the key's
    char const *page;      ///< the address of its page below the site's root
    Kind kind = Kind::Text;
    Effect effect = Effect::None;
    bool reach = false;  ///< whether it decides how the device is reached
    Limits limits = {};
};

using util::Translatable;

// The columns of the table below.
inline constexpr bool reach = true;
inline constexpr Choice languages[] = {{"English", ""}};
inline constexpr Choice addressModes[] = {{Translatable("Static"), "static"}, {Translatable("DHCP"), "dhcp"}};
inline constexpr Choice cellularFunctions[] = {{Translatable("Off"), "none"},
                                               {Translatable("On"), "gprs_dialup"}};
inline constexpr Choice radioTechnologies[] = {{Translatable("GSM/UMTS"), "GSM"}};
inline constexpr Choice carriers[] = {{Translatable("Verizon"), "verizon"},
                                      {Translatable("Sprint"), "sprint"},
                                      {Translatable("Custom"), "custom"}};
inline constexpr Choice wlanSecurities[] = {{Translatable("None"), "none"},
                                            {Translatable("WPA/WPA2 - Personal"), "wpa"},
                                            {Translatable("WPA/WPA2 - Enterprise"), "wpa_eap"}};
inline constexpr std::string_view simTypes = "kpn att";
/// In the place of parts: the five digits of a port.
inline constexpr std::string_view fiveDigits = "00000";

inline constexpr Limits required{.least = 1};
inline constexpr Limits deviceName{.least = 1, .most = 64};
inline constexpr Limits language{.choices = languages};
inline constexpr Limits addressMode{.least = 1, .choices = addressModes};
inline constexpr Limits netmask{.least = 8, .most = 30};    // networks that leave room for hosts
inline constexpr Limits speedMask{.least = 1, .most = 15};  // four speeds
inline constexpr Limits siteServer{.least = 1, .parts = "mesh cellular openvpn"};
inline constexpr Limits sitePort{.least = 1, .most = 65535, .parts = siteServer.parts};
inline constexpr Limits forwardedAddress{.least = 1, .parts = fiveDigits};
inline constexpr Limits forwardedPort{.least = 0, .most = 65535, .parts = fiveDigits};
inline constexpr Limits cellularFunction{.least = 1, .choices = cellularFunctions};
inline constexpr Limits radioTechnology{.least = 1, .choices = radioTechnologies};
inline constexpr Limits carrier{.choices = carriers};
inline constexpr Limits ofSim{.parts = simTypes};
inline constexpr Limits requiredOfSim{.least = 1, .parts = simTypes};
inline constexpr Limits timeServer{.parts = "0 1 2 3"};
inline constexpr Limits networkName{.least = 1, .most = 32};
inline constexpr Limits wlanSecurity{.least = 1, .choices = wlanSecurities};
inline constexpr Limits debugLevel{.least = 0, .most = 5};
inline constexpr Limits password{.least = 5};

inline constexpr char general[] = "/";
inline constexpr char ethernet[] = "/network/ethernet1";
inline constexpr char dns[] = "/network/dns_server";
inline constexpr char vpn[] = "/network/openvpn";
inline constexpr char site[] = "/network/orvane";
inline constexpr char forwarding[] = "/network/port_forwarding";
inline constexpr char cellular[] = "/network/cellular";
inline constexpr char time[] = "/network/ntp";
inline constexpr char accessPoint[] = "/network/access_point";
inline constexpr char wlan[] = "/network/wlan";
inline constexpr char advanced[] = "/settings/advanced";
inline constexpr char regulatory[] = "/regulatory/wifi";
inline constexpr char machines[] = "machines";  // no page, but who calls the methods of docs/api.md

inline constexpr Setting catalogue[] = {
    {"net/hostname", Translatable("Device name"), general, Kind::Text, Effect::None, !reach, deviceName},
    {"language", Translatable("Language"), general, Kind::Choice, Effect::None, !reach, language},

    {"net/lan_addr_mode", Translatable("Address mode"), ethernet, Kind::Choice, Effect::Restart, reach,
     addressMode},
    {"net/lan_ipaddr", Translatable("IP address"), ethernet, Kind::Address, Effect::Restart, reach, required},
    {"net/lan_netmask", Translatable("Netmask"), ethernet, Kind::Netmask, Effect::Restart, reach, netmask},
    {"net/lan_gateway", Translatable("Gateway"), ethernet, Kind::Address, Effect::Restart, reach, required},
    {"net/lan_advertise_speed", Translatable("Available speeds"), ethernet, Kind::Number, Effect::Restart,
     reach, speedMask},

    {"net/lan_dns1", Translatable("Preferred DNS server"), dns, Kind::Text, Effect::Restart},
    {"net/lan_dns2", Translatable("Alternate DNS server"), dns, Kind::Text, Effect::Restart},
    {"net/lan_dns_suffix", Translatable("DNS suffix"), dns, Kind::Text, Effect::Restart},
    {"net/lan_dns_is_append", Translatable("Append to system DNS configuration"), dns, Kind::Switch,
     Effect::Restart},

    {"net/openvpn/enabled", Translatable("OpenVPN enabled"), vpn, Kind::Switch, Effect::None, reach},
    {"net/openvpn/client_ovpn", Translatable("OpenVPN configuration"), vpn, Kind::File, Effect::None, reach},

    {"tern/enabled", Translatable("Orvane enabled"), site, Kind::Switch, Effect::SiteServer},
    {"tern/*/server", Translatable("Site server (*)"), site, Kind::Text, Effect::None, !reach, siteServer},
    {"tern/*/ipport", Translatable("Site server's port (*)"), site, Kind::Number, Effect::None, !reach,
     sitePort},

    {"net/portfwd/tcp/*/d_ip", Translatable("TCP * forwarded to"), forwarding, Kind::Address,
     Effect::PortForwarding, reach, forwardedAddress},
    {"net/portfwd/tcp/*/d_port", Translatable("TCP * forwarded to port"), forwarding, Kind::Port,
     Effect::PortForwarding, reach, forwardedPort},
    {"net/portfwd/udp/*/d_ip", Translatable("UDP * forwarded to"), forwarding, Kind::Address,
     Effect::PortForwarding, reach, forwardedAddress},
    {"net/portfwd/udp/*/d_port", Translatable("UDP * forwarded to port"), forwarding, Kind::Port,
     Effect::PortForwarding, reach, forwardedPort},

    {"serial/port/gprs/function", Translatable("Cellular port"), cellular, Kind::Choice, Effect::None, !reach,
     cellularFunction},
    {"cellular/radio_technology", Translatable("Radio technology"), cellular, Kind::Choice, Effect::None,
     !reach, radioTechnology},
    {"cellular/allow_roaming", Translatable("Allow roaming"), cellular, Kind::Switch},
    {"cellular/check_ppp_receiving", Translatable("Reset on no data reception"), cellular, Kind::Switch},
    {"cellular/use_sim_pin", Translatable("Use SIM PIN"), cellular, Kind::Switch},
    {"cellular/sim_pin", Translatable("SIM PIN"), cellular, Kind::Secret},
    {"gprs/apn", Translatable("APN"), cellular, Kind::Text, Effect::None, !reach, required},
    {"gprs/username", Translatable("GPRS user"), cellular},
    {"gprs/password", Translatable("GPRS password"), cellular, Kind::Secret},
    {"gprs/*/apn", Translatable("APN (*)"), cellular, Kind::Text, Effect::None, !reach, requiredOfSim},
    {"gprs/*/username", Translatable("GPRS user (*)"), cellular, Kind::Text, Effect::None, !reach, ofSim},
    {"gprs/*/password", Translatable("GPRS password (*)"), cellular, Kind::Secret, Effect::None, !reach,
     ofSim},
    {"gprs/dial_command", Translatable("GPRS dial command"), cellular, Kind::Text, Effect::None, !reach,
     required},
    {"gprs/network/mode", Translatable("Preferred network"), cellular, Kind::Text, Effect::None, !reach,
     required},
    {"gprs/network/refresh", Translatable("Search for networks"), cellular, Kind::Switch},
    {"cdma/current_carrier", Translatable("CDMA carrier"), cellular, Kind::Choice, Effect::None, !reach,
     carrier},
    {"cdma/username", Translatable("CDMA user"), cellular},
    {"cdma/password", Translatable("CDMA password"), cellular, Kind::Secret},
    {"cdma/dial_command", Translatable("CDMA dial command"), cellular, Kind::Text, Effect::None, !reach,
     required},
    {"cdma/custom/activation_command", Translatable("CDMA activation command"), cellular},
    {"cdma/custom/activation_response", Translatable("CDMA activation response"), cellular},
    {"cdma/force_activation", Translatable("Force CDMA activation"), cellular, Kind::Switch},

    {"system/ntpd/enabled", Translatable("Allow ntpd"), time, Kind::Switch, Effect::TimeServers},
    {"system/ntpd/servers/*", Translatable("Time server *"), time, Kind::Text, Effect::TimeServers, !reach,
     timeServer},

    {"net/wifi/country", Translatable("Wi-Fi country"), wlan, Kind::Text, Effect::WifiClient, !reach,
     required},
    {"net/wifi/ap/enabled", Translatable("Access point enabled"), accessPoint, Kind::Switch,
     Effect::AccessPoint, reach},
    {"net/wifi/ap/channel", Translatable("Access point's channel"), accessPoint, Kind::Text,
     Effect::AccessPoint, reach, required},
    {"net/wifi/ap/essid", Translatable("Access point's SSID"), accessPoint, Kind::Name, Effect::AccessPoint,
     reach, networkName},
    {"net/wifi/ap/wpa_psk", Translatable("Access point's key"), accessPoint, Kind::Secret,
     Effect::AccessPoint, reach},

    {"net/wifi/client/enabled", Translatable("WLAN enabled"), wlan, Kind::Switch, Effect::WifiClient, reach},
    {"net/wifi/client/essid", Translatable("WLAN SSID"), wlan, Kind::Name, Effect::WifiClient, reach,
     networkName},
    {"net/wifi/client/security", Translatable("WLAN security type"), wlan, Kind::Choice, Effect::WifiClient,
     reach, wlanSecurity},
    {"net/wifi/client/wpa_psk", Translatable("WLAN key"), wlan, Kind::Secret, Effect::WifiClient, reach},
    {"net/wifi/client/eap/identity", Translatable("WLAN user"), wlan, Kind::Text, Effect::WifiClient, reach},
    {"net/wifi/client/eap/password", Translatable("WLAN password"), wlan, Kind::Secret, Effect::WifiClient,
     reach},
    {"net/wifi/client/mobile_qx", Translatable("Allow Mobile QX connection"), wlan, Kind::Switch,
     Effect::WifiClient},

    {"system/remote/ssh_enabled", Translatable("Remote SSH"), advanced, Kind::Switch, Effect::RemoteAccess,
     reach},
    {"system/remote/web_enabled", Translatable("Remote web access"), advanced, Kind::Switch,
     Effect::RemoteAccess, reach},
    {"system/remote/icmp_enabled", Translatable("Remote ping"), advanced, Kind::Switch, Effect::RemoteAccess,
     reach},
    {"syslogd/persistent", Translatable("Persistent system log"), advanced, Kind::Switch, Effect::Restart},
    {"debug/seriald", Translatable("Cellular debug level"), advanced, Kind::Number, Effect::None, !reach,
     debugLevel},
    {"webman/digest/admin", Translatable("Web password"), advanced, Kind::Secret, Effect::WebPassword, reach,
     password},
    {"webman/digest256/admin", Translatable("Web password (SHA-256)"), advanced, Kind::Secret,
     Effect::WebPassword, reach, password},
    {"system/digest/root", Translatable("Root password"), advanced, Kind::Secret, Effect::RootPassword, reach,
     password},

    {"net/wifi/region_code", Translatable("Regulatory domain"), regulatory},
};

/// Whether \a key is \a pattern, with some text for each "*".
constexpr bool Matches(std::string_view pattern, std::string_view key) {
    while (!pattern.empty()) {
        if (pattern.front() == '*') {
            std::size_t const end = key.substr(0, key.find('/')).size();
            if (end == 0)
                return false;
            key.remove_prefix(end);
        } else if (key.empty() || key.front() != pattern.front()) {
            return false;
        } else {
            key.remove_prefix(1);
        }
        pattern.remove_prefix(1);
    }
    return key.empty();
}

/// The number of the row of \a key, which may begin with slashes as the store takes them; how many rows there
/// are where it is no setting.
constexpr std::size_t RowOf(std::string_view key) {
    while (key.starts_with('/'))
        key.remove_prefix(1);
    std::size_t row = 0;
    while (row < std::size(catalogue) && catalogue[row].key != key && !Matches(catalogue[row].key, key))
        ++row;
    return row;
}

/// The row of \a key; null where it is no setting.
constexpr Setting const *Find(std::string_view key) {
    std::size_t const row = RowOf(key);
    return row < std::size(catalogue) ? &catalogue[row] : nullptr;
}

/// The row of \a key, which does not compile where it is none of the table.
consteval Setting const &Row(std::string_view key) {
    if (RowOf(key) == std::size(catalogue))
        throw "the table of settings lacks this key";
    return catalogue[RowOf(key)];
}

/// \a key, which does not compile where it is none of the table.
consteval char const *Key(char const *key) {
    if (RowOf(key) == std::size(catalogue))
        throw "the table of settings lacks this key";
    return key;
}

/// A row of the table whose key has one "*", which does not compile where there is no such row.
class Pattern {
  public:
    consteval explicit Pattern(std::string_view key) : key_(key) {
        if (RowOf(key) == std::size(catalogue) || catalogue[RowOf(key)].key != key)
            throw "the table of settings lacks this key";
    }

    /// The key that has \a part in the place of the "*".
    std::string With(std::string_view part) const {
        return std::string(key_).replace(key_.find('*'), 1, part);
    }

  private:
    std::string_view key_;
};

/// What people call \a key, in English, or in the language at hand; the key itself where it is no setting.
std::string LabelOf(std::string const &key);
std::string ShownLabelOf(std::string const &key);

/// How a value of \a key is shown: "changed" or "none" for a secret, the name of a file, or the text.
std::string Shown(std::string const &key, std::string const &value);

}  // namespace webconfig::settings
