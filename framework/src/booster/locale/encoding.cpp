#include "encoding.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <memory>

namespace booster::locale::impl {

namespace {

/// The letters and digits of a name, the former in lower case.
std::string key(std::string const &name) {
    std::string result;
    for (char const c : name) {
        if (c >= 'A' && c <= 'Z')
            result += static_cast<char>(c - 'A' + 'a');
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            result += c;
    }
    return result;
}

constexpr std::size_t failed = static_cast<std::size_t>(-1);

}  // namespace

bool is_same_encoding(std::string const &one, std::string const &other) {
    return key(one) == key(other);
}

std::optional<std::string> convert(std::string text, std::string const &to, std::string const &from) {
    auto *const opened = ::iconv_open(to.c_str(), from.c_str());
    if (opened == reinterpret_cast<iconv_t>(failed))
        return std::nullopt;
    std::unique_ptr<void, int (*)(iconv_t)> const converter(opened, &::iconv_close);

    std::string result;
    char *input = text.data();
    std::size_t rest = text.size();
    for (bool is_flushed = false; !is_flushed;) {
        is_flushed = rest == 0;
        std::array<char, 1024> buffer;
        char *output = buffer.data();
        std::size_t room = buffer.size();
        auto const done = ::iconv(opened, is_flushed ? nullptr : &input, &rest, &output, &room);
        if (done == failed && errno != E2BIG)
            return std::nullopt;
        result.append(buffer.data(), buffer.size() - room);
    }
    return result;
}

}  // namespace booster::locale::impl
