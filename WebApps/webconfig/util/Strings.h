#pragma once

#include <string>
#include <utility>

namespace webconfig::util {

/// Tells whether a character is one of a given set.
class containsChars {
  public:
    explicit containsChars(std::string characters) : characters_(std::move(characters)) {}
    bool operator()(char c) const { return characters_.find(c) != std::string::npos; }

  private:
    std::string characters_;
};

/// \a text without the white space around it.
std::string Trim(std::string const &text);

/// What follows the first \a marker in \a text, up to the first of the characters \a ends. Where none of
/// them follows, or one follows at once, the whole rest. Empty where there is no marker.
std::string TextBetween(std::string const &text, std::string const &marker, std::string const &ends);

/// \a text without any of \a characters.
std::string StripChars(std::string text, std::string const &characters);

/// The decimal number that \a text begins with; 0 where it begins with none, or with one that is too large.
unsigned LeadingNumber(std::string const &text);

/// Whether there are line ends, tabs or other control characters in \a text.
bool HasControls(std::string const &text);

}  // namespace webconfig::util
