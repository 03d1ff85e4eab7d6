#pragma once

#include <map>
#include <string>
#include <string_view>

namespace cppcms::impl {

/// Reads the value of a structured header (`token; name=value; name="quoted"`) piece by piece.
class header_reader {
  public:
    explicit header_reader(std::string_view text) : rest_(text) {}

    void skip_blanks();
    bool at_end() const { return rest_.empty(); }
    /// Skips \a c, if it comes next.
    bool take(char c);
    /// The token that comes next, "" where there is none.
    std::string_view token();
    /// Reads a quoted string, in which a backslash makes the next byte literal. False where it has no end.
    bool quoted(std::string &value);

    /// Reads `; name=value` with a plain or a quoted value; the name comes in lower case.
    bool parameter(std::string &name, std::string &value);

  private:
    std::string_view rest_;
};

std::string to_lower(std::string_view text);
bool equal_ignoring_case(std::string_view a, std::string_view b);
std::string_view trim(std::string_view text);

/// Orders header names without regard to letter case.
struct header_less {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
};

/// Values by the names of their headers.
using header_map = std::map<std::string, std::string, header_less>;

}  // namespace cppcms::impl
