#include <cppcms/json.h>

#include "json_text.h"

#include <charconv>
#include <ostream>
#include <sstream>

namespace cppcms {

namespace impl {

void write_json_escaped(std::ostream &out, std::string_view text) {
    constexpr std::string_view named = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    constexpr char hex[] = "0123456789abcdef";
    std::size_t written = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const c = static_cast<unsigned char>(text[i]);
        if (c >= 0x20 && c != '"' && c != '\\')
            continue;
        out << text.substr(written, i - written);
        written = i + 1;
        if (auto const letter = named.find(text[i]); letter != named.npos)
            out << '\\' << letters[letter];
        else
            out << "\\u00" << hex[c >> 4] << hex[c & 15];
    }
    out << text.substr(written);
}

}  // namespace impl

namespace json {

namespace {

constexpr int significant_digits = 16;

class writer {
  public:
    writer(std::ostream &out, int how) : out_(out), readable_(how == readable) {}

    void write(value const &v) {
        switch (v.type()) {
            case is_undefined:
                throw bad_value_cast("Can't write undefined value to stream");
            case is_null:
                out_ << "null";
                break;
            case is_boolean:
                out_ << (v.boolean() ? "true" : "false");
                break;
            case is_number:
                write(v.number());
                break;
            case is_string:
                to_json(v.str(), out_);
                break;
            case is_object:
                write_list('{', v.object(), '}');
                break;
            case is_array:
                write_list('[', v.array(), ']');
                break;
        }
    }

  private:
    void write(double number) {
        char text[32];
        auto const end =
            std::to_chars(text, text + sizeof(text), number, std::chars_format::general, significant_digits);
        out_ << std::string_view(text, static_cast<std::size_t>(end.ptr - text));
    }

    void write(object::value_type const &member) {
        to_json(member.first.str(), out_);
        out_ << (readable_ ? " :\t" : ":");
        write(member.second);
    }

    template <typename List>
    void write_list(char opening, List const &list, char closing) {
        out_ << opening;
        ++depth_;
        new_line();
        bool first = true;
        for (auto const &element : list) {
            if (!first) {
                out_ << ',';
                new_line();
            }
            first = false;
            write(element);
        }
        --depth_;
        new_line();
        out_ << closing;
        new_line();
    }

    void new_line() {
        if (readable_)
            out_ << '\n' << std::string(depth_, '\t');
    }

    std::ostream &out_;
    bool readable_;
    std::size_t depth_ = 0;
};

}  // namespace

void value::save(std::ostream &out, int how) const {
    out.width(0);
    out.precision(significant_digits);  // it stays so: numbers written next to JSON look alike
    writer(out, how).write(*this);
}

std::string value::save(int how) const {
    std::ostringstream out;
    save(out, how);
    return std::move(out).str();
}

std::ostream &operator<<(std::ostream &out, value const &v) {
    v.save(out);
    return out;
}

void to_json(std::string const &text, std::ostream &out) {
    out << '"';
    impl::write_json_escaped(out, text);
    out << '"';
}

void to_json(char const *begin, char const *end, std::ostream &out) {
    to_json(std::string(begin, end), out);
}

std::string to_json(std::string const &text) {
    std::ostringstream out;
    to_json(text, out);
    return std::move(out).str();
}

std::string to_json(char const *begin, char const *end) {
    return to_json(std::string(begin, end));
}

}  // namespace json

}  // namespace cppcms
