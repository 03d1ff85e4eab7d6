#pragma once

namespace webconfig::security {

/// Where the web password is stored: the hash of user, realm and password.
inline constexpr char webDigestKey[] = "webman/digest/admin";

/// Whether the policy has pages warn of the web password, as it is still the one of the delivery.
bool IsDefaultPasswordAlerted();

}  // namespace webconfig::security
