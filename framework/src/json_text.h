#pragma once

#include <ostream>
#include <string_view>

namespace cppcms::impl {

/// Writes \a text with the escapes of a JSON string, without quotes. Bytes from 0x80 on pass as they are.
void write_json_escaped(std::ostream &out, std::string_view text);

}  // namespace cppcms::impl
