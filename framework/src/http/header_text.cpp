#include "header_text.h"

#include <algorithm>

namespace cppcms::impl {

namespace {

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

constexpr bool is_token(char c) {
    return c > ' ' && c < '\x7f' && std::string_view("()<>@,;:\\\"/[]?={}").find(c) == std::string_view::npos;
}

}  // namespace

void header_reader::skip_blanks() {
    while (!rest_.empty() && is_blank(rest_.front()))
        rest_.remove_prefix(1);
}

bool header_reader::take(char c) {
    if (rest_.empty() || rest_.front() != c)
        return false;
    rest_.remove_prefix(1);
    return true;
}

std::string_view header_reader::token() {
    auto const end = std::find_if_not(rest_.begin(), rest_.end(), is_token);
    auto const size = static_cast<std::size_t>(end - rest_.begin());
    auto const result = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return result;
}

bool header_reader::quoted(std::string &value) {
    if (!take('"'))
        return false;
    value.clear();
    while (!rest_.empty()) {
        if (take('"'))
            return true;
        if (rest_.front() == '\\' && rest_.size() > 1)
            rest_.remove_prefix(1);
        value += rest_.front();
        rest_.remove_prefix(1);
    }
    return false;
}

bool header_reader::parameter(std::string &name, std::string &value) {
    skip_blanks();
    if (!take(';'))
        return false;
    skip_blanks();
    name = to_lower(token());
    skip_blanks();
    if (name.empty() || !take('='))
        return false;
    skip_blanks();
    if (!rest_.empty() && rest_.front() == '"')
        return quoted(value);
    auto const end = std::min(rest_.find(';'), rest_.size());
    value = trim(rest_.substr(0, end));
    rest_.remove_prefix(end);
    return !value.empty();
}

std::string to_lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lower);
    return result;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trim(std::string_view text) {
    while (!text.empty() && is_blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && is_blank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool header_less::operator()(std::string_view a, std::string_view b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](char x, char y) { return lower(x) < lower(y); });
}

}  // namespace cppcms::impl
