#include "parameters/ParameterFile.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace prm {

namespace {

constexpr std::string_view fileWord = "file ";

struct Escape {
    char character;
    char letter;
};
constexpr std::array<Escape, 5> escapes{{{'"', '"'}, {'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}}};

void AppendEscaped(std::string &line, char c) {
    for (auto const &escape : escapes) {
        if (escape.character == c) {
            line += '\\';
            line += escape.letter;
            return;
        }
    }
    auto const byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
        line += c;
        return;
    }
    constexpr std::string_view digits = "0123456789abcdef";
    line += "\\x";
    line += digits[byte / 16];
    line += digits[byte % 16];
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (char const c : text)
        AppendEscaped(quoted, c);
    return quoted + '"';
}

/// In octal, four digits at least.
std::string ModeText(unsigned mode) {
    std::array<char, 12> digits{};
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), mode, 8).ptr;
    std::string const text(digits.data(), end);
    return std::string(4 - std::min<std::size_t>(text.size(), 4), '0') + text;
}

std::string TypeText(Value const &value) {
    switch (value.type) {
        case Type::Integer:
            return "i";
        case Type::Float:
            return "f";
        case Type::File:
            return std::string(fileWord) + ModeText(value.mode);
        default:
            return "s";
    }
}

/// Reads one line from left to right.
class LineReader {
  public:
    LineReader(std::string_view line, int number) : rest_(line), number_(number) {}

    Parameter Read() {
        Parameter parameter;
        parameter.key = ReadQuoted("key");
        Expect(',');
        parameter.value.text = ReadQuoted("value");
        Expect(',');
        ReadType(parameter.value);
        if (!MakeCanonical(parameter.value))
            Fail("'" + parameter.value.text + "' is not a value of its type");
        return parameter;
    }

  private:
    [[noreturn]] void Fail(std::string const &reason) const { throw ParameterFileError(number_, reason); }

    void Expect(char wanted) {
        SkipBlanks();
        if (!rest_.starts_with(wanted))
            Fail(std::string("expected ") + wanted);
        rest_.remove_prefix(1);
        SkipBlanks();
    }

    void SkipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t"), rest_.size())); }

    char Take() {
        if (rest_.empty())
            Fail("the closing quote is missing");
        char const c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    std::string ReadQuoted(char const *what) {
        if (!rest_.starts_with('"'))
            Fail(std::string("expected the ") + what + " in double quotes");
        Take();
        std::string text;
        for (char c = Take(); c != '"'; c = Take())
            text += c == '\\' ? ReadEscape() : c;
        return text;
    }

    char ReadEscape() {
        char const letter = Take();
        for (auto const &escape : escapes) {
            if (escape.letter == letter)
                return escape.character;
        }
        unsigned char byte = 0;
        if (letter != 'x' || !ReadHexDigits(byte))
            Fail("unknown escape after \\");
        return static_cast<char>(byte);
    }

    bool ReadHexDigits(unsigned char &byte) {
        if (rest_.size() < 2)
            return false;
        char const *const end = rest_.data() + 2;
        auto const [stop, error] = std::from_chars(rest_.data(), end, byte, 16);
        rest_.remove_prefix(2);
        return error == std::errc() && stop == end;
    }

    void ReadType(Value &value) {
        rest_ = rest_.substr(0, rest_.find_last_not_of(" \t\r") + 1);
        if (rest_ == "i") {
            value.type = Type::Integer;
        } else if (rest_ == "f") {
            value.type = Type::Float;
        } else if (rest_ == "s") {
            value.type = Type::String;
        } else if (rest_.starts_with(fileWord)) {
            value.type = Type::File;
            ReadMode(value);
        } else {
            Fail("expected the type: i, f, s or file MODE");
        }
    }

    void ReadMode(Value &value) {
        rest_.remove_prefix(fileWord.size());
        char const *const end = rest_.data() + rest_.size();
        auto const [stop, error] = std::from_chars(rest_.data(), end, value.mode, 8);
        if (error != std::errc() || stop != end || value.mode > 07777)
            Fail("the file mode is no octal number up to 7777");
    }

    std::string_view rest_;
    int number_;
};

}  // namespace

std::string FormatLine(Parameter const &parameter) {
    return Quoted(parameter.key) + ',' + Quoted(parameter.value.text) + ", " + TypeText(parameter.value);
}

std::vector<Parameter> ReadParameters(std::istream &in, std::size_t most) {
    std::vector<Parameter> parameters;
    std::string line;
    int number = 1;
    for (; std::getline(in, line); ++number) {
        auto const start = line.find_first_not_of(" \t\r");
        if (start == std::string::npos || line[start] == '#')
            continue;
        parameters.push_back(LineReader(std::string_view(line).substr(start), number).Read());
        if (NormalKey(parameters.back().key).empty())
            throw ParameterFileError(number, "'" + parameters.back().key + "' is not a key");
        if (parameters.size() > most)
            throw ParameterFileError(number, "these are too many parameters");
    }
    if (in.bad())
        throw ParameterFileError(number, "cannot be read");
    return parameters;
}

}  // namespace prm
