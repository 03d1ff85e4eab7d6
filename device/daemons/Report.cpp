#include "device/daemons/Report.h"

#include <arpa/inet.h>

#include <fstream>
#include <iostream>
#include <string_view>

namespace daemons {

namespace {

std::string Trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    auto const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

}  // namespace

Report::Report(std::string path) : path_(std::move(path)) {
    std::ifstream file(path_, std::ios::binary);
    if (!file)
        std::cerr << path_ << ": cannot be read\n";
    for (std::string line; std::getline(file, line);) {
        auto const equals = line.find('=');
        std::string const key = Trimmed(std::string_view(line).substr(0, equals));
        if (key.empty() || key.front() == '#')
            continue;
        if (equals == std::string::npos)
            std::cerr << path_ << ": not a line 'key = value': " << line << '\n';
        else
            values_[key] = {Trimmed(std::string_view(line).substr(equals + 1))};
    }
}

Report::~Report() {
    for (auto const &[key, value] : values_)
        if (!value.used)
            Complain(key, "there is no such key");
}

std::string Report::Text(std::string const &key, std::string const &otherwise) {
    std::string const *const text = Find(key);
    return text ? *text : otherwise;
}

void Report::GetAddress(std::string const &key, std::uint32_t &address) {
    std::string const *const text = Find(key);
    in_addr parsed{};
    if (text && ::inet_pton(AF_INET, text->c_str(), &parsed) == 1)
        address = ntohl(parsed.s_addr);
    else if (text)
        Complain(key, "'" + *text + "' is no IPv4 address");
}

void Report::Complain(std::string const &key, std::string const &what) const {
    std::cerr << path_ << ": " << key << ": " << what << '\n';
}

std::string const *Report::Find(std::string const &key) {
    auto const found = values_.find(key);
    if (found == values_.end())
        return nullptr;
    found->second.used = true;
    return &found->second.text;
}

}  // namespace daemons
