#pragma once

#include <string>

namespace cppcms {

class base_content;

namespace impl {

/// Throws what rendering would throw for an unknown skin or view or for content of the wrong type. Writes
/// nothing, so that an error page is still possible.
void check_view(std::string const &skin, std::string const &view, base_content &content);

}  // namespace impl

}  // namespace cppcms
