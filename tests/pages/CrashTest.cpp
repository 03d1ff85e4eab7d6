#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "tests/pages/support/OnTrial.h"

namespace pages {

namespace {

constexpr char armed[] = "/tmp/trial/armed";

/// More than a save or a taking back has.
constexpr int mostCalls = 300;

/// Programs end at each so manyth system call; CRASH_STEP=1 tries all.
int Step() {
    char const *const step = std::getenv("CRASH_STEP");
    return step ? std::atoi(step) : 7;
}

class CrashTest : public OnTrial {
  protected:
    CrashTest() : OnTrial("60") {}

    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "a sanitizer wants to be the first library of a program";
#endif
    }

    static std::vector<std::string> Endable() {
        return {"LD_PRELOAD=" END_AT_LIBRARY, std::string("END_ARMED=") + armed};
    }
    /// Lets a sound guard end what is on trial.
    void ComesBack() const {
        if (!std::filesystem::exists(trialFile))
            return;
        std::string file = device::ReadFile(trialFile);
        if (std::size_t const place = file.find("asked 0"); place != std::string::npos)
            device::WriteFile(trialFile, file.replace(place, 7, "asked 1"));
        device::Process const guard(configuration, {}, guardProgram);
        EXPECT_TRUE(device::WaitForText(trialFile, "state returned")) << device::ReadFile(trialFile);
    }
};

}  // namespace

TEST_F(CrashTest, AServiceThatEndsWhileItSavesLeavesAllOldOrAllNewOnTrial) {
    int points = 0;
    for (int call = 1;; call += Step()) {
        SCOPED_TRACE(call);
        ASSERT_LT(call, mostCalls) << "it never gets to the end";
        Reset();
        device::Process service(configuration, Endable());
        device::Up(address);
        device::WriteFile(armed, std::to_string(call));
        AddRule();
        std::filesystem::remove(armed);
        bool const survived = service.Wait(0) == -1;
        if (survived && Keys() == 2) {
            ComesBack();
            EXPECT_EQ(Keys(), 0U);
            break;
        }
        ++points;
        if (Keys() != 0) {
            EXPECT_TRUE(std::filesystem::exists(trialFile)) << "what is stored must be on trial";
        }
        ComesBack();
        EXPECT_EQ(Keys(), 0U);
    }
    std::cout << points << " points of a save\n";
    EXPECT_GE(points, 4);
}

TEST_F(CrashTest, AGuardThatEndsWhileItTakesBackGoesOn) {
    int points = 0;
    for (int call = 1;; call += Step()) {
        SCOPED_TRACE(call);
        ASSERT_LT(call, mostCalls) << "it never gets to the end";
        Reset();
        {
            device::Process const service(configuration);
            device::Up(address);
            AddRule();
        }
        ASSERT_EQ(Keys(), 2U);
        std::string file = device::ReadFile(trialFile);
        device::WriteFile(trialFile, file.replace(file.find("asked 0"), 7, "asked 1"));
        device::WriteFile(armed, std::to_string(call));
        device::Process guard(configuration, Endable(), guardProgram);
        bool const survived = guard.Wait(3) == -1;
        std::filesystem::remove(armed);
        if (survived)
            break;
        ++points;
        ComesBack();
        EXPECT_EQ(Keys(), 0U);
    }
    std::cout << points << " points of a taking back\n";
    EXPECT_GE(points, 4);
}

}  // namespace pages
