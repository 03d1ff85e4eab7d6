#pragma once

namespace webconfig::util {

/// A library that is loaded when it is needed: what most devices never do, or not before somebody looks at
/// certain pages, is to take no memory. Never closed: what is behind some libraries does not bear it.
class LateLibrary {
  public:
    /// Loads the library of that file name.
    explicit LateLibrary(char const *name);

    /// Null where there is no such function.
    template <typename Function>
    Function Find(char const *name) {
        return reinterpret_cast<Function>(Address(name));
    }

    /// Whether it is there with all that was looked for. If not, the log says why.
    bool IsComplete() const { return complete_; }

  private:
    void *Address(char const *name);
    void Check(void const *found, char const *name);

    void *const library_;
    bool complete_ = true;
};

/// A member of a struct, behind one of that type with the name "library": a function of it under its own
/// name.
#define WEBCONFIG_LATE_FUNCTION(name) decltype(&::name) name = library.Find<decltype(&::name)>(#name)

}  // namespace webconfig::util
