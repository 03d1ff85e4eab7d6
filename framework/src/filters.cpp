#include <cppcms/filters.h>

#include <cppcms/util.h>

#include "json_text.h"

#include <algorithm>
#include <string_view>

namespace cppcms::filters::details {

std::string unchanged(std::string text) {
    return text;
}

std::string escaped(std::string text) {
    bool const plain = std::none_of(text.begin(), text.end(), [](char c) {
        return c == '<' || c == '>' || c == '&' || c == '"' || c == '\'';
    });
    return plain ? std::move(text) : util::escape(text);
}

// Filters are of one type.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::string urlencoded(std::string text) {
    return util::urlencode(text);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::string jsescaped(std::string text) {
    std::ostringstream out;
    std::string_view rest = text;
    for (auto quote = rest.find('\''); quote != rest.npos; quote = rest.find('\'')) {
        impl::write_json_escaped(out, rest.substr(0, quote));
        out << "\\u0027";
        rest.remove_prefix(quote + 1);
    }
    impl::write_json_escaped(out, rest);
    return std::move(out).str();
}

}  // namespace cppcms::filters::details
