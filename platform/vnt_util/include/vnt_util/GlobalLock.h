#pragma once

namespace vnt_util {

/// Owns the descriptor of a lock file and closes it at the end of its life, which also gives up every
/// record lock that this process holds on the file.
class GlobalLock {
  public:
    /// Takes over \a descriptor.
    explicit GlobalLock(int descriptor);
    ~GlobalLock();

    GlobalLock(GlobalLock const &) = delete;
    GlobalLock &operator=(GlobalLock const &) = delete;

  private:
    int descriptor_;
};

}  // namespace vnt_util
