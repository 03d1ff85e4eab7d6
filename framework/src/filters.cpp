#include <cppcms/filters.h>

#include <cppcms/util.h>

#include "json_text.h"

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

}  // namespace cppcms::filters::details
