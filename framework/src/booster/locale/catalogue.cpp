#include "catalogue.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "encoding.h"

namespace booster::locale::impl {

namespace {

// The head of the file: numbers of four bytes.
constexpr std::uint32_t magic = 0x950412de;
constexpr std::uint32_t foreign_magic = 0xde120495;
constexpr std::size_t revision_at = 4;
constexpr std::size_t count_at = 8;
constexpr std::size_t originals_at = 12;
constexpr std::size_t translations_at = 16;
constexpr std::size_t entry_size = 8;  // length and place of a text

/// What follows \a name in the texts of a catalogue's head, up to one of \a ends.
std::string field(std::string_view head, std::string_view name, char const *ends) {
    auto const begin = head.find(name);
    if (begin == std::string_view::npos)
        return {};
    auto const value = head.substr(begin + name.size());
    return std::string(value.substr(0, value.find_first_of(ends)));
}

/// A null pointer for an empty one, which stands for no translation.
char const *first_form(std::string_view forms) {
    return forms.empty() || forms.front() == '\0' ? nullptr : forms.data();
}

}  // namespace

catalogue::catalogue(std::string content, std::string const &encoding) : content_(std::move(content)) {
    is_foreign_ = number_at(0) == foreign_magic;
    if (number_at(0) != magic)
        throw std::runtime_error("it is no catalogue");
    if (number_at(revision_at) >> 16 != 0)
        throw std::runtime_error("its format is unknown");
    auto const count = number_at(count_at);
    auto const originals = number_at(originals_at);
    auto const translations = number_at(translations_at);
    for (std::size_t i = 0; i < count; ++i) {
        auto const original = text_at(originals + i * entry_size);
        auto const translation = text_at(translations + i * entry_size);
        texts_.emplace(original.substr(0, original.find('\0')), translation);
    }
    read_head(forms("", ""), encoding);
}

std::size_t catalogue::number_at(std::size_t position) const {
    std::uint32_t value = 0;
    if (content_.size() < sizeof(value) || position > content_.size() - sizeof(value))
        throw std::runtime_error("it is cut off");
    std::memcpy(&value, content_.data() + position, sizeof(value));
    return is_foreign_ ? __builtin_bswap32(value) : value;
}

std::string_view catalogue::text_at(std::size_t entry) const {
    auto const length = number_at(entry);
    auto const begin = number_at(entry + 4);
    // The NUL behind it lets every form be used where it is.
    if (begin >= content_.size() || length >= content_.size() - begin || content_[begin + length] != '\0')
        throw std::runtime_error("a text of it is cut off");
    return std::string_view(content_).substr(begin, length);
}

void catalogue::read_head(std::string_view head, std::string const &encoding) {
    if (auto const rule = field(head, "plural=", ";\n"); !rule.empty())
        rule_.emplace(rule);
    auto const charset = field(head, "charset=", " ;\n");
    if (charset.empty() || is_same_encoding(charset, encoding))
        return;
    for (auto &[original, translation] : texts_) {
        auto converted = convert(std::string(translation), encoding, charset);
        if (!converted)
            throw std::runtime_error(
                std::string("it cannot be converted from ").append(charset).append(" to ").append(encoding));
        translation = converted_.emplace_front(*std::move(converted));
    }
}

std::string_view catalogue::forms(char const *context, char const *text) const {
    std::string in_context;
    std::string_view key = text;
    if (*context)
        key = in_context.append(context).append(1, '\4').append(text);
    auto const found = texts_.find(key);
    return found == texts_.end() ? std::string_view() : found->second;
}

char const *catalogue::find(char const *context, char const *text) const {
    return first_form(forms(context, text));
}

char const *catalogue::find(char const *context, char const *single, long long n) const {
    auto found = forms(context, single);
    auto const things = static_cast<unsigned long>(n < 0 ? -n : n);
    for (auto form = rule_ ? (*rule_)(things) : things != 1; form > 0; --form) {
        auto const end = found.find('\0');
        if (end == std::string_view::npos)
            return nullptr;
        found.remove_prefix(end + 1);
    }
    return first_form(found);
}

}  // namespace booster::locale::impl
