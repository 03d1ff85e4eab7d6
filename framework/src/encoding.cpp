#include "encoding.h"

#include <booster/locale/info.h>
#include <boost/locale/utf.hpp>

#include <algorithm>

#include "booster/locale/encoding.h"

namespace cppcms::impl {

namespace {

constexpr bool is_allowed(char32_t c) {
    return c >= 0x20 ? c < 0x7F || c > 0x9F : c == '\t' || c == '\n' || c == '\r';
}

bool is_valid_ascii(std::string const &text, std::size_t &length) {
    length = text.size();
    return std::all_of(text.begin(), text.end(), [](char c) {
        auto const byte = static_cast<unsigned char>(c);
        return byte < 0x80 && is_allowed(byte);
    });
}

bool is_valid_utf8(std::string const &text, std::size_t &length) {
    using utf8 = boost::locale::utf::utf_traits<char>;
    auto const end = text.end();
    std::size_t count = 0;
    for (auto at = text.begin(); at != end; ++count) {
        auto const c = utf8::decode(at, end);
        if (!boost::locale::utf::is_valid_codepoint(c) || !is_allowed(c))
            return false;
    }
    length = count;
    return true;
}

}  // namespace

bool is_valid_text(std::locale const &locale, std::string const &text, std::size_t &length) {
    using booster::locale::info;
    if (!std::has_facet<info>(locale) || std::use_facet<info>(locale).utf8())
        return is_valid_utf8(text, length);
    auto const encoding = std::use_facet<info>(locale).encoding();
    if (encoding == "us-ascii")
        return is_valid_ascii(text, length);
    auto const converted = booster::locale::impl::convert(text, "utf-8", encoding);
    return converted && is_valid_utf8(*converted, length);
}

}  // namespace cppcms::impl
