#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>

/// Texts of a catalogue: "context\4text" or "one\0many" gives "translation" or "one\0two\0many"; "" gives
/// the head.
using Texts = std::map<std::string, std::string>;

/// A catalogue as msgfmt writes it.
inline std::string Catalogue(Texts const &texts) {
    auto const number = [](std::size_t value) {
        auto const word = static_cast<std::uint32_t>(value);
        return std::string(reinterpret_cast<char const *>(&word), sizeof(word));
    };
    std::size_t const head = 28;
    std::size_t const table = texts.size() * 8;
    std::string originals;
    std::string translations;
    std::string strings;
    auto const add = [&](std::string &to, std::string const &text) {
        to += number(text.size()) + number(head + 2 * table + strings.size());
        strings += text + '\0';
    };
    for (auto const &[original, translation] : texts) {
        add(originals, original);
        add(translations, translation);
    }
    return number(0x950412de) + number(0) + number(texts.size()) + number(head) + number(head + table) +
           number(0) + number(head + 2 * table) + originals + translations + strings;
}

/// Puts a catalogue where a service with that path looks for it.
inline void Install(std::filesystem::path const &path, std::string const &language, std::string const &domain,
                    std::string_view content) {
    auto const folder = path / language / "LC_MESSAGES";
    create_directories(folder);
    std::ofstream(folder / (domain + ".mo"), std::ios::binary) << content;
}
