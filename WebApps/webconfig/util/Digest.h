#pragma once

#include <cstdint>
#include <iosfwd>
#include <limits>
#include <string>
#include <string_view>

namespace webconfig::util {

enum class DigestKind { Sha256, Sha512 };

/// Reads \a file to its end, or \a size bytes of it, piece by piece. The digest's bytes; empty where that
/// many cannot be read.
std::string DigestOf(std::istream &file, DigestKind kind,
                     std::uintmax_t size = std::numeric_limits<std::uintmax_t>::max());

/// The SHA-256 of a file in hexadecimal digits; empty where it cannot be read.
std::string Sha256OfFile(std::string const &path);

/// Bytes as hexadecimal digits, the letters in lower case.
std::string Hex(std::string_view bytes);

}  // namespace webconfig::util
