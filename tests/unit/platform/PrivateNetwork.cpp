#include <gtest/gtest.h>

#include <cstdio>

#include "tests/unit/platform/Namespaces.h"

namespace {

/// Gives the whole program abstract socket addresses of its own, because those of daemons are fixed. Where
/// the kernel does not allow that, tests of the same daemon must not run at once.
class PrivateNetwork : public testing::Environment {
  public:
    void SetUp() override {
        if (!EnterNamespaces(CLONE_NEWNET))
            std::puts("Note: no private network, using the common one");
    }
};

[[maybe_unused]] auto *const environment = testing::AddGlobalTestEnvironment(new PrivateNetwork);

}  // namespace
