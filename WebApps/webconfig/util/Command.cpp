#include "WebApps/webconfig/util/Command.h"

#include <atomic>
#include <string_view>

namespace webconfig::util {

namespace {

std::atomic<bool> hardened = true;
std::atomic<bool> secretsHidden = false;

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

std::string EscapeInSingleQuotes(std::string const &value) {
    std::string text;
    for (char const c : value) {
        if (c == '\'')
            text += R"('\'')";  // a quote cannot stand between quotes of its kind
        else if (c != '\0')
            text += c;
    }
    return text;
}

}  // namespace

void HardenShell(bool on) {
    hardened = on;
}

void HideSecretsFromCommands(bool on) {
    secretsHidden = on;
}

bool AreSecretsHiddenFromCommands() {
    return secretsHidden;
}

bool IsShellHardened() {
    return hardened;
}

Command &Command::Arg(std::string const &value) {
    bool const plain = !hardened || value.find_first_not_of(ordinary) == std::string::npos;
    return plain ? Append(value) : SingleQuoted(value);
}

Command &Command::SingleQuoted(std::string const &value) {
    return Append('\'' + (hardened ? EscapeInSingleQuotes(value) : value) + '\'');
}

Command &Command::DoubleQuoted(std::string const &value) {
    return Append('"' + (hardened ? EscapeInDoubleQuotes(value) : value) + '"');
}

Command &Command::Then(ConstantText text) {
    return Append(text.Get());
}

Command &Command::Append(std::string const &word) {
    if (!text_.empty())
        text_ += ' ';
    text_ += word;
    return *this;
}

}  // namespace webconfig::util
