#pragma once

#include <booster/noncopyable.h>

#include <atomic>
#include <memory>

namespace cppcms::impl {

/// A bounded number of places, for what only so many may do at once.
class places : public booster::noncopyable {
  public:
    explicit places(int number) : free_(number) {}

    /// A place, for as long as the result lives; a null pointer where none is free.
    std::shared_ptr<void> enter() {
        if (free_.fetch_sub(1) > 0)
            return {this, [](places *p) { ++p->free_; }};
        ++free_;
        return nullptr;
    }

  private:
    std::atomic<int> free_;
};

}  // namespace cppcms::impl
