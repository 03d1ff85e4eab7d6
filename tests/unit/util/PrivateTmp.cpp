#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/unit/platform/Namespaces.h"

namespace {

/// Gives the whole program an empty /tmp of its own, because the flag files there have fixed names, and a
/// parameter store in it. Where the kernel does not allow that, the tests work in the common /tmp.
class PrivateTmp : public testing::Environment {
  public:
    void SetUp() override {
        if (!MountTmp())
            std::puts("Note: no private /tmp, using the common one");
        store_ = "/tmp/webconfig-util-tests." + std::to_string(::getpid()) + ".db";
        ::setenv("PRM_STORE", store_.c_str(), 1);
    }

    void TearDown() override {
        for (char const *const suffix : {"", "-wal", "-shm"})
            ::unlink((store_ + suffix).c_str());
    }

  private:
    static bool MountTmp() {
        return EnterNamespaces(CLONE_NEWNS) &&
               ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               ::mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777") == 0;
    }

    std::string store_;
};

[[maybe_unused]] auto *const environment = testing::AddGlobalTestEnvironment(new PrivateTmp);

}  // namespace
