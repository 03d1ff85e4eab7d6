#include "WebApps/webconfig/util/CryptoLibrary.h"

#include <stdexcept>

namespace webconfig::util {

namespace {

CryptoLibrary Open() {
    CryptoLibrary const crypto;
    if (!crypto.library.IsComplete())
        throw std::runtime_error("The device has no libcrypto");
    return crypto;
}

}  // namespace

CryptoLibrary const &Crypto() {
    static CryptoLibrary const crypto = Open();
    return crypto;
}

}  // namespace webconfig::util
