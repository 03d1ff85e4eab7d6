#include "WebApps/webconfig/util/Strings.h"

#include <algorithm>
#include <charconv>

namespace webconfig::util {

std::string Trim(std::string const &text) {
    constexpr char blanks[] = " \t\n\v\f\r";
    auto const begin = text.find_first_not_of(blanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::string TextBetween(std::string const &text, std::string const &marker, std::string const &ends) {
    auto const found = text.find(marker);
    if (found == std::string::npos)
        return "";
    std::string const rest = text.substr(found + marker.size());
    auto const end = rest.find_first_of(ends);
    return end == 0 ? rest : rest.substr(0, end);  // never cut to nothing
}

std::string StripChars(std::string text, std::string const &characters) {
    std::erase_if(text, containsChars(characters));
    return text;
}

unsigned LeadingNumber(std::string const &text) {
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

bool HasControls(std::string const &text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; });
}

}  // namespace webconfig::util
