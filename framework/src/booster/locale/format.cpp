#include <booster/locale/format.h>
#include <booster/locale/formatting.h>

#include <algorithm>
#include <charconv>
#include <sstream>
#include <utility>

namespace booster::locale {

namespace {

constexpr int max_width = 1000;  // so that no catalogue can ask for more than a page takes

/// The number that \a text is, 0 for none.
int number(std::string_view text) {
    int value = 0;
    auto const [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool const is_number = problem == std::errc() && end == text.data() + text.size();
    return is_number ? std::clamp(value, 0, max_width) : 0;
}

/// What comes before the first \a separator, which is taken away with it.
std::string_view take(std::string_view &text, char separator) {
    auto const end = std::min(text.find(separator), text.size());
    auto const first = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return first;
}

void apply(std::ostream &out, std::string_view name, std::string_view value) {
    if (name == "w" || name == "width")
        out.width(number(value));
    else if (name == "p" || name == "precision")
        out.precision(number(value));
    else if (name == "<" || name == "left")
        out.setf(std::ios_base::left, std::ios_base::adjustfield);
    else if (name == ">" || name == "right")
        out.setf(std::ios_base::right, std::ios_base::adjustfield);
}

}  // namespace

std::string format::str(std::locale const &locale) const {
    std::ostringstream out;
    out.imbue(locale);
    write(out);
    return std::move(out).str();
}

void format::write(std::ostream &out) const {
    auto const *const translated = std::get_if<message>(&text_);
    std::string const text = translated ? translated->str(out.getloc(), ios_info::get(out).domain_id())
                                        : std::get<std::string>(text_);
    std::string_view rest = text;
    while (!rest.empty()) {
        auto const plain = std::min(rest.find_first_of("{}"), rest.size());
        out.write(rest.data(), static_cast<std::streamsize>(plain));
        rest.remove_prefix(plain);
        if (rest.starts_with("{{") || rest.starts_with("}}")) {
            out.put(rest.front());
            rest.remove_prefix(2);
        } else if (rest.starts_with('{')) {
            rest.remove_prefix(1);
            write_place(out, take(rest, '}'));
        } else if (!rest.empty()) {
            out.put(rest.front());
            rest.remove_prefix(1);
        }
    }
}

void format::write_place(std::ostream &out, std::string_view place) const {
    auto const index = static_cast<std::size_t>(number(take(place, ',')));
    if (index == 0 || index > values_.size())
        return;
    auto const flags = out.flags();
    auto const precision = out.precision();
    while (!place.empty()) {
        auto option = take(place, ',');
        auto const name = take(option, '=');
        apply(out, name, option);
    }
    auto const &value = values_[index - 1];
    value.write(out, value.object);
    out.flags(flags);
    out.precision(precision);
    out.width(0);
}

}  // namespace booster::locale
