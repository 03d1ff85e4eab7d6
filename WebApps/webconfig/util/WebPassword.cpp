#include "WebApps/webconfig/util/WebPassword.h"

#include <openssl/evp.h>

#include <array>

namespace webconfig::util {

std::string WebPasswordSha256(std::string const &password) {
    constexpr char digits[] = "0123456789abcdef";
    constexpr std::size_t size = 32;
    std::string const account = "admin:Orvane Configuration Tool:" + password;
    std::array<unsigned char, size> sum{};
    if (EVP_Digest(account.data(), account.size(), sum.data(), nullptr, EVP_sha256(), nullptr) != 1)
        return {};
    std::string text;
    for (unsigned char const byte : sum) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

}  // namespace webconfig::util
