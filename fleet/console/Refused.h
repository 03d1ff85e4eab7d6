#pragma once

#include <cppcms/json.h>

#include <stdexcept>
#include <string>

namespace fleet::console {

/// What somebody asks for is not done: for whoever asked.
class Refused : public std::runtime_error {
  public:
    /// \a reasons: by key, or undefined.
    Refused(std::string code, std::string const &message, cppcms::json::value reasons = {})
        : std::runtime_error(message), _code(std::move(code)), _reasons(std::move(reasons)) {}
    std::string const &Code() const { return _code; }
    cppcms::json::value const &Reasons() const { return _reasons; }

  private:
    std::string _code;
    cppcms::json::value _reasons;
};

}  // namespace fleet::console
