#include <cppcms/json.h>

#include <boost/locale/utf.hpp>

#include <istream>
#include <limits>
#include <locale>
#include <streambuf>
#include <string_view>

namespace cppcms::json {

namespace {

constexpr int max_depth = 512;
constexpr int end_of_text = std::char_traits<char>::eof();

/// Reads from memory, without a copy.
class memory_buffer : public std::streambuf {
  public:
    memory_buffer(char const *begin, char const *end) {
        setg(const_cast<char *>(begin), const_cast<char *>(begin), const_cast<char *>(end));
    }
    char const *position() const { return gptr(); }
};

/// Recursive descent, one member function a rule. Each returns whether its rule was met; nothing is read
/// beyond the value, so that a stream can be read value by value.
class parser {
  public:
    explicit parser(std::streambuf &text) : text_(text), numbers_(&text) {
        numbers_.imbue(std::locale::classic());
        numbers_.unsetf(std::ios::skipws);
    }

    bool read(value &result) {
        skip_blanks();
        switch (peek()) {
            case '{':
                return read_nested([&] { return read_object(result); });
            case '[':
                return read_nested([&] { return read_array(result); });
            case '"':
                result = std::string();
                return read_string(result.str());
            case 't':
                result = true;
                return read_word("true");
            case 'f':
                result = false;
                return read_word("false");
            case 'n':
                result = null();
                return read_word("null");
            default:
                result = 0.0;
                return read_number(result.number());
        }
    }

    bool at_end() {
        skip_blanks();
        return peek() == end_of_text;
    }

    int line() const { return line_; }

  private:
    int peek() { return text_.sgetc(); }
    int next() { return text_.sbumpc(); }

    bool accept(char wanted) {
        if (peek() != std::char_traits<char>::to_int_type(wanted))
            return false;
        next();
        return true;
    }

    void skip_blanks() {
        for (;;) {
            switch (peek()) {
                case '\n':
                    ++line_;
                    [[fallthrough]];
                case ' ':
                case '\t':
                case '\r':
                    next();
                    break;
                case '/':
                    if (!skip_comment())
                        return;
                    break;
                default:
                    return;
            }
        }
    }

    /// To the end of the line, which is left. A lone slash is taken and then fails as what it stands for.
    bool skip_comment() {
        next();
        if (peek() != '/') {
            text_.sungetc();
            return false;
        }
        while (peek() != end_of_text && peek() != '\n')
            next();
        return true;
    }

    template <typename Read>
    bool read_nested(Read read) {
        next();
        if (depth_ == max_depth)
            return false;
        ++depth_;
        bool const done = read();
        --depth_;
        return done;
    }

    bool read_object(value &result) {
        object &members = (result = object()).object();
        for (skip_blanks(); !accept('}'); skip_blanks()) {
            std::string key;
            if (peek() != '"' || !read_string(key))
                return false;
            skip_blanks();
            auto const [member, is_new] = members.try_emplace(std::move(key));
            if (!is_new || !accept(':') || !read(member->second) || !end_element('}'))
                return false;
        }
        return true;
    }

    bool read_array(value &result) {
        array &elements = (result = array()).array();
        for (skip_blanks(); !accept(']'); skip_blanks())
            if (!read(elements.emplace_back()) || !end_element(']'))
                return false;
        return true;
    }

    /// A comma, which may also be the last thing before the bracket, or the bracket, which is left.
    bool end_element(char closing) {
        skip_blanks();
        return accept(',') || peek() == closing;
    }

    bool read_word(std::string_view word) {
        for (char const c : word)
            if (!accept(c))
                return false;
        return true;
    }

    bool read_number(double &number) {
        int const first = peek();
        if (first != '-' && (first < '0' || first > '9'))
            return false;
        return static_cast<bool>(numbers_ >> number);
    }

    bool read_string(std::string &result) {
        for (next(); !accept('"');) {
            int const c = next();
            if (c < 0x20)  // the end of the text is less, too
                return false;
            if (c != '\\')
                result += static_cast<char>(c);
            else if (!read_escape(result))
                return false;
        }
        return is_utf8(result);
    }

    bool read_escape(std::string &result) {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        int const c = next();
        if (c == 'u')
            return read_code_point(result);
        auto const letter = c == end_of_text ? letters.npos : letters.find(static_cast<char>(c));
        if (letter == letters.npos)
            return false;
        result += meanings[letter];
        return true;
    }

    /// The digits of \\uXXXX, or of two of them that make a surrogate pair.
    bool read_code_point(std::string &result) {
        unsigned code = 0;
        if (!read_hex(code) || (code >= 0xDC00 && code < 0xE000))
            return false;
        if (code >= 0xD800 && code < 0xDC00) {
            unsigned low = 0;
            if (!accept('\\') || !accept('u') || !read_hex(low) || low < 0xDC00 || low >= 0xE000)
                return false;
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
        }
        boost::locale::utf::utf_traits<char>::encode(code, std::back_inserter(result));
        return true;
    }

    bool read_hex(unsigned &code) {
        for (int i = 0; i < 4; ++i) {
            int const c = next();
            if (c >= '0' && c <= '9')
                code = code * 16 + static_cast<unsigned>(c - '0');
            else if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f')
                code = code * 16 + static_cast<unsigned>((c | 0x20) - 'a' + 10);
            else
                return false;
        }
        return true;
    }

    static bool is_utf8(std::string const &text) {
        auto const end = text.end();
        for (auto at = text.begin(); at != end;)
            if (!boost::locale::utf::is_valid_codepoint(
                    boost::locale::utf::utf_traits<char>::decode(at, end)))
                return false;
        return true;
    }

    std::streambuf &text_;
    std::istream numbers_;  // reads numbers from the same text
    int line_ = 1;
    int depth_ = 0;
};

bool load_from(std::streambuf &text, value &result, bool full, int *line) {
    parser parser(text);
    value read;
    if (!parser.read(read) || (full && !parser.at_end())) {
        if (line)
            *line = parser.line();
        return false;
    }
    result.swap(read);
    return true;
}

}  // namespace

bool value::load(std::istream &in, bool full, int *line) {
    return load_from(*in.rdbuf(), *this, full, line);
}

bool value::load(char const *&begin, char const *end, bool full, int *line) {
    memory_buffer text(begin, end);
    bool const loaded = load_from(text, *this, full, line);
    begin = text.position();
    return loaded;
}

std::istream &operator>>(std::istream &in, value &v) {
    if (!v.load(in, false))
        in.setstate(std::ios::failbit);
    return in;
}

}  // namespace cppcms::json
