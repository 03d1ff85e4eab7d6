#include "WebApps/webconfig/security/Headers.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace webconfig::security {

std::string PagePolicy(std::string const &nonce) {
    std::string const here = "'self' 'nonce-" + nonce + "'; ";
    return "default-src 'none'; script-src " + here + "style-src " + here +
           "img-src 'self'; connect-src 'self'; form-action 'self'; base-uri 'none'; frame-ancestors 'none'";
}

std::string MakeNonce() {
    constexpr char digits[] = "0123456789abcdef";
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::system_error(errno, std::system_category(), "getrandom");
    std::string nonce;
    for (unsigned const byte : bytes) {
        nonce += digits[byte / 16];
        nonce += digits[byte % 16];
    }
    return nonce;
}

}  // namespace webconfig::security
