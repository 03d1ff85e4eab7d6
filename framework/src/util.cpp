#include <cppcms/util.h>

#include <ostream>
#include <string_view>

namespace cppcms::util {

namespace {

std::string_view entity(char c) {
    switch (c) {
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '&':
            return "&amp;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return {};
    }
}

constexpr bool is_unreserved(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == '~';
}

/// -1 where \a c is no hexadecimal digit.
constexpr int hex_digit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

}  // namespace

void escape(char const *begin, char const *end, std::ostream &out) {
    for (char const *at = begin; at != end; ++at) {
        auto const replacement = entity(*at);
        if (replacement.empty())
            continue;
        out.write(begin, at - begin) << replacement;
        begin = at + 1;
    }
    out.write(begin, end - begin);
}

std::string escape(std::string const &text) {
    std::string result;
    result.reserve(text.size() + text.size() / 8);
    for (char const c : text) {
        if (auto const replacement = entity(c); !replacement.empty())
            result += replacement;
        else
            result += c;
    }
    return result;
}

void urlencode(char const *begin, char const *end, std::ostream &out) {
    out << urlencode(std::string(begin, end));
}

std::string urlencode(std::string const &text) {
    constexpr char hex[] = "0123456789abcdef";
    std::string result;
    result.reserve(text.size() + text.size() / 8);
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (is_unreserved(c))
            result += c;
        else
            result.append({'%', hex[byte >> 4], hex[byte & 15]});
    }
    return result;
}

std::string urldecode(char const *begin, char const *end) {
    std::string result;
    result.reserve(static_cast<std::size_t>(end - begin));
    for (; begin != end; ++begin) {
        if (*begin == '+') {
            result += ' ';
        } else if (*begin != '%') {
            result += *begin;
        } else if (end - begin > 2 && hex_digit(begin[1]) >= 0 && hex_digit(begin[2]) >= 0) {
            result += static_cast<char>(hex_digit(begin[1]) * 16 + hex_digit(begin[2]));
            begin += 2;
        }
    }
    return result;
}

std::string urldecode(std::string const &text) {
    return urldecode(text.data(), text.data() + text.size());
}

}  // namespace cppcms::util
