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

/// \a text without any of \a characters.
std::string StripChars(std::string text, std::string const &characters);

}  // namespace webconfig::util
