#pragma once

#include <string>

namespace booster::locale::impl {

/// Which of its forms a language uses for a number of things: the C expression of a catalogue's head, such as
/// "n != 1".
class plural_rule {
  public:
    /// Throws std::runtime_error where \a expression is none.
    explicit plural_rule(std::string const &expression);

    /// Number of the form, from 0.
    unsigned long operator()(unsigned long n) const;

  private:
    std::string expression_;
};

}  // namespace booster::locale::impl
