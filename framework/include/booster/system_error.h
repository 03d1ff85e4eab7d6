#pragma once

#include <booster/backtrace.h>

#include <system_error>

namespace booster::system {

using std::error_category;
using std::error_code;

/// An operating-system call failed. what() is the system's text for the error, behind the prefix if given.
class system_error : public std::system_error, public backtrace {
  public:
    explicit system_error(error_code const &code) : std::system_error(code) {}
    system_error(error_code const &code, std::string const &prefix) : std::system_error(code, prefix) {}
};

}  // namespace booster::system
