#include "WebApps/webconfig/settings/Rules.h"

#include <gtest/gtest.h>

using namespace webconfig::settings;

TEST(Rules, ASingleValue) {
    std::string const name32(32, 'n');
    struct {
        char const *key;
        std::vector<std::string> taken;
        std::vector<std::string> refused;
    } const cases[] = {
        {"net/hostname", {"a", std::string(64, 'h'), "\xC3\xA4"}, {"", std::string(65, 'h'), "a\nb"}},
        {"language", {""}, {"de"}},
        {"net/lan_addr_mode", {"static", "dhcp"}, {"", "Static"}},
        {"net/lan_ipaddr", {"", "10.0.0.1", "10.00.0.1"}, {"10.0.0", "10.0.0.256", " 10.0.0.1"}},
        {"net/lan_netmask", {"", "255.0.0.0", "255.255.255.252"}, {"254.0.0.0", "255.255.255.254"}},
        {"net/lan_advertise_speed", {"1", "15"}, {"0", "16", "", "+1", "01", "1.0", "99999999999999999999"}},
        {"net/lan_dns1", {"", "anything"}, {"a\tb"}},
        {"tern/mesh/server", {"s"}, {""}},
        {"tern/lora/server", {}, {"s"}},
        {"tern/mesh cellular/server", {}, {"s"}},
        {"tern/*/server", {}, {"s"}},
        {"tern/mesh/ipport", {"1", "65535"}, {"0", "65536"}},
        {"net/portfwd/udp/00000/d_port", {"0"}, {"-1"}},
        {"net/portfwd/udp/0443/d_port", {}, {"443"}},
        {"net/portfwd/udp/65536/d_port", {}, {"443"}},
        {"net/wifi/client/essid", {"", name32}, {name32 + "n", std::string(11, '\xE2') + name32}},
        {"net/wifi/client/wpa_psk",
         {"", "12345678", std::string(64, 'a')},
         {"1234567", std::string(64, 'g')}},
        {"system/ntpd/enabled", {"yes", "no"}, {"", "on", "true"}},
        {"webman/digest/admin", {"12345"}, {"1234"}},
        {"system/digest/root", {}, {"12345"}},
        {"net/openvpn/client_ovpn", {}, {"/etc/passwd"}},
        {"gprs/network/mode", {"0"}, {"", "1", "1,0,", R"(1,0,"Nobody")"}},
        {"net/vnc/port", {}, {"5900"}},
    };
    for (auto const &[key, taken, refused] : cases) {
        for (auto const &value : taken)
            EXPECT_EQ(WrongValue(key, value), "") << key << " = " << value;
        for (auto const &value : refused)
            EXPECT_NE(WrongValue(key, value), "") << key << " = " << value;
    }
    EXPECT_EQ(WrongValue("net/hostname", ""), "Invalid length; minimum 1, maximum 64");
    EXPECT_EQ(WrongValue("net/lan_addr_mode", "x"), "None of \"static\", \"dhcp\"");
    for (char const *const key : {"system/ntpd/enabled", "net/lan_dns1", "net/portfwd/tcp/00443/d_ip"})
        EXPECT_EQ(WrongRemoval(key), "") << key;
    for (char const *const key : {"net/hostname", "net/lan_addr_mode", "system/digest/root", "nothing"})
        EXPECT_NE(WrongRemoval(key), "") << key;
}

TEST(Rules, ValuesTogether) {
    using Store = std::map<std::string, std::string>;
    std::string const psk(64, 'a');
    Store const lan = {{"net/lan_addr_mode", "dhcp"}, {"net/lan_ipaddr", "10.0.0.1"}};
    Store const forward = {{"net/portfwd/tcp/00443/d_ip", "10.0.0.1"}, {"net/portfwd/tcp/00443/d_port", "1"}};
    Store const wlan = {{"net/wifi/client/enabled", "yes"},
                        {"net/wifi/client/essid", "n"},
                        {"net/wifi/client/security", "wpa"},
                        {"net/wifi/client/wpa_psk", psk},
                        {"net/wifi/country", "US"}};
    Store const accessPoint = {{"net/wifi/ap/enabled", "yes"},
                               {"net/wifi/ap/essid", "n"},
                               {"net/wifi/ap/wpa_psk", psk},
                               {"net/wifi/ap/channel", "1:2412"},
                               {"net/wifi/country", "US"}};
    struct {
        Store before;
        Store changes;
        std::set<std::string> wrong;
    } const cases[] = {
        {lan, {{"net/lan_addr_mode", "static"}}, {"net/lan_netmask", "net/lan_gateway"}},
        {lan, {{"net/lan_ipaddr", "10.0.0.2"}}, {}},
        {{}, {{"net/lan_dns1", "x"}}, {}},
        {{}, forward, {}},
        {forward, {{"net/portfwd/tcp/00443/d_ip", ""}}, {"net/portfwd/tcp/00443/d_ip"}},
        {forward, {{"net/portfwd/tcp/00443/d_ip", ""}, {"net/portfwd/tcp/00443/d_port", ""}}, {}},
        {{},
         {{"net/portfwd/tcp/08002/d_ip", "10.0.0.1"}, {"net/portfwd/tcp/08002/d_port", "1"}},
         {"net/portfwd/tcp/08002/d_ip", "net/portfwd/tcp/08002/d_port"}},
        {wlan, {{"net/wifi/client/essid", "m"}}, {"net/wifi/client/wpa_psk"}},
        {wlan, {{"net/wifi/client/essid", "m"}, {"net/wifi/client/wpa_psk", psk}}, {}},
        {wlan,
         {{"net/wifi/client/security", "wpa_eap"}},
         {"net/wifi/client/eap/identity", "net/wifi/client/eap/password"}},
        {wlan, {{"net/wifi/client/enabled", "no"}, {"net/wifi/client/essid", "m"}}, {}},
        {wlan, {{"net/wifi/country", ""}}, {}},
        {accessPoint, {{"net/wifi/ap/essid", "m"}}, {"net/wifi/ap/wpa_psk"}},
        {accessPoint, {{"net/wifi/ap/wpa_psk", ""}}, {"net/wifi/ap/wpa_psk"}},
        {accessPoint, {{"net/wifi/ap/channel", "0:"}}, {}},
        {accessPoint, {{"net/wifi/ap/channel", "199:1"}}, {"net/wifi/ap/channel"}},
    };
    for (auto const &[before, changes, wrong] : cases) {
        Store after = before;
        std::set<std::string> changed;
        std::set<std::string> found;
        for (auto const &[key, value] : changes) {
            after[key] = value;
            changed.insert(key);
        }
        auto const in = [](Store const &store) {
            return [&store](std::string const &key) {
                auto const at = store.find(key);
                return at == store.end() ? std::string() : at->second;
            };
        };
        for (auto const &[key, reason] : WrongTogether(changed, in(before), in(after)))
            found.insert(key);
        found.erase("net/wifi/country");  // no module here, so no country is offered
        EXPECT_EQ(found, wrong) << testing::PrintToString(changes);
    }
}
