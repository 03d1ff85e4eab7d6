#pragma once

#include <string>

/// What Wi-Fi settings are made of.
namespace webconfig::util {

/// The pre-shared key, 64 hexadecimal digits, that the network \a ssid and \a passPhrase give. Empty where
/// the pass phrase has fewer than 8 or more than 63 characters, or control characters. It is computed here
/// where the shell is hardened, else "wpa_passphrase" is asked.
std::string getPsk(std::string const &ssid, std::string const &passPhrase);

/// "hash:", 32 lowercase hexadecimal digits of the MD4 sum of \a password in UTF-16, and a NUL character,
/// which those who write the Wi-Fi configuration rely on. Empty where the password ends within a character
/// or where there is no MD4 (which is logged). Throws std::range_error where \a password is not UTF-8.
std::string getNtPasswordHash(std::string const &password);

/// The name to show for a regulatory domain; most are shown as their code.
std::string getRegulatoryFriendlyName(std::string const &domain);

}  // namespace webconfig::util
