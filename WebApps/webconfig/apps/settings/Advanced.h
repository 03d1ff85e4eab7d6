#pragma once

namespace webconfig::apps {

/// Puts remote access and passwords into effect.
inline constexpr char applyRemoteAccess[] = "/etc/nat_setup.sh web_advanced";

}  // namespace webconfig::apps
