#pragma once

#include <string>
#include <string_view>

namespace webconfig::util {

/// \a bytes as UTF-8 text that any reader takes and no terminal obeys: each byte that is not part of a
/// well-formed character or that belongs to a control character becomes U+FFFD. Tab, line feed and carriage
/// return stay.
std::string CleanText(std::string_view bytes);

}  // namespace webconfig::util
