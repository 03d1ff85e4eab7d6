#include "WebApps/webconfig/settings/Rules.h"

#include <booster/regex.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>

#include "WebApps/webconfig/settings/Languages.h"
#include "WebApps/webconfig/util/CountryChannels.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Switch.h"

namespace webconfig::settings {

namespace {

constexpr char noSetting[] = "There is no such setting";
constexpr char isRequired[] = "This field is required";
constexpr char automaticChannel[] = "0:";
constexpr int last2GHzChannel = 35;

constexpr char automaticNetwork[] = "0";
constexpr char networkByName[] = "1,0,";

// Cross-field rules speak of these.
constexpr char const *modeKey = Key("net/lan_addr_mode");
constexpr char const *fixedAddressKeys[] = {Key("net/lan_ipaddr"), Key("net/lan_netmask"),
                                            Key("net/lan_gateway")};
constexpr char const *countryKey = Key("net/wifi/country");
constexpr char const *clientEnabledKey = Key("net/wifi/client/enabled");
constexpr char const *clientSsidKey = Key("net/wifi/client/essid");
constexpr char const *securityKey = Key("net/wifi/client/security");
constexpr char const *clientPskKey = Key("net/wifi/client/wpa_psk");
constexpr char const *identityKey = Key("net/wifi/client/eap/identity");
constexpr char const *eapPasswordKey = Key("net/wifi/client/eap/password");
constexpr char const *apEnabledKey = Key("net/wifi/ap/enabled");
constexpr char const *apSsidKey = Key("net/wifi/ap/essid");
constexpr char const *apPskKey = Key("net/wifi/ap/wpa_psk");
constexpr char const *apChannelKey = Key("net/wifi/ap/channel");
constexpr std::string_view forwardFolder = "net/portfwd/";

std::string Range(char const *what, long least, long most) {
    return std::string(what) + "; minimum " + std::to_string(least) + ", maximum " + std::to_string(most);
}

std::string WrongLength(Limits const &limits, long length) {
    if (limits.most > 0 && (length < limits.least || length > limits.most))
        return Range("Invalid length", limits.least, limits.most);
    if (length >= limits.least)
        return {};
    return limits.least == 1 ? isRequired : "Invalid length; minimum " + std::to_string(limits.least);
}

long Characters(std::string const &text) {
    return std::count_if(text.begin(), text.end(),
                         [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
}

std::string WrongNumber(Limits const &limits, std::string const &text) {
    long number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const whole = error == std::errc() && std::to_string(number) == text;
    if (whole && number >= limits.least && number <= limits.most)
        return {};
    return Range("Invalid range", limits.least, limits.most);
}

std::string WrongAddress(Limits const &limits, std::string const &text) {
    static booster::regex const address(addressExpression);
    bool const optional = limits.least == 0 && text.empty();
    return optional || booster::regex_match(text, address) ? "" : "Invalid IP address";
}

std::string WrongNetmask(Limits const &limits, std::string const &text) {
    for (long prefix = limits.least; prefix <= limits.most; ++prefix) {
        if (DottedNetmask(static_cast<unsigned>(prefix)) == text)
            return {};
    }
    return "Not the netmask of a prefix from " + std::to_string(limits.least) + " to " +
           std::to_string(limits.most);
}

std::string WrongChoice(Setting const &setting, std::string const &text) {
    if (setting.limits.least == 0 && text.empty())
        return {};
    std::string known;
    for (auto const &choice : ChoicesOf(setting)) {
        if (text == choice.value)
            return {};
        known += (known.empty() ? "" : ", ") + ('"' + std::string(choice.value) + '"');
    }
    return "None of " + known;
}

/// By what kind of setting it is.
std::string WrongForKind(Setting const &setting, std::string const &value) {
    switch (setting.kind) {
        case Kind::Switch:
            return value == util::SwitchText(true) || value == util::SwitchText(false) ? ""
                                                                                       : "Neither yes nor no";
        case Kind::Number:
        case Kind::Port:
            return WrongNumber(setting.limits, value);
        case Kind::Address:
            return WrongAddress(setting.limits, value);
        case Kind::Netmask:
            return WrongNetmask(setting.limits, value);
        case Kind::Choice:
            return WrongChoice(setting, value);
        case Kind::Name:
            return WrongLength(setting.limits, static_cast<long>(value.size()));
        case Kind::Text:
        case Kind::Secret:
            return WrongLength(setting.limits, Characters(value));
        case Kind::File:
            break;
    }
    return "A file is only taken by the page";
}

std::string WrongCountry(std::string const &country) {
    return IsCountryOffered(country) ? "" : "This country is not available";
}

/// A pass phrase, or the key that one makes.
std::string WrongKey(std::string const &text) {
    constexpr std::size_t shortest = 8;
    bool const isKey =
        text.size() == wifiKeyLength && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    bool const isPhrase = text.size() >= shortest && text.size() < wifiKeyLength;
    return text.empty() || isKey || isPhrase ? "" : "Neither 8 to 63 characters nor 64 hexadecimal digits";
}

/// The modem's list has the names in quotes.
std::string WrongNetwork(std::string const &mode) {
    std::string const list = util::Prm::GetString("gprs/network/operators");
    std::string const name = mode.starts_with(networkByName) ? mode.substr(sizeof networkByName - 1) : "";
    bool const quoted = name.size() > 2 && name.front() == '"' && name.find('"', 1) == name.size() - 1;
    if (mode == automaticNetwork || (quoted && list.find(name) != std::string::npos))
        return {};
    return "Neither 0 nor a network that the modem has found, such as 1,0,\"NAME\"";
}

std::string WrongAnyway(std::string const & /*value*/) {
    return "This is only set on its page";
}

/// What is needed only by what is on, or has an address of its own: rules for values together see to that.
constexpr char const *neededSometimes[] = {
    fixedAddressKeys[0], fixedAddressKeys[1], fixedAddressKeys[2], countryKey,
    clientSsidKey,       securityKey,         apSsidKey,           apChannelKey,
};

struct Special {
    char const *key;
    std::string (*wrong)(std::string const &value);
    bool readsDevice = false;
};
constexpr Special specials[] = {
    {countryKey, WrongCountry, true},
    {clientPskKey, WrongKey},
    {apPskKey, WrongKey},
    {Key("gprs/network/mode"), WrongNetwork, true},
    {Key("webman/digest256/admin"), WrongAnyway},  // comes with the other
    {Key("system/digest/root"), WrongAnyway},      // each hash of a password is another one
    {Key("net/wifi/region_code"), WrongAnyway},    // is one of the module, not of the store
};

/// The part of \a key that its row leaves open.
std::string PartOf(Setting const &setting, std::string const &key) {
    std::size_t const star = setting.key.find('*');
    return star == std::string_view::npos ? "" : key.substr(star, key.find('/', star) - star);
}

bool IsPart(Limits const &limits, std::string const &part) {
    if (limits.parts == fiveDigits)
        return part.size() == fiveDigits.size() &&
               part.find_first_not_of("0123456789") == std::string::npos &&
               util::LeadingNumber(part) <= static_cast<unsigned>(forwardedPort.most);
    bool const oneWord = part.find(' ') == std::string::npos;
    return limits.parts.empty() ||
           (oneWord && (' ' + std::string(limits.parts) + ' ').find(' ' + part + ' ') != std::string::npos);
}

/// What a request changes, and what it finds wrong.
struct Together {
    std::set<std::string> const &changed;
    Values const &before;
    Values const &after;
    std::map<std::string, std::string> wrong;

    bool IsChanged(std::string const &key) const { return changed.contains(key); }
    bool AnyBelow(std::string const &folder) const {
        auto const first = changed.lower_bound(folder);
        return first != changed.end() && first->starts_with(folder);
    }
    bool IsOn(char const *key) const { return after(key) == util::SwitchText(true); }
    void Check(char const *key) {
        std::string const value = after(key);
        if (std::string reason = value.empty() ? isRequired : WrongValue(key, value); !reason.empty())
            wrong[key] = std::move(reason);
    }
    void Need(char const *key, bool there) {
        if (!there)
            wrong[key] = isRequired;
    }
    /// The key of a protected network is made for its name.
    void CheckKey(char const *ssidKey, char const *pskKey) {
        Need(pskKey, after(pskKey).size() >= wifiKeyLength);
        if (IsChanged(ssidKey) && !IsChanged(pskKey))
            wrong[pskKey] = "Another network's name needs its key";
    }
};

void CheckAddress(Together &all) {
    bool const concerned =
        all.IsChanged(modeKey) || std::any_of(std::begin(fixedAddressKeys), std::end(fixedAddressKeys),
                                              [&all](char const *key) { return all.IsChanged(key); });
    if (!concerned || !NeedsAddress(all.after(modeKey)))
        return;
    for (char const *const key : fixedAddressKeys)
        all.Check(key);
}

void CheckClient(Together &all) {
    if (!all.IsOn(clientEnabledKey) || (!all.AnyBelow("net/wifi/client/") && !all.IsChanged(countryKey)))
        return;
    for (char const *const key : {clientSsidKey, countryKey, securityKey})
        all.Check(key);
    std::string const security = all.after(securityKey);
    if (security == "wpa") {
        all.CheckKey(clientSsidKey, clientPskKey);
        // A key that another kind of security has left may be that of another network.
        if (all.IsChanged(securityKey) && !all.IsChanged(clientPskKey))
            all.wrong[clientPskKey] = "This kind of security needs its key";
    } else if (security == "wpa_eap") {
        all.Need(identityKey, !all.after(identityKey).empty());
        all.Need(eapPasswordKey, !all.after(eapPasswordKey).empty());
    }
}

void CheckAccessPoint(Together &all) {
    if (!all.IsOn(apEnabledKey) || (!all.AnyBelow("net/wifi/ap/") && !all.IsChanged(countryKey)))
        return;
    for (char const *const key : {apSsidKey, countryKey})
        all.Check(key);
    all.CheckKey(apSsidKey, apPskKey);
    std::string const channel = all.after(apChannelKey);
    if (!IsChannelOffered(channel, all.before(apChannelKey), all.after(countryKey)))
        all.wrong[apChannelKey] = "This channel is not available in the country";
    if (IsLairdModule() && all.IsOn(clientEnabledKey) && IsChannelBlocked(channel))
        all.wrong[apEnabledKey] = "Failed. Cannot enable Laird AP when WLAN is on 5GHz";
}

void CheckForward(Together &all, std::string const &key) {
    std::string const folder = key.substr(0, key.rfind('/') + 1);
    bool const address = !all.after(folder + "d_ip").empty();
    bool const port = !all.after(folder + "d_port").empty();
    if (address != port)
        all.wrong[folder + (address ? "d_port" : "d_ip")] = "A rule needs an address and a port";
    if (!address || !folder.starts_with("net/portfwd/tcp/"))
        return;
    auto const source = util::LeadingNumber(folder.substr(sizeof "net/portfwd/tcp/" - 1));
    bool const preset = std::any_of(std::begin(presetForwards), std::end(presetForwards),
                                    [source](PresetForward const &rule) { return rule.port == source; });
    if (preset ||
        (util::Prm::Exists(vncPortKey) && static_cast<unsigned>(util::Prm::GetInt(vncPortKey)) == source))
        all.wrong[key] = "Preset rule exists with same protocol and source port";
}

}  // namespace

std::string DottedNetmask(unsigned prefix) {
    std::uint32_t const mask = ~std::uint32_t{0} << (32 - prefix);
    std::string dotted;
    for (int shift = 24; shift >= 0; shift -= 8)
        dotted += std::to_string(mask >> shift & 0xFF) + (shift ? "." : "");
    return dotted;
}

bool NeedsAddress(std::string const &addressMode) {
    return addressMode != "dhcp";
}

bool IsCountryOffered(std::string const &country) {
    return util::getCountryChannels().count(country) || country == util::WifiCountry();
}

bool IsLairdModule() {
    return util::Prm::GetString("net/wifi/vendor") == "laird";
}

bool IsChannelOffered(std::string const &channel, std::string const &stored, std::string const &country) {
    if (channel == stored || (channel == automaticChannel && !IsLairdModule()))
        return true;
    auto const entries = util::ChannelEntries(country);
    return std::find(entries.begin(), entries.end(), channel) != entries.end();
}

bool IsChannelBlocked(std::string const &channel) {
    return std::strtol(channel.c_str(), nullptr, 10) > last2GHzChannel;
}

bool IsSetting(std::string const &key) {
    Setting const *const setting = Find(key);
    return setting && !key.starts_with('/') && key.find('*') == std::string::npos &&
           IsPart(setting->limits, PartOf(*setting, key));
}

std::string WrongValue(std::string const &key, std::string const &value) {
    if (!IsSetting(key))
        return noSetting;
    if (util::HasControls(value))
        return "Line ends and control characters are not taken";
    if (value.empty() &&
        std::find(std::begin(neededSometimes), std::end(neededSometimes), key) != std::end(neededSometimes))
        return {};
    for (auto const &special : specials) {
        if (std::string reason = key == special.key ? special.wrong(value) : ""; !reason.empty())
            return reason;
    }
    return WrongForKind(*Find(key), value);
}

bool IsForDeviceOnly(std::string const &key) {
    return std::any_of(std::begin(specials), std::end(specials),
                       [&key](Special const &special) { return special.readsDevice && key == special.key; });
}

std::string WrongRemoval(std::string const &key) {
    if (!IsSetting(key))
        return noSetting;
    if (key.starts_with(forwardFolder))
        return {};
    return WrongValue(key, Find(key)->kind == Kind::Switch ? util::SwitchText(false) : "");
}

std::map<std::string, std::string> WrongTogether(std::set<std::string> const &changed, Values const &before,
                                                 Values const &after) {
    Together all{changed, before, after, {}};
    CheckAddress(all);
    CheckClient(all);
    CheckAccessPoint(all);
    for (auto const &key : changed) {
        if (key.starts_with(forwardFolder))
            CheckForward(all, key);
    }
    return std::move(all.wrong);
}

}  // namespace webconfig::settings
