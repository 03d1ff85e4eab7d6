#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>

namespace daemons {

/// What a daemon reports at this moment: a file of lines "key = value", read as a whole. What is wrong with
/// it is told on standard error and else ignored, so a daemon always has something to report.
class Report {
  public:
    /// A file that cannot be read makes an empty report.
    explicit Report(std::string path);
    /// Tells the keys that nobody has asked for.
    ~Report();

    Report(Report const &) = delete;
    Report &operator=(Report const &) = delete;

    /// The value of \a key, or \a otherwise where the report does not have it.
    std::string Text(std::string const &key, std::string const &otherwise = {});

    // These read a value into the field of a message and leave the field where there is none.

    /// A number that fits the field.
    template <std::integral Number>
    void Get(std::string const &key, Number &number);
    /// A text; what the field has no room for is cut off.
    template <std::size_t Size>
    void Get(std::string const &key, char (&text)[Size]);
    /// An IPv4 address in dotted notation, into host order.
    void GetAddress(std::string const &key, std::uint32_t &address);

    void Complain(std::string const &key, std::string const &what) const;

  private:
    struct Value {
        std::string text;
        bool used = false;
    };

    std::string const *Find(std::string const &key);

    std::string path_;
    std::map<std::string, Value> values_;
};

template <std::integral Number>
void Report::Get(std::string const &key, Number &number) {
    std::string const *const text = Find(key);
    if (!text)
        return;
    Number parsed{};
    char const *const end = text->data() + text->size();
    auto const [stop, error] = std::from_chars(text->data(), end, parsed);
    if (error == std::errc() && stop == end)
        number = parsed;
    else
        Complain(key, "'" + *text + "' is no number that fits");
}

template <std::size_t Size>
void Report::Get(std::string const &key, char (&text)[Size]) {
    if (std::string const *const value = Find(key)) {
        std::memset(text, 0, Size);
        value->copy(text, Size - 1);
    }
}

}  // namespace daemons
