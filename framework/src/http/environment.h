#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace cppcms::impl {

/// The CGI variables of one request, kept in one block of memory.
class environment {
  public:
    /// A variable given twice keeps its first value.
    void add(std::string_view name, std::string_view value);

    /// The value of \a name, "" where it is not set. It is followed by a zero byte, and valid until the next
    /// add().
    std::string_view get(std::string_view name) const;
    std::map<std::string, std::string> all() const;

  private:
    struct variable {
        std::uint32_t name;  // offsets in text_
        std::uint32_t value;
        std::uint32_t end;
    };

    std::string_view name_of(variable const &v) const;
    std::string_view value_of(variable const &v) const;

    std::string text_;
    std::vector<variable> variables_;
};

}  // namespace cppcms::impl
