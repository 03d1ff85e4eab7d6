#pragma once

#include <cstddef>
#include <string_view>

namespace cppcms::impl {

/// Most bytes of CGI variables that a FastCGI request may bring.
constexpr std::size_t max_fastcgi_variables = 16384;
/// Most bytes in which they have to come, record headers included.
constexpr std::size_t max_fastcgi_head = 2 * max_fastcgi_variables;

enum class fastcgi_head_state {
    complete,
    incomplete,
    too_large,
    malformed,
    unknown_role,  ///< the web server asks for something else than a response
};

/// Looks at the records that begin a FastCGI request, up to the end of its variables. The FastCGI library
/// believes every length it reads; only what passes here is handed to it.
fastcgi_head_state check_fastcgi_head(std::string_view bytes);

}  // namespace cppcms::impl
