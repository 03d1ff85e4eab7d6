#pragma once

#include <iosfwd>
#include <string>

namespace cppcms::util {

/// \a text safe to stand in HTML text and quoted attributes: `< > & " '` as entities.
std::string escape(std::string const &text);
void escape(char const *begin, char const *end, std::ostream &out);

/// \a text with all but letters, digits and `-_.~` as `%xx`.
std::string urlencode(std::string const &text);
void urlencode(char const *begin, char const *end, std::ostream &out);

/// Undoes the encoding of a query: `+` is a blank, `%XX` a byte; the percent sign of anything else is
/// dropped.
std::string urldecode(std::string const &text);
std::string urldecode(char const *begin, char const *end);

}  // namespace cppcms::util
