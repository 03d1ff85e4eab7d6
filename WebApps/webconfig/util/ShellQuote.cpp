#include "WebApps/webconfig/util/ShellQuote.h"

#include <atomic>
#include <string_view>

namespace webconfig::util {

namespace {

std::atomic<bool> hardened = false;

constexpr std::string_view ordinary =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=.,:/@%";

std::string EscapeInDoubleQuotes(std::string const &value) {
    std::string text;
    for (char const c : value) {
        if (c == '\0')
            continue;
        if (std::string_view("\"\\$`").find(c) != std::string_view::npos)
            text += '\\';
        text += c;
    }
    return text;
}

std::string QuoteUnlessOrdinary(std::string const &value) {
    if (value.find_first_not_of(ordinary) == std::string::npos)
        return value;
    std::string text = "'";
    for (char const c : value) {
        if (c == '\'')
            text += R"('\'')";  // a quote cannot stand between quotes of its kind
        else if (c != '\0')
            text += c;
    }
    return text + '\'';
}

}  // namespace

void HardenShell(bool on) {
    hardened = on;
}

std::string ShellQuote(std::string const &value, ShellPosition position) {
    if (!hardened)
        return value;
    return position == ShellPosition::DoubleQuoted ? EscapeInDoubleQuotes(value) : QuoteUnlessOrdinary(value);
}

}  // namespace webconfig::util
