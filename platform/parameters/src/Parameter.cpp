#include "parameters/Parameter.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace prm {

namespace {

template <typename Number>
std::string Format(Number number) {
    std::array<char, 32> text{};
    auto const end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return std::string(text.data(), end);
}

template <typename Number>
bool Parse(std::string_view text, Number &number) {
    Number parsed{};
    char const *const end = text.data() + text.size();
    auto const [stop, error] = std::from_chars(text.data(), end, parsed);
    if (error != std::errc() || stop != end)
        return false;
    number = parsed;
    return true;
}

template <typename Number>
bool Reform(std::string &text) {
    Number number{};
    if (!Parse(text, number))
        return false;
    text = Format(number);
    return true;
}

bool IsControl(char c) {
    auto const byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

}  // namespace

std::string_view NormalKey(std::string_view key) {
    key.remove_prefix(std::min(key.find_first_not_of('/'), key.size()));
    if (key.size() > maxKeyLength || std::any_of(key.begin(), key.end(), IsControl))
        return {};
    return key;
}

std::string FormatNumber(int number) {
    return Format(number);
}

std::string FormatNumber(float number) {
    return Format(number);
}

bool ParseNumber(std::string_view text, int &number) {
    return Parse(text, number);
}

bool ParseNumber(std::string_view text, float &number) {
    return Parse(text, number);
}

bool MakeCanonical(Value &value) {
    switch (value.type) {
        case Type::Integer:
            return Reform<int>(value.text);
        case Type::Float:
            return Reform<float>(value.text);
        default:
            return true;
    }
}

}  // namespace prm
