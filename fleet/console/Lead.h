#pragma once

#include <string>

namespace fleet::console {

/// One console of those with the same store leads: it sends changes and drives rollouts. What tells is a lock
/// that ends with its process, so that the next one follows at once.
class Lead {
  public:
    /// \a path of a file that is made for it.
    explicit Lead(std::string path) : _path(std::move(path)) {}
    ~Lead();
    Lead(Lead const &) = delete;
    Lead &operator=(Lead const &) = delete;

    /// Whether this process leads, from now on if nobody else does. Throws std::system_error.
    bool Has();

  private:
    std::string const _path;
    int _file = -1;
    bool _has = false;
};

}  // namespace fleet::console
