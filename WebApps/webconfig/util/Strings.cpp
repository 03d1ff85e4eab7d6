#include "WebApps/webconfig/util/Strings.h"

#include <charconv>

namespace webconfig::util {

std::string StripChars(std::string text, std::string const &characters) {
    std::erase_if(text, containsChars(characters));
    return text;
}

std::string Trim(std::string const &text) {
    constexpr char blanks[] = " \t\r\n";
    auto const first = text.find_first_not_of(blanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

unsigned LeadingNumber(std::string const &text) {
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace webconfig::util
