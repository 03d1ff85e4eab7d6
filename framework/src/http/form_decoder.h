#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace cppcms::impl {

using form_fields = std::multimap<std::string, std::string>;

/// Most fields that a request may bring in its query or its body.
constexpr std::size_t max_form_fields = 10000;

enum class form_result {
    complete,
    malformed,  ///< a piece without `=` or without a name; the fields before it are there
    too_many,
};

/// Adds the pairs of `name=value&name=value` text to \a fields.
form_result decode_form(std::string_view text, form_fields &fields);

}  // namespace cppcms::impl
