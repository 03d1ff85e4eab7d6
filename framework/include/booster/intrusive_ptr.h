#pragma once

#include <utility>

namespace booster {

/// Shared ownership of an object that counts its own references: intrusive_ptr_add_ref(T *) and
/// intrusive_ptr_release(T *), found by argument-dependent look-up or in namespace booster.
template <typename T>
class intrusive_ptr {
  public:
    using element_type = T;

    intrusive_ptr(T *pointer = nullptr, bool add_ref = true) : pointer_(pointer) {
        if (pointer_ && add_ref)
            intrusive_ptr_add_ref(pointer_);
    }
    intrusive_ptr(intrusive_ptr const &other) : intrusive_ptr(other.pointer_) {}
    intrusive_ptr(intrusive_ptr &&other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    template <typename U>
    intrusive_ptr(intrusive_ptr<U> const &other) : intrusive_ptr(other.get()) {}
    ~intrusive_ptr() {
        if (pointer_)
            intrusive_ptr_release(pointer_);
    }

    intrusive_ptr &operator=(intrusive_ptr other) noexcept {
        swap(other);
        return *this;
    }
    intrusive_ptr &operator=(T *pointer) {
        intrusive_ptr(pointer).swap(*this);
        return *this;
    }

    T *get() const noexcept { return pointer_; }
    T &operator*() const noexcept { return *pointer_; }
    T *operator->() const noexcept { return pointer_; }
    explicit operator bool() const noexcept { return pointer_ != nullptr; }
    void swap(intrusive_ptr &other) noexcept { std::swap(pointer_, other.pointer_); }

  private:
    T *pointer_;
};

template <typename T, typename U>
bool operator==(intrusive_ptr<T> const &a, intrusive_ptr<U> const &b) noexcept {
    return a.get() == b.get();
}

template <typename T, typename U>
bool operator==(intrusive_ptr<T> const &a, U *b) noexcept {
    return a.get() == b;
}

template <typename T, typename U>
bool operator<(intrusive_ptr<T> const &a, intrusive_ptr<U> const &b) noexcept {
    return a.get() < b.get();
}

template <typename T>
void swap(intrusive_ptr<T> &a, intrusive_ptr<T> &b) noexcept {
    a.swap(b);
}

}  // namespace booster
