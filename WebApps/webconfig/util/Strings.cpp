#include "WebApps/webconfig/util/Strings.h"

#include <charconv>

namespace webconfig::util {

std::string StripChars(std::string text, std::string const &characters) {
    std::erase_if(text, containsChars(characters));
    return text;
}

unsigned LeadingNumber(std::string const &text) {
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace webconfig::util
