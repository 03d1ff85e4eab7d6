#include "WebApps/webconfig/util/Wifi.h"

#include <array>
#include <boost/locale/utf.hpp>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "WebApps/webconfig/util/Command.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/CryptoLibrary.h"
#include "WebApps/webconfig/util/Digest.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Strings.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Wifi";

constexpr std::size_t minPassPhrase = 8;
constexpr std::size_t maxPassPhrase = 63;
constexpr unsigned maxPassPhraseOutput = 1024;

using Bytes = std::vector<unsigned char>;

/// The little-endian code units of a UTF-8 text; none where the text ends within a character.
std::optional<Bytes> Utf16(std::string const &text) {
    namespace utf = boost::locale::utf;
    std::u16string units;
    for (auto at = text.begin(); at != text.end();) {
        utf::code_point const point = utf::utf_traits<char>::decode(at, text.end());
        if (point == utf::incomplete)
            return std::nullopt;
        if (point == utf::illegal)
            throw std::range_error("wstring_convert::from_bytes");
        utf::utf_traits<char16_t>::encode(point, std::back_inserter(units));
    }
    Bytes bytes;
    for (unsigned const unit : units) {
        bytes.push_back(unit & 0xFF);
        bytes.push_back(unit >> 8);
    }
    return bytes;
}

using Library = std::unique_ptr<OSSL_LIB_CTX, CryptoFree<&CryptoLibrary::OSSL_LIB_CTX_free>>;
using Provider = std::unique_ptr<OSSL_PROVIDER, CryptoFree<&CryptoLibrary::OSSL_PROVIDER_unload>>;
using Digest = std::unique_ptr<EVP_MD, CryptoFree<&CryptoLibrary::EVP_MD_free>>;

constexpr std::size_t md4Size = 16;

/// MD4 is in OpenSSL's legacy provider only. It is loaded for each sum, which are rare, into a library
/// context of its own: what the rest of the process may use does not change.
std::optional<std::array<unsigned char, md4Size>> Md4(Bytes const &text) {
    std::array<unsigned char, md4Size> sum{};
    Library const library(Crypto().OSSL_LIB_CTX_new());
    Provider const legacy(Crypto().OSSL_PROVIDER_load(library.get(), "legacy"));
    Digest const md4(legacy ? Crypto().EVP_MD_fetch(library.get(), "MD4", nullptr) : nullptr);
    if (!md4 || Crypto().EVP_Digest(text.data(), text.size(), sum.data(), nullptr, md4.get(), nullptr) != 1) {
        std::array<char, 256> reason{};
        Crypto().ERR_error_string_n(Crypto().ERR_get_error(), reason.data(), reason.size());
        Crypto().ERR_clear_error();
        WEBCONFIG_LOG(error, logTag) << "No MD4, which is in the legacy provider of OpenSSL: "
                                     << reason.data();
        return std::nullopt;
    }
    return sum;
}

struct DomainName {
    std::string_view code;
    std::string_view name;
};
constexpr DomainName domainNames[] = {
    {"AU", "AU,NZ"},
    {"WW", "WW (World Mode)"},
    {"ETSI", "ETSI (Europe)"},
    {"EN440", "EN440 (Europe)"},
    {"WW440", "WW440 (World Mode)"},
};

bool Contains(std::string const &line, char const *text) {
    return line.find(text) != std::string::npos;
}

/// The key that "wpa_passphrase" prints.
std::string PrintedKey(std::string const &ssid, std::string const &passPhrase) {
    std::istringstream output(ShellCommand(
        Command("wpa_passphrase").DoubleQuoted(ssid).DoubleQuoted(passPhrase), maxPassPhraseOutput));

    constexpr std::string_view keyMark = "psk=";
    for (std::string line; std::getline(output, line);) {
        // The pass phrase comes as a comment, and a network may have any name.
        std::size_t const mark = line.find(keyMark);
        if (mark != std::string::npos && !Contains(line, "#psk=") && !Contains(line, "ssid="))
            return line.substr(mark + keyMark.size());
    }
    return {};
}

/// The same key, of a pass phrase that stands in no command line.
std::string DerivedKey(std::string const &ssid, std::string const &passPhrase) {
    constexpr int rounds = 4096;
    constexpr std::size_t size = 32;
    bool const typed = !passPhrase.empty() && !HasControls(passPhrase);
    std::array<unsigned char, size> key{};
    bool const derived = typed && Crypto().PKCS5_PBKDF2_HMAC_SHA1(
                                      passPhrase.data(), static_cast<int>(passPhrase.size()),
                                      reinterpret_cast<unsigned char const *>(ssid.data()),
                                      static_cast<int>(ssid.size()), rounds, size, key.data()) == 1;
    return derived ? Hex(std::string(key.begin(), key.end())) : "";
}

}  // namespace

std::string getPsk(std::string const &ssid, std::string const &passPhrase) {
    if (!passPhrase.empty() && (passPhrase.size() < minPassPhrase || passPhrase.size() > maxPassPhrase))
        return {};
    return AreSecretsHiddenFromCommands() ? DerivedKey(ssid, passPhrase) : PrintedKey(ssid, passPhrase);
}

std::string getNtPasswordHash(std::string const &password) {
    auto const text = Utf16(password);
    auto const sum = text ? Md4(*text) : std::nullopt;
    if (!sum)
        return {};
    return "hash:" + Hex(std::string(sum->begin(), sum->end())) + '\0';
}

std::string getRegulatoryFriendlyName(std::string const &domain) {
    for (auto const &known : domainNames) {
        if (known.code == domain)
            return std::string(known.name);
    }
    return domain;
}

}  // namespace webconfig::util
