#pragma once

#include <locale>
#include <ostream>
#include <string>

namespace booster::locale {

template <typename Char>
class message_format;

/// The catalogues of a generated locale, one for each domain.
template <>
class message_format<char> : public std::locale::facet {
  public:
    static std::locale::id id;

    /// Id of a domain, -1 for an unknown one.
    virtual int domain(std::string const &name) const = 0;
    /// A translation that lives as long as the locale, a null pointer where there is none. \a context may be
    /// "".
    virtual char const *get(int domain_id, char const *context, char const *text) const = 0;
    /// The form of it for \a n things.
    virtual char const *get(int domain_id, char const *context, char const *single, long long n) const = 0;
};

/// A text that is translated when it is written, by the locale and domain of the stream. Without a catalogue
/// it stays as it is; in a locale that no generator made, without its non-ASCII bytes.
class message {
    /// A text of a program, which is not copied, or another one.
    class part {
      public:
        part() = default;
        part(char const *literal) : literal_(literal) {}
        part(std::string const &text) : literal_(nullptr), copy_(text) {}

        char const *get() const { return literal_ ? literal_ : copy_.c_str(); }

      private:
        char const *literal_ = "";
        std::string copy_;
    };

  public:
    message() = default;
    /// A `char const *` has to outlive the message.
    explicit message(part const &text) : text_(text) {}
    explicit message(part const &context, part const &text) : context_(context), text_(text) {}
    explicit message(part const &single, part const &plural, int n)
        : text_(single), plural_(plural), n_(n), is_counted_(true) {}
    explicit message(part const &context, part const &single, part const &plural, int n)
        : context_(context), text_(single), plural_(plural), n_(n), is_counted_(true) {}

    /// By the global locale.
    operator std::string() const { return str(); }
    std::string str() const { return str(std::locale()); }
    std::string str(std::locale const &locale) const { return str(locale, 0); }
    std::string str(std::locale const &locale, int domain_id) const;

    friend std::ostream &operator<<(std::ostream &out, message const &message);

  private:
    /// \a buffer gets what has to be put together.
    char const *find(std::locale const &locale, int domain_id, std::string &buffer) const;

    part context_;
    part text_;
    part plural_;
    int n_ = 0;
    bool is_counted_ = false;
};

/// translate(text), (context, text), (single, plural, n) or (context, single, plural, n)
template <typename... Parts>
message translate(Parts const &...parts) {
    return message(parts...);
}

}  // namespace booster::locale
