#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr int port = 8096;
std::string const address = "http://127.0.0.1:" + std::to_string(port);
constexpr char trialFile[] = "/tmp/crash/trial";
constexpr char armed[] = "/tmp/crash/armed";
constexpr char guardProgram[] = "/usr/sbin/webconfig-guard";

/// More than a save or a taking back has.
constexpr int mostCalls = 300;

/// Programs end at each so manyth system call; CRASH_STEP=1 tries all.
int Step() {
    char const *const step = std::getenv("CRASH_STEP");
    return step ? std::atoi(step) : 7;
}

/// A rule is stored, and goes back: two keys, one change set, one trial.
class CrashTest : public testing::Test {
  protected:
    CrashTest() { Reset(); }

    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "a sanitizer wants to be the first library of a program";
#endif
    }

    void Reset() const {
        device::Shell("rm -rf /tmp/crash; mkdir /tmp/crash");
        store.Set(
            {{"net/portfwd/tcp/08443/d_port", device::none}, {"net/portfwd/tcp/08443/d_ip", device::none}});
    }
    static std::vector<std::string> Endable() {
        return {"LD_PRELOAD=" END_AT_LIBRARY, std::string("END_ARMED=") + armed};
    }
    static void AddRule() {
        Browser(address).Post("/config/network/port_forwarding", {{"protocol", "tcp"},
                                                                  {"sourcePort", "8443"},
                                                                  {"destinationIP", "192.168.0.33"},
                                                                  {"destinationPort", "443"},
                                                                  {"add", "Add Row"}});
    }
    /// How much of the rule is stored: 0 to 2 keys.
    static std::size_t Keys() {
        return device::Count(device::Shell("prm list net/portfwd/tcp/08443"), "/d_");
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

    std::string const configuration = device::Configuration(
        port,
        R"("history":{"file":"/tmp/crash/history.db"},"trial":{"file":"/tmp/crash/trial","seconds":60},)");
    device::KeptStore const store;
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
