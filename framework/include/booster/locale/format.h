#pragma once

#include <booster/locale/message.h>

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace booster::locale {

/// A text with places for values: `format("{1} of {2,w=5}") % a % b`. {1} is the first value, "{{" a brace.
/// Options are w or width, p or precision, and < or left, > or right. A place without a value stays empty.
class format {
  public:
    format(std::string const &text) : text_(text) {}
    format(message const &text) : text_(text) {}

    /// Keeps a pointer: \a value must outlive the format.
    template <typename T>
    format &operator%(T const &value) {
        values_.push_back({std::addressof(value), [](std::ostream &out, void const *object) {
                               out << *static_cast<T const *>(object);
                           }});
        return *this;
    }

    std::string str() const { return str(std::locale()); }
    std::string str(std::locale const &locale) const;

    friend std::ostream &operator<<(std::ostream &out, format const &format) {
        format.write(out);
        return out;
    }

  private:
    struct value {
        void const *object;
        void (*write)(std::ostream &out, void const *object);
    };

    void write(std::ostream &out) const;
    void write_place(std::ostream &out, std::string_view place) const;

    std::variant<std::string, message> text_;
    std::vector<value> values_;
};

}  // namespace booster::locale
