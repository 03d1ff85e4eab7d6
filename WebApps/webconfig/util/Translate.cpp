#include "WebApps/webconfig/util/Translate.h"

#include <booster/locale.h>

#include <utility>

namespace webconfig::util {

namespace {

struct Spoken {
    std::locale locale;
    std::string language;
};

Spoken &Here() {
    thread_local Spoken spoken{std::locale::classic(), ""};
    return spoken;
}

}  // namespace

namespace details {

std::string Filled(std::string const &text, std::initializer_list<std::string> values) {
    booster::locale::format filled(text);
    for (std::string const &value : values)
        filled % value;
    return filled.str(Here().locale);
}

}  // namespace details

std::string Translate(std::string const &english) {
    // Without a catalogue, all that is not ASCII would be left out.
    return Language().empty() ? english : booster::locale::translate(english.c_str()).str(Here().locale);
}

std::string const &Language() {
    return Here().language;
}

std::locale const &Locale() {
    return Here().locale;
}

Speaking::Speaking(std::locale const &locale, std::string language) {
    Here() = {locale, std::move(language)};
}

Speaking::~Speaking() {
    Here() = {std::locale::classic(), ""};
}

}  // namespace webconfig::util
