#include <booster/locale/formatting.h>
#include <booster/locale/message.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <typeinfo>

namespace booster::locale {

std::locale::id message_format<char>::id;

namespace {

int domain_place() {
    static int const place = std::ios_base::xalloc();
    return place;
}

/// Null in a locale that no generator made, which is rare enough to be told by an exception.
message_format<char> const *catalogues_of(std::locale const &locale) {
    try {
        return &std::use_facet<message_format<char>>(locale);
    } catch (std::bad_cast const &) {
        return nullptr;
    }
}

}  // namespace

int ios_info::domain_id() const {
    return static_cast<int>(stream_.iword(domain_place()));
}

void ios_info::domain_id(int id) {
    stream_.iword(domain_place()) = id;
}

char const *message::find(std::locale const &locale, int domain_id, std::string &buffer) const {
    char const *const context = context_.get();
    char const *const text = text_.get();
    char const *const original = is_counted_ && n_ != 1 ? plural_.get() : text;
    if (!*text)  // names the head of a catalogue
        return original;
    auto const *const catalogues = catalogues_of(locale);
    if (!catalogues) {
        std::string_view const bytes = original;
        std::copy_if(bytes.begin(), bytes.end(), std::back_inserter(buffer),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        return buffer.c_str();
    }
    char const *const translation = is_counted_ ? catalogues->get(domain_id, context, text, n_)
                                                : catalogues->get(domain_id, context, text);
    return translation ? translation : original;
}

std::string message::str(std::locale const &locale, int domain_id) const {
    std::string buffer;
    return find(locale, domain_id, buffer);
}

std::ostream &operator<<(std::ostream &out, message const &message) {
    std::string buffer;
    return out << message.find(out.getloc(), ios_info::get(out).domain_id(), buffer);
}

}  // namespace booster::locale
