#include "WebApps/webconfig/util/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace webconfig::util {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

/// Multi-byte characters by their first byte. The limits of the second byte keep out over-long forms,
/// surrogates, what is beyond U+10FFFF, and the control characters from U+0080 to U+009F.
struct Sequence {
    unsigned char firstFrom, firstTo, secondFrom, secondTo;
    std::size_t length;
};
constexpr Sequence sequences[] = {
    {0xC2, 0xC2, 0xA0, 0xBF, 2}, {0xC3, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool IsWithin(char c, unsigned char from, unsigned char to) {
    auto const byte = static_cast<unsigned char>(c);
    return from <= byte && byte <= to;
}

bool IsContinuation(char c) {
    return IsWithin(c, 0x80, 0xBF);
}

bool IsPlain(char c) {
    return IsWithin(c, 0x20, 0x7E) || c == '\n' || c == '\t' || c == '\r';
}

/// Length of the character that \a bytes, which are not empty, begin with; 0 where they begin with none.
std::size_t CharacterLength(std::string_view bytes) {
    if (IsPlain(bytes[0]))
        return 1;
    auto const sequence = std::find_if(std::begin(sequences), std::end(sequences), [&](Sequence const &s) {
        return IsWithin(bytes[0], s.firstFrom, s.firstTo);
    });
    if (sequence == std::end(sequences) || bytes.size() < sequence->length ||
        !IsWithin(bytes[1], sequence->secondFrom, sequence->secondTo))
        return 0;
    auto const rest = bytes.substr(2, sequence->length - 2);
    return std::all_of(rest.begin(), rest.end(), IsContinuation) ? sequence->length : 0;
}

}  // namespace

std::string CleanText(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        std::size_t const length = CharacterLength(bytes);
        text += length ? bytes.substr(0, length) : replacement;
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

}  // namespace webconfig::util
