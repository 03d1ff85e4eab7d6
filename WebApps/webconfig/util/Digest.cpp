#include "WebApps/webconfig/util/Digest.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>

#include "WebApps/webconfig/util/CryptoLibrary.h"

namespace webconfig::util {

namespace {

constexpr std::size_t piece = 65536;  // bytes
constexpr std::uintmax_t toTheEnd = std::numeric_limits<std::uintmax_t>::max();

}  // namespace

std::string DigestOf(std::istream &file, DigestKind kind, std::uintmax_t size) {
    std::unique_ptr<EVP_MD_CTX, CryptoFree<&CryptoLibrary::EVP_MD_CTX_free>> const context(
        Crypto().EVP_MD_CTX_new());
    EVP_MD const *const algorithm =
        kind == DigestKind::Sha256 ? Crypto().EVP_sha256() : Crypto().EVP_sha512();
    if (!file || !context || Crypto().EVP_DigestInit_ex(context.get(), algorithm, nullptr) != 1)
        return {};
    std::string buffer(piece, '\0');
    std::uintmax_t left = size;
    while (left > 0 && file) {
        file.read(buffer.data(), static_cast<std::streamsize>(std::min<std::uintmax_t>(left, piece)));
        auto const got = static_cast<std::size_t>(file.gcount());
        if (Crypto().EVP_DigestUpdate(context.get(), buffer.data(), got) != 1)
            return {};
        left -= got;
    }
    bool const whole = size == toTheEnd ? file.eof() : left == 0;
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    if (!whole || Crypto().EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1)
        return {};
    return {digest.begin(), digest.begin() + length};
}

std::string Sha256OfFile(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    return Hex(DigestOf(file, DigestKind::Sha256));
}

std::string Hex(std::string_view bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (unsigned char const byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

}  // namespace webconfig::util
