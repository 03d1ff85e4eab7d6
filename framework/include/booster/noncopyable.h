#pragma once

namespace booster {

/// Base of classes whose objects can be neither copied nor assigned.
class noncopyable {
  public:
    noncopyable(noncopyable const &) = delete;
    noncopyable &operator=(noncopyable const &) = delete;

  protected:
    noncopyable() = default;
    ~noncopyable() = default;
};

}  // namespace booster
