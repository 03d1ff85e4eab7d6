#pragma once

#include <set>

#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Command.h"

/// What puts stored settings into effect. Pages run these commands in the order that theirs has; undo runs
/// all that its settings need.
namespace webconfig::settings {

inline constexpr util::ConstantText applyPortForwarding("/etc/nat_setup.sh web_forwarding");
inline constexpr util::ConstantText applyRemoteAccess("/etc/nat_setup.sh web_advanced");
inline constexpr util::ConstantText applyWifiClient("/etc/nat_setup.sh wlan");
inline constexpr util::ConstantText stopTimeServer("/etc/init.d/ntpd stop > /dev/null");
inline constexpr util::ConstantText startTimeServer("/etc/init.d/ntpd start > /dev/null");
inline constexpr util::ConstantText startSiteLink(
    "/usr/bin/supvis --add ternd --cmd '/usr/bin/ternd --init --no-datalog'");
inline constexpr util::ConstantText stopSiteLink("/usr/bin/supvis --remove ternd");
inline constexpr util::ConstantText applyWebPassword("/usr/sbin/lighttpd_set_passwd.sh > /dev/null");

/// Sets up a part of the Wi-Fi module, "wifi_ap" or "wifi_client", from the store.
util::Command ApplyWifi(std::string const &part);
/// Puts what the store holds into effect, as far as it can be without a restart: that only is required then.
/// False where a command failed; the others are run all the same.
bool PutIntoEffect(std::set<Effect> const &effects);

}  // namespace webconfig::settings
