#include <fcntl.h>
#include <gtest/gtest.h>
#include <shell/Shell.h>
#include <sys/wait.h>
#include <vnt_util/GlobalLock.h>
#include <vnt_util/system.h>

#include "tests/unit/platform/SignalDisposition.h"
#include "tests/unit/platform/TemporaryFolder.h"

namespace {

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
    EXPECT_EQ(shell::Run("(exit 3); exit 4"), W_EXITCODE(4, 0));
    EXPECT_EQ(shell::Run("nonsense-of-a-command 2>/dev/null"), W_EXITCODE(127, 0));
    EXPECT_EQ(shell::Run("echo '"), W_EXITCODE(2, 0));
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
    // Signals 32 and 33 belong to the C library, which keeps them ignored.
    constexpr unsigned long long internal = 3ULL << 31;
    EXPECT_EQ(SignalsOfCommand("SigBlk"), 0u);
    EXPECT_EQ(SignalsOfCommand("SigIgn") & ~internal, 0u);
}

TEST_P(Command, InheritsNoDescriptorOfOurs) {
    std::string before;
    std::string after;
    std::string const list = "sh -c 'ls /proc/$$/fd; true'";
    vnt_util::system::exec(list, before);
    int const descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::shell::Process running("sleep 0.2");
    vnt_util::system::exec(list, after);
    ::close(descriptor);
    EXPECT_EQ(after, before);
}

TEST(Barcode, IsKeptInAFile) {
    TemporaryFolder const folder;
    std::string const file = folder / "asn";
    ::setenv("BARCODE_ASN_FILE", file.c_str(), 1);
    int status = 5;
    EXPECT_EQ(vnt_util::system::GetBarcodeASN(&status), "");
    EXPECT_EQ(status, -1);
    EXPECT_TRUE(vnt_util::system::SetBarcodeASN("1234567890"));
    EXPECT_EQ(vnt_util::system::GetBarcodeASN(&status), "1234567890");
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(vnt_util::system::SetBarcodeASN("two\nlines"));
    folder.File("asn", " \t 42 \r\nsecond line\n");
    EXPECT_EQ(vnt_util::system::GetBarcodeASN(nullptr), "42");
    ::setenv("BARCODE_ASN_FILE", "/proc/none/asn", 1);
    EXPECT_FALSE(vnt_util::system::SetBarcodeASN("1234567890"));
    ::unsetenv("BARCODE_ASN_FILE");
}

TEST(GlobalLock, ClosesItsDescriptor) {
    int const descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    { vnt_util::GlobalLock const lock(descriptor); }
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

}  // namespace
