#include "WebApps/webconfig/util/Strings.h"

namespace webconfig::util {

std::string StripChars(std::string text, std::string const &characters) {
    std::erase_if(text, containsChars(characters));
    return text;
}

}  // namespace webconfig::util
