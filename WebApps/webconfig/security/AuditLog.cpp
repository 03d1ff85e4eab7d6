#include "WebApps/webconfig/security/AuditLog.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "WebApps/webconfig/util/Utf8.h"

namespace webconfig::security {

namespace {

constexpr std::uintmax_t window = 256 << 10;  // bytes

/// What each line of ours begins with, behind the time, the host, the facility and the program.
constexpr std::string_view mark = "audit ";

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool Contains(std::string const &text, std::string const &part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char a, char b) { return Lower(a) == Lower(b); }) != text.end();
}

/// The bytes that a word stands for. What is no word of ours stays as it is.
std::string Decoded(std::string_view word) {
    std::string text;
    while (!word.empty()) {
        unsigned byte = 0;
        auto const *const digits = word.data() + 1;
        bool const escaped = word[0] == '%' && word.size() >= 3 &&
                             std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
        text += escaped ? static_cast<char>(byte) : word[0];
        word.remove_prefix(escaped ? 3 : 1);
    }
    std::erase_if(text = util::CleanText(text), [](char c) { return c == '\n' || c == '\r'; });
    return text;
}

std::string_view NextWord(std::string_view &text) {
    auto const end = text.find(' ');
    auto const word = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return word;
}

/// The end of a file: whole lines only, at most a window's worth.
std::optional<std::string> EndOf(std::string const &path) {
    std::error_code problem;
    if (!std::filesystem::is_regular_file(path, problem))  // reading a pipe could last for ever
        return {};
    std::ifstream file(path, std::ios::binary);
    auto const size = std::filesystem::file_size(path, problem);
    if (!file || problem)
        return {};
    std::string text(std::min(size, window), '\0');
    file.seekg(static_cast<std::streamoff>(size - text.size()))
        .read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (text.size() < size)
        text.erase(0, text.find('\n') + 1);
    return text;
}

void AppendEntries(std::string_view text, std::string const &event, std::string const &part, std::size_t most,
                   std::vector<AuditEntry> &entries) {
    while (!text.empty() && entries.size() < most) {
        auto const begin = text.substr(0, text.size() - 1).rfind('\n') + 1;
        auto entry = ReadAuditLine(text.substr(begin));
        text = text.substr(0, begin);
        if (!entry || (!event.empty() && entry->event != event))
            continue;
        std::string const all = entry->result + ' ' + entry->user + ' ' + entry->address + ' ' + entry->page +
                                ' ' + entry->details;
        if (Contains(all, part))
            entries.push_back(std::move(*entry));
    }
}

}  // namespace

std::optional<AuditEntry> ReadAuditLine(std::string_view line) {
    if (line.ends_with('\n'))
        line.remove_suffix(1);
    auto const program = line.find(": ");
    if (program == std::string_view::npos)
        return {};
    line.remove_prefix(program + 2);
    if (!line.starts_with(mark))
        return {};
    line.remove_prefix(mark.size());

    AuditEntry entry;
    struct {
        std::string_view name;
        std::string &value;
    } const fields[] = {{"event", entry.event},     {"result", entry.result}, {"user", entry.user},
                        {"address", entry.address}, {"page", entry.page},     {"time", entry.time}};
    while (!line.empty()) {
        auto const word = NextWord(line);
        auto const equals = word.find('=');
        if (equals == std::string_view::npos)
            continue;
        auto const name = word.substr(0, equals);
        std::string const value = Decoded(word.substr(equals + 1));
        auto const *const field =
            std::find_if(std::begin(fields), std::end(fields), [&](auto const &f) { return f.name == name; });
        if (field == std::end(fields))
            entry.details.append(entry.details.empty() ? "" : "  ").append(name).append("=").append(value);
        else if (field->value.empty())
            field->value = value;
    }
    return entry.event.empty() ? std::nullopt : std::optional(std::move(entry));
}

std::optional<std::vector<AuditEntry>> ReadAudit(std::string const &path, std::string const &event,
                                                 std::string const &text, std::size_t most) {
    auto const newest = EndOf(path);
    if (!newest)
        return {};
    std::vector<AuditEntry> entries;
    AppendEntries(*newest, event, text, most, entries);
    if (entries.size() < most)
        AppendEntries(EndOf(path + ".0").value_or(""), event, text, most, entries);
    return entries;
}

}  // namespace webconfig::security
