#pragma once

#include <cppcms/localization.h>

#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <type_traits>

/// Filters are written to a stream: `out << filters::escape(x)` writes what `out << x` would, changed.
namespace cppcms::filters {

namespace details {

/// Whatever changes a text: its own is had without a stream.
struct filter {};

}  // namespace details

/// Anything that can be written to a stream. Keeps a pointer: the object must outlive it.
class streamable {
  public:
    template <typename T>
    streamable(T const &object)
        : object_(std::addressof(object)), write_(&write_object<T>), read_(&read_object<T>) {}
    streamable(std::string const &text)
        : object_(&text), write_(&write_object<std::string>), read_(&read_text) {}
    streamable(char const *text) : object_(text), write_(&write_c_text), read_(&read_c_text) {}

    void operator()(std::ostream &out) const { write_(out, object_); }
    /// The text that a stream with the format and locale of \a format would get.
    std::string get(std::ios &format) const { return read_(format, object_); }

  private:
    template <typename T>
    static void write_object(std::ostream &out, void const *object) {
        out << *static_cast<T const *>(object);
    }
    template <typename T>
    static std::string read_object(std::ios &format, void const *object) {
        if constexpr (std::is_base_of_v<details::filter, T>)
            return static_cast<T const *>(object)->get(format);
        std::ostringstream text;
        text.copyfmt(format);
        write_object<T>(text, object);
        return std::move(text).str();
    }
    static std::string read_text(std::ios &, void const *object) {
        return *static_cast<std::string const *>(object);
    }
    static void write_c_text(std::ostream &out, void const *text) { out << static_cast<char const *>(text); }
    static std::string read_c_text(std::ios &, void const *text) { return static_cast<char const *>(text); }

    void const *object_;
    void (*write_)(std::ostream &, void const *);
    std::string (*read_)(std::ios &, void const *);
};

inline std::ostream &operator<<(std::ostream &out, streamable const &object) {
    object(out);
    return out;
}

namespace details {

/// A filter of texts.
template <std::string (*Change)(std::string text)>
class text_filter : public filter {
  public:
    text_filter(streamable const &object) : object_(object) {}

    std::string get(std::ios &format) const { return Change(object_.get(format)); }

    friend std::ostream &operator<<(std::ostream &out, text_filter const &filter) {
        return out << filter.get(out);
    }

  private:
    streamable object_;
};

std::string unchanged(std::string text);
std::string escaped(std::string text);
std::string urlencoded(std::string text);
std::string jsescaped(std::string text);

}  // namespace details

/// As it is.
using raw = details::text_filter<details::unchanged>;
/// For HTML text and attributes, see util::escape().
using escape = details::text_filter<details::escaped>;
/// For URLs, see util::urlencode().
using urlencode = details::text_filter<details::urlencoded>;
/// For strings of either quote in scripts. `<` and `/` pass: a text with `</script>` is not safe.
using jsescape = details::text_filter<details::jsescaped>;

using locale::format;
using locale::translate;

}  // namespace cppcms::filters
