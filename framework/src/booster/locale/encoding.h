#pragma once

#include <optional>
#include <string>

namespace booster::locale::impl {

/// Whether two names of encodings mean the same, such as "UTF-8" and "utf8".
bool is_same_encoding(std::string const &one, std::string const &other);

/// \a text in another encoding; none where it does not fit, or an encoding is unknown.
std::optional<std::string> convert(std::string text, std::string const &to, std::string const &from);

}  // namespace booster::locale::impl
