#include <cppcms/util.h>

#include <openssl/evp.h>

#include <cppcms/cppcms_error.h>

namespace cppcms::util {

std::string md5hex(std::string const &text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    if (!EVP_Digest(text.data(), text.size(), digest, &size, EVP_md5(), nullptr))
        throw cppcms_error("MD5 is not available");
    constexpr char hex[] = "0123456789abcdef";
    std::string result;
    for (unsigned i = 0; i < size; ++i) {
        result += hex[digest[i] >> 4];
        result += hex[digest[i] & 15];
    }
    return result;
}

}  // namespace cppcms::util
