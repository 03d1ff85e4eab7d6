#include "WebApps/webconfig/util/FirmwareSignature.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "WebApps/webconfig/util/CryptoLibrary.h"
#include "WebApps/webconfig/util/Digest.h"
#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/FirmwareSignature";

// The block: magic, key id, signature. The last character of the magic is the version of the format.
constexpr std::string_view magic = "FWSIGN\n1";
constexpr std::size_t keyIdSize = 8;
constexpr std::size_t signatureSize = 64;
constexpr std::size_t blockSize = magic.size() + keyIdSize + signatureSize;

/// What is signed begins with this, so that no signature for something else is one for an image.
constexpr std::string_view domain = "firmware image, format 1\n";

constexpr char keyNames[] = "\\.pem$";
constexpr std::size_t maxKeys = 32;
constexpr std::uintmax_t maxKeySize = 4096;  // bytes

using Key = std::unique_ptr<EVP_PKEY, CryptoFree<&CryptoLibrary::EVP_PKEY_free>>;

Key ReadKey(std::string const &path) {
    std::error_code problem;
    if (!std::filesystem::is_regular_file(path, problem) || FileSize(path) > maxKeySize)
        return {};
    std::unique_ptr<BIO, CryptoFree<&CryptoLibrary::BIO_free>> const file(
        Crypto().BIO_new_file(path.c_str(), "r"));
    auto *const noPassword = +[](char * /*buffer*/, int /*size*/, int /*writing*/, void * /*unused*/) {
        return -1;  // the default would ask at the terminal
    };
    Key key(file ? Crypto().PEM_read_bio_PUBKEY(file.get(), nullptr, noPassword, nullptr) : nullptr);
    Crypto().ERR_clear_error();
    if (!key || Crypto().EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_ED25519)
        return {};
    return key;
}

/// The first bytes of the SHA-256 of the key in DER.
std::string IdOf(EVP_PKEY *key) {
    unsigned char *der = nullptr;
    int const size = Crypto().i2d_PUBKEY(key, &der);
    std::unique_ptr<unsigned char, CryptoFreeMemory> const kept(der);
    if (size <= 0)
        return {};
    std::istringstream text(std::string(reinterpret_cast<char const *>(der), static_cast<std::size_t>(size)));
    return DigestOf(text, DigestKind::Sha256).substr(0, keyIdSize);
}

struct KnownKey {
    std::string name;
    Key key;
};

/// The key of that id in the folder.
std::optional<KnownKey> FindKey(std::string const &folder, std::string_view id) {
    auto names = FindFiles(folder, FindFilesType::All, keyNames);
    std::sort(names.begin(), names.end());
    names.resize(std::min(names.size(), maxKeys));
    for (auto const &name : names) {
        std::string path = folder;
        path.append("/").append(name);
        Key key = ReadKey(path);
        if (!key)
            WEBCONFIG_LOG(warning, logTag) << path << " is no public Ed25519 key, and is not used";
        else if (IdOf(key.get()) == id)
            return KnownKey{std::filesystem::path(name).stem(), std::move(key)};
    }
    return {};
}

bool Verify(EVP_PKEY *key, std::string_view signature, std::string const &message) {
    auto const bytes = [](std::string_view text) {
        return reinterpret_cast<unsigned char const *>(text.data());
    };
    std::unique_ptr<EVP_MD_CTX, CryptoFree<&CryptoLibrary::EVP_MD_CTX_free>> const context(
        Crypto().EVP_MD_CTX_new());
    bool const valid = context &&
                       Crypto().EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key) == 1 &&
                       Crypto().EVP_DigestVerify(context.get(), bytes(signature), signature.size(),
                                                 bytes(message), message.size()) == 1;
    Crypto().ERR_clear_error();
    return valid;
}

}  // namespace

FirmwareSignature CheckFirmwareSignature(std::string const &path, std::string const &keyFolder) {
    using State = FirmwareSignature::State;
    std::uintmax_t const size = FileSize(path);
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return {};
    FirmwareSignature result{.state = State::None, .key = {}, .imageSize = size};
    if (size < blockSize)
        return result;
    std::array<char, blockSize> bytes{};
    file.seekg(static_cast<std::streamoff>(size - blockSize)).read(bytes.data(), bytes.size());
    if (!file)
        return {};
    std::string_view const block(bytes.data(), bytes.size());
    if (!block.starts_with(magic))
        return result;

    result.imageSize = size - blockSize;
    std::string_view const id = block.substr(magic.size(), keyIdSize);
    auto const known = FindKey(keyFolder, id);
    result.key = known ? known->name : Hex(id);
    result.state = State::UnknownKey;
    if (!known)
        return result;
    std::string const digest = DigestOf(file.seekg(0), DigestKind::Sha512, result.imageSize);
    if (digest.empty())
        return {};
    bool const valid =
        Verify(known->key.get(), block.substr(magic.size() + keyIdSize), std::string(domain) + digest);
    result.state = valid ? State::Valid : State::Broken;
    return result;
}

}  // namespace webconfig::util
