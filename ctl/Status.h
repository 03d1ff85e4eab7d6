#pragma once

#include <stdexcept>
#include <string>

namespace ctl {

/// Exit statuses, which scripts rely on: docs/api.md.
enum Status {
    Done = 0,           ///< or there was nothing to do
    Refused = 1,        ///< a key, a value or a number is wrong: nothing was stored
    Usage = 2,          ///< the command line, or a file that it names
    Unreachable = 3,    ///< no answer, or one that cannot be trusted
    NotAuthorised = 4,  ///< a wrong log-in, or not root
    Conflict = 5,       ///< something else has happened since
    Differs = 6,        ///< of "diff": the device has other values
    Failed = 7,         ///< the device could not; its log tells more
    Busy = 8,           ///< the device saves something else: to be tried again
};

/// Ends the program with a status, and a text for people.
class Problem : public std::runtime_error {
  public:
    Problem(Status status, std::string const &text) : std::runtime_error(text), _status(status) {}
    Status ExitStatus() const { return _status; }

  private:
    Status _status;
};

}  // namespace ctl
