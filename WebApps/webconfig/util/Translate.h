#pragma once

#include <initializer_list>
#include <locale>
#include <string>
#include <type_traits>

/// What people read on pages, in the language of the request that the thread is at. Log lines, and answers
/// for machines, are in English.
namespace webconfig::util {

/// Marks a text that is translated elsewhere, where it is shown: one of a table, say.
constexpr char const *Translatable(char const *english) {
    return english;
}

namespace details {

inline std::string TextOf(std::string const &value) {
    return value;
}
template <typename Number>
requires std::is_arithmetic_v<Number> std::string TextOf(Number value) {
    return std::to_string(value);
}

std::string Filled(std::string const &text, std::initializer_list<std::string> values);

}  // namespace details

/// \a english in the language at hand, or as it is where no catalogue has it.
std::string Translate(std::string const &english);

/// The same with the values, texts and whole numbers, in the places of {1}, {2} and so on.
template <typename... Values>
std::string Translate(std::string const &english, Values const &...values) {
    return details::Filled(Translate(english), {details::TextOf(values)...});
}

/// A text that both the log, in English, and pages have.
struct Bilingual {
    Bilingual() = default;
    template <typename... Values>
    Bilingual(char const *text, Values const &...values)
        : english(details::Filled(text, {details::TextOf(values)...})), shown(Translate(text, values...)) {}

    /// What is the same in every language: a name, say.
    static Bilingual Name(std::string const &name) {
        Bilingual text;
        text.english = text.shown = name;
        return text;
    }

    bool empty() const { return english.empty(); }

    std::string english;
    std::string shown;  ///< in the language at hand
};

/// The language at hand, as HTML names it, such as "zh-CN"; empty for English.
std::string const &Language();
/// The locale of its texts.
std::locale const &Locale();

/// While this lives, its thread's texts are those of a locale. There is one of them at a time.
class Speaking {
  public:
    Speaking(std::locale const &locale, std::string language);
    ~Speaking();
    Speaking(Speaking const &) = delete;
    Speaking &operator=(Speaking const &) = delete;
};

}  // namespace webconfig::util
