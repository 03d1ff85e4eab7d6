#include "WebApps/webconfig/util/WebPassword.h"

#include <sstream>

#include "WebApps/webconfig/util/Digest.h"

namespace webconfig::util {

std::string WebPasswordSha256(std::string const &password) {
    std::istringstream account("admin:Orvane Configuration Tool:" + password);
    return Hex(DigestOf(account, DigestKind::Sha256));
}

}  // namespace webconfig::util
