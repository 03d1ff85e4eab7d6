#include <cppcms/filters.h>

#include <cppcms/util.h>

#include "json_text.h"

#include <cstdint>
#include <string_view>

namespace cppcms::filters::details {

void write_raw(std::ostream &out, std::string const &text) {
    out << text;
}

void write_escaped(std::ostream &out, std::string const &text) {
    util::escape(text.data(), text.data() + text.size(), out);
}

void write_urlencoded(std::ostream &out, std::string const &text) {
    util::urlencode(text.data(), text.data() + text.size(), out);
}

void write_jsescaped(std::ostream &out, std::string const &text) {
    std::string_view rest = text;
    for (auto quote = rest.find('\''); quote != rest.npos; quote = rest.find('\'')) {
        impl::write_json_escaped(out, rest.substr(0, quote));
        out << "\\u0027";
        rest.remove_prefix(quote + 1);
    }
    impl::write_json_escaped(out, rest);
}

void write_upper(std::ostream &out, std::string const &text) {
    out << locale::to_upper(text, out.getloc());
}

void write_lower(std::ostream &out, std::string const &text) {
    out << locale::to_lower(text, out.getloc());
}

void write_title(std::ostream &out, std::string const &text) {
    out << locale::to_title(text, out.getloc());
}

void write_base64_urlencoded(std::ostream &out, std::string const &text) {
    constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    for (std::size_t at = 0; at < text.size(); at += 3) {
        auto const bytes = std::min<std::size_t>(3, text.size() - at);
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            group |= std::uint32_t{static_cast<unsigned char>(text[at + i])} << (16 - 8 * i);
        for (std::size_t i = 0; i <= bytes; ++i)
            out << digits[(group >> (18 - 6 * i)) & 63];
    }
}

std::ostream &time_filter::write(std::ostream &out) const {
    std::ostringstream text;
    text.copyfmt(out);
    switch (part_) {
        case part::date:
            text << locale::as::date;
            break;
        case part::time:
            text << locale::as::time;
            break;
        case part::datetime:
            text << locale::as::datetime;
            break;
        case part::formatted:
            text << locale::as::ftime(format_);
            break;
    }
    if (!zone_.empty())
        text << locale::as::time_zone(zone_);
    object_(text);
    return out << text.str();
}

}  // namespace cppcms::filters::details
