#pragma once

#include <cstddef>
#include <locale>
#include <string>

namespace cppcms::impl {

/// Whether \a text is well-formed in the encoding of \a locale (UTF-8 where that has none) and has no
/// control characters but tab, line feed and carriage return. Stores the number of code points of a valid
/// text in \a length.
bool is_valid_text(std::locale const &locale, std::string const &text, std::size_t &length);

}  // namespace cppcms::impl
