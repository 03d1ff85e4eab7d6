#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <shell/Shell.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vnt_util/system.h>

#include <array>
#include <chrono>
#include <future>
#include <thread>

#include "tests/unit/platform/SignalDisposition.h"

namespace {

using namespace std::chrono_literals;

/// Commands report the same whether or not the kernel keeps the status of children.
class Command : public testing::TestWithParam<bool> {
    SignalDisposition const children_{SIGCHLD, GetParam() ? SIG_IGN : SIG_DFL};
};

INSTANTIATE_TEST_SUITE_P(, Command, testing::Bool(), [](auto const &info) {
    return info.param ? "ChildrenIgnored" : "ChildrenWaitedFor";
});

TEST_P(Command, ReportsItsStatus) {
    EXPECT_EQ(shell::Run("true"), 0);
    EXPECT_EQ(shell::Run("exit 3"), W_EXITCODE(3, 0));
    EXPECT_EQ(shell::Run("nonsense-of-a-command 2>/dev/null"), W_EXITCODE(127, 0));
}

TEST_P(Command, GivesOutputAndStatus) {
    std::string output = "old";
    EXPECT_EQ(vnt_util::system::exec("echo 'a \"b\"'; echo err >&2; exit 7", output), 7);
    EXPECT_EQ(output, "a \"b\"\n");
    EXPECT_EQ(vnt_util::system::exec("kill -9 $$", output), GetParam() ? -1 : 128 + SIGKILL);
    EXPECT_EQ(output, "");
}

TEST_P(Command, EndlessOutputIsCutAndTheCommandEnds) {
    std::string output;
    EXPECT_EQ(vnt_util::system::exec("exec yes", output), 128 + SIGPIPE);
    EXPECT_EQ(output.size(), 1024u * 1024u);
}

/// The set of signals that \a field of the status of a command's process tells.
unsigned long long SignalsOfCommand(std::string const &field) {
    std::string output;
    vnt_util::system::exec("grep " + field + " /proc/self/status", output);
    return std::stoull(output.substr(output.find(':') + 1), nullptr, 16);
}

TEST_P(Command, StartsWithCleanSignals) {
    BlockedSignals const blocked;
    SignalDisposition const ignored(SIGPIPE, SIG_IGN);
    // From 32 on they belong to the C library, and to an emulator, which keep some ignored.
    constexpr unsigned long long ordinary = (1ULL << 31) - 1;
    EXPECT_EQ(SignalsOfCommand("SigBlk"), 0u);
    EXPECT_EQ(SignalsOfCommand("SigIgn") & ordinary, 0u);
}

TEST_P(Command, InheritsNoDescriptorOfOurs) {
    int const input = ::dup(STDIN_FILENO);
    int const folder = ::open("/", O_RDONLY | O_DIRECTORY);
    ::dup2(folder, STDIN_FILENO);
    std::string const list = "sh -c 'ls -l /proc/$$/fd/0 | grep -c /dev/null; ls -x /proc/$$/fd; true'";
    std::string before;
    std::string after;
    vnt_util::system::exec(list, before);
    ::shell::Process const running("sleep 0.2");  // whose pipes are ours
    vnt_util::system::exec(list, after);
    EXPECT_TRUE(before.starts_with("1\n")) << "its input is not /dev/null";
    EXPECT_EQ(after, before);
    ::dup2(input, STDIN_FILENO);
    ::close(input);
    ::close(folder);
}

/// How long \a function takes.
template <typename Function>
std::chrono::milliseconds TimeOf(Function const &function) {
    auto const start = std::chrono::steady_clock::now();
    function();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

TEST_P(Command, IsEndedAtItsLimitWithItsGroup) {
    std::array<int, 2> held{};  // by all that the command starts
    ASSERT_EQ(::pipe(held.data()), 0);
    char const stubborn[] = "(trap '' TERM; exec sleep 30) & exec sleep 30";
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(shell::Run(stubborn, 100ms), -1); }), 10s);
    ::close(held[1]);
    pollfd end{held[0], 0, 0};
    EXPECT_EQ(::poll(&end, 1, 1000), 1) << "something of it is left";
    ::close(held[0]);

    std::string output;
    ::shell::Process late("echo early; trap 'echo asked' TERM; sleep 30", 100ms);
    std::array<char, 16> text{};
    while (auto const count = late.Read(text.data(), text.size()))
        output.append(text.data(), count);
    EXPECT_EQ(output, "early\nasked\n");
    EXPECT_EQ(late.Wait(), -1);
}

TEST_P(Command, EndsBeforeTheDaemonThatItLeavesBehind) {
    std::string output;
    auto const time =
        TimeOf([&] { EXPECT_EQ(vnt_util::system::exec("sleep 30 & echo $!; exit 3", output), 3); });
    EXPECT_LT(time, 5000ms);
    pid_t const daemon = std::stoi(output);
    EXPECT_EQ(::kill(daemon, SIGKILL), 0) << "it has been ended";
}

TEST(Commands, ReportsItsStatusAlsoWhenChildrenAreIgnoredMeanwhile) {
    auto status = std::async(std::launch::async, [] { return shell::Run("sleep 0.3; exit 3"); });
    std::this_thread::sleep_for(100ms);
    SignalDisposition const ignored(SIGCHLD, SIG_IGN);
    EXPECT_EQ(status.get(), W_EXITCODE(3, 0));
}

TEST(Commands, AllCanBeEnded) {
    auto running = std::async(std::launch::async, [] { return shell::Run("sleep 30"); });
    std::this_thread::sleep_for(100ms);
    auto const time = TimeOf([&] {
        shell::EndAllWithin(1500ms);
        shell::EndAllWithin(60s);  // gives no more time
        EXPECT_EQ(shell::Run("exit 3"), W_EXITCODE(3, 0));
        EXPECT_EQ(running.get(), -1);
    });
    EXPECT_LT(time, 2500ms);
    EXPECT_EQ(shell::Run("true"), -1);
    shell::EndNone();
    EXPECT_EQ(shell::Run("true"), 0);
}

}  // namespace
