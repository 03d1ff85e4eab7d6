#pragma once

#include <cstdint>
#include <string>

/// Signatures of firmware images: a block behind the image, as docs/signing.md lays it out.
namespace webconfig::util {

struct FirmwareSignature {
    enum class State {
        None,        ///< there is no block
        UnknownKey,  ///< there is one, by a key that this device does not have
        Broken,      ///< by a key of this device, but not for these bytes
        Valid,
        Unreadable,  ///< the file could not be read
    };
    State state = State::Unreadable;
    std::string key;               ///< the file name of the key without its suffix; of an unknown one its id
    std::uintmax_t imageSize = 0;  ///< bytes of the image itself, without the block
};

/// Reads the image at \a path once, where it has a block, and compares it with the public keys, "*.pem", in
/// \a keyFolder. Keys that are not of the kind are logged.
FirmwareSignature CheckFirmwareSignature(std::string const &path, std::string const &keyFolder);

}  // namespace webconfig::util
