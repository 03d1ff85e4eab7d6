#include "WebApps/webconfig/security/DefaultPassword.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::security {

namespace {

/// Of "admin:Orvane Configuration Tool:admin".
constexpr char deliveredDigest[] = "80f0e29696d8b407f73f88627432120b";

}  // namespace

bool IsDefaultPasswordAlerted() {
    if (!ThePolicy().default_password_alert)
        return false;
    std::string digest = util::Prm::GetString(webDigestKey);
    std::transform(digest.begin(), digest.end(), digest.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return digest == deliveredDigest;
}

}  // namespace webconfig::security
