#pragma once

#include <booster/backtrace.h>

#include <cstring>
#include <string>

namespace cppcms {

/// What the framework throws.
class cppcms_error : public booster::runtime_error {
  public:
    explicit cppcms_error(std::string const &message) : booster::runtime_error(message) {}
    /// `MESSAGE:` followed by the system's text of the error number \a code.
    cppcms_error(int code, std::string const &message)
        : booster::runtime_error(message + ':' + std::strerror(code)) {}
};

}  // namespace cppcms
