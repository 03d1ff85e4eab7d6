#include "WebApps/webconfig/util/Util.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "WebApps/webconfig/util/FolderStates.h"
#include "WebApps/webconfig/util/Partition.h"
#include "tests/unit/platform/SignalDisposition.h"
#include "tests/unit/platform/TemporaryFolder.h"
#include "tests/unit/util/LogCapture.h"

namespace {

std::vector<std::string> synced;

}  // namespace

/// In the place of the C library's.
extern "C" int fsync(int file) {
    synced.push_back(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file)));
    return static_cast<int>(::syscall(SYS_fsync, file));
}

namespace {

using namespace webconfig::util;
namespace fs = std::filesystem;

TEST(Commands, OutputIsCutAtTheMaximum) {
    std::pair<unsigned, char const *> const cases[] = {
        {10, "0123456789"}, {9, "012345..."}, {4, "0..."}, {3, "012"}, {0, ""}};
    for (auto const &[maximum, output] : cases)
        EXPECT_EQ(ShellCommand("printf 0123456789", maximum), output);
    EXPECT_EQ(ShellCommand("yes", 5), "y\n...");
}

TEST(Commands, TheLogTellsWhichCommandHadToBeEndedButNoSecrets) {
    LogCapture log(booster::log::error);
    EndCommandsWithin(std::chrono::seconds(0));
    EXPECT_EQ(RunCommand("cryptpw secret"), -1);
    EXPECT_EQ(ShellCommand("date", 10), "");
    AllowCommands();
    EXPECT_EQ(RunCommand("exit 1"), W_EXITCODE(1, 0));
    EXPECT_EQ(log.Take(),
              std::vector<std::string>(
                  {"error: No result of the command cryptpw (and 7 characters) after 0 s (Commands)",
                   "error: No result of the command date after 0 s (Commands)"}));
}

TEST(Settings, EnvironmentWinsUnlessItIsEmpty) {
    cppcms::json::value settings;
    settings["a"]["text"] = "from settings";
    ::setenv("UTIL_TEST", "", 1);
    EXPECT_EQ(EnvOrSettings("UTIL_TEST", "a.text", settings), "from settings");
    EXPECT_EQ(EnvOrSettings("UTIL_TEST", "a.none", settings), "");
    ::setenv("UTIL_TEST", "from environment", 1);
    EXPECT_EQ(EnvOrSettings("UTIL_TEST", "a.text", settings), "from environment");
    ::unsetenv("UTIL_TEST");
}

TEST(Partition, FiguresAreThoseOfExtendedFileSystems) {
    struct {
        long type;
        unsigned long blocks;
        unsigned long freeBlocks;
        long blockSize;
        std::optional<std::string> text;
    } const cases[] = {
        {0xEF53, 1000000, 250000, 4096, "Log (1.0GB free, 75% used)"},
        {0xEF53, 3, 1, 1024, "Log (0.0GB free, 66% used)"},
        {0xEF53, 4000000000, 4000000000, 4096, "Log (2970.8GB free, 0% used)"},  // 32 bits of kilobytes
        {0xEF53, 0, 0, 4096, std::nullopt},
        {0x01021994, 1000, 500, 4096, std::nullopt},
    };
    for (auto const &c : cases) {
        struct statfs figures {};
        figures.f_type = c.type;
        figures.f_blocks = c.blocks;
        figures.f_bfree = c.freeBlocks;
        figures.f_bsize = c.blockSize;
        EXPECT_EQ(PartitionText("Log", figures), c.text) << c.blocks;
    }
    EXPECT_EQ(PartitionText("Log", "/none"), std::nullopt);
}

class Files : public testing::Test {
  public:
    static std::string Make(fs::path const &path, std::string const &content) {
        std::ofstream(path) << content;
        return path;
    }

    TemporaryFolder const inTmp_;
    TemporaryFolder const inMemory_{"/dev/shm"};
    fs::path const folder_ = inTmp_.Path();
    fs::path const other_ = inMemory_.Path();
};

TEST_F(Files, MoveReplacesAlsoBetweenFileSystemsWhateverTheNames) {
    SignalDisposition const ignored(SIGCHLD, SIG_IGN);
    char const hostile[] = "$(touch broken) `id` \"$HOME\"\\ '\n";
    for (fs::path const &target : {folder_ / "to here", other_ / "to here", other_ / hostile}) {
        std::string const source = Make(folder_ / "\"; from \\", "new");
        Make(target, "old");
        synced.clear();
        EXPECT_TRUE(MoveFile(source, target)) << target;
        std::vector<std::string> wanted = {source, target, target.parent_path()};
        if (target.parent_path() == folder_)
            wanted.erase(wanted.begin() + 1);  // renamed
        EXPECT_EQ(synced, wanted);
        EXPECT_FALSE(FileExists(source));
        EXPECT_EQ(FileSize(target), 3u);
    }
    std::string const source = Make(folder_ / "from", "kept");
    EXPECT_FALSE(MoveFile(source, folder_ / "none/to"));
    fs::create_directories(other_ / "taken/from");
    EXPECT_FALSE(MoveFile(source, other_ / "taken"));  // mv would have to replace a folder
    EXPECT_EQ(FileSize(source), 4u);
    EXPECT_FALSE(MoveFile(folder_ / "none", folder_ / "to"));
}

TEST_F(Files, PrivateOnesFollowNoLinkAndReplaceNothing) {
    auto const mode = [](fs::path const &path) {
        return static_cast<unsigned>(fs::status(path).permissions());
    };
    fs::create_symlink(folder_ / "victim", folder_ / "dangling");
    fs::create_symlink(Make(folder_ / "taken", "kept"), folder_ / "link");
    for (char const *name : {"dangling", "link", "taken", ".", "none/file"}) {
        EXPECT_FALSE(CreatePrivately(folder_ / name)) << name;
        EXPECT_FALSE(WritePrivately(folder_ / name, "new")) << name;
    }
    EXPECT_FALSE(FileExists(folder_ / "victim"));
    EXPECT_EQ(FileSize(folder_ / "taken"), 4u);

    ::mode_t const before = ::umask(0);
    fs::path kept;
    {
        PrivateFolder const own;
        EXPECT_TRUE(WritePrivately(own / "file", "text"));
        EXPECT_EQ(FileSize(own / "file"), 4u);
        EXPECT_EQ(mode(own / "file"), 0600u);
        kept = fs::path(own / "").parent_path();
        EXPECT_EQ(kept.parent_path(), "/tmp");
        EXPECT_EQ(mode(kept), 0700u);
    }
    EXPECT_FALSE(FileExists(kept));
    ::umask(before);
}

TEST_F(Files, FindSelectsByTypeAndPattern) {
    for (char const *name : {"a.so", "b.so", "b.txt"})
        Make(folder_ / name, "");
    fs::create_directory(folder_ / "d.so");
    fs::create_symlink("a.so", folder_ / "l.so");
    std::tuple<FindFilesType, char const *, std::vector<std::string>> const cases[] = {
        {FindFilesType::Files, "so", {"a.so", "b.so"}},
        {FindFilesType::Files, "^(a|b)\\.so$", {"a.so", "b.so"}},
        {FindFilesType::Directories, ".*", {"d.so"}},
        {FindFilesType::All, "", {".", "..", "a.so", "b.so", "b.txt", "d.so", "l.so"}},
    };
    for (auto const &[type, pattern, found] : cases) {
        auto names = FindFiles(folder_, type, pattern);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, found) << pattern;
    }
    EXPECT_TRUE(FindFiles(folder_ / "none", FindFilesType::All, ".*").empty());
}

/// Removes the flag and firmware files before and after each test.
class Flags : public testing::Test {
  public:
    Flags() { Clear(); }
    ~Flags() override { Clear(); }

  protected:
    static void Clear() {
        for (char const *path :
             {"/tmp/webconfig_reboot_flag", "/tmp/webconfig_freload_flag", "/tmp/webconfig_fwsugd_flag",
              "/tmp/fwtool_status.txt", "/tmp/fwtool_6v1Znb.lock"})
            ::unlink(path);
    }
};

TEST_F(Files, AreAbsentUntilTheyCome) {
    std::string const one = folder_ / "one";
    std::string const other = folder_ / "other";
    auto const absent = [&] { return AreAbsent({one.c_str(), other.c_str()}); };
    EXPECT_TRUE(absent());
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));  // older folders are remembered
    for (std::string const &path : {one, other, one}) {
        EXPECT_TRUE(absent() && absent());
        fs::create_symlink("/none", path);
        EXPECT_FALSE(absent() || absent());
        fs::remove(path);
    }
}

TEST_F(Flags, AFinishedUpgradeNeedsAReboot) {
    std::pair<char const *, bool> const cases[] = {
        {"", false},      {"state: 'done'", true},        {"x'done'y\nwriting", true}, {"done", false},
        {"'done", false}, {"'writing'\n'done'\n", false}, {"\n'done'", false},
    };
    for (auto const &[status, required] : cases) {
        std::ofstream("/tmp/fwtool_status.txt") << status;
        EXPECT_EQ(IsRebootRequired(), required) << status;
    }
}

constexpr char rebootFlag[] = "/tmp/webconfig_reboot_flag";
constexpr char statusFile[] = "/tmp/fwtool_status.txt";
constexpr char lockFile[] = "/tmp/fwtool_6v1Znb.lock";

TEST_F(Flags, WhatOthersPutInTheirPlaceCountsForNothingAndIsReplaced) {
    std::ofstream("/tmp/done") << "'done'";
    for (std::string const put :
         {"mkfifo $F", "ln -s /dev/zero $F", "ln -s /tmp/done $F", "ln -s /tmp/victim $F", "ln /tmp/done $F",
          "mkdir $F; chown 65534 $F 2>/dev/null", "echo \"'done'\" >$F; chown 65534 $F 2>/dev/null"}) {
        int status = 0;
        for (std::string const path : {rebootFlag, statusFile, lockFile})
            status += std::system(("F=" + path + "; rm -rf $F; " + put).c_str());
        if (status != 0)
            continue;  // only root can give files away
        EXPECT_FALSE(IsRebootRequired() || IsFirmareUpgradeInProgress()) << put;
        EXPECT_EQ(ReadTrusted(statusFile, 8), std::nullopt) << put;
        MarkRebootRequired();
        EXPECT_TRUE(IsRebootRequired() && IsTrustedFile(rebootFlag)) << put;
        fs::remove(statusFile);
    }
    EXPECT_FALSE(FileExists("/tmp/victim"));
    fs::remove(lockFile);
    EXPECT_EQ(ReadTrusted("/tmp/done", 4), "'don") << "no more than was asked for";
    ::unlink("/tmp/done");
}

TEST_F(Flags, UpgradeIsInProgressWhileItsLockIsHeld) {
    EXPECT_FALSE(IsFirmareUpgradeInProgress());
    EXPECT_FALSE(FileExists(lockFile));
    std::ofstream(lockFile) << "";
    EXPECT_FALSE(IsFirmareUpgradeInProgress());
    enum class Holder { Ours, Unknown, Others };
    for (auto const kind : {Holder::Ours, Holder::Unknown, Holder::Others}) {
        std::array<int, 2> locked{};
        ASSERT_EQ(::pipe(locked.data()), 0);
        pid_t const holder = ::fork();
        if (holder == 0) {
            struct flock lock {};
            lock.l_type = F_WRLCK;
            int const command = kind == Holder::Unknown ? F_OFD_SETLK : F_SETLK;
            bool const held = ::fcntl(::open(lockFile, O_RDWR), command, &lock) == 0 &&
                              (kind != Holder::Others || ::setresuid(65534, -1, -1) == 0 || ::getuid() != 0);
            ::_exit(held && ::write(locked[1], "x", 1) == 1 ? ::pause() : EXIT_FAILURE);
        }
        char byte = 0;
        ::close(locked[1]);
        EXPECT_EQ(::read(locked[0], &byte, 1), 1);
        ::close(locked[0]);
        bool const counts = kind != Holder::Others || ::getuid() != 0;  // only root can become another
        EXPECT_EQ(IsFirmareUpgradeInProgress() && IsFirmwareUpgradeRunning(), counts);
        ::kill(holder, SIGKILL);
        ::waitpid(holder, nullptr, 0);
        EXPECT_FALSE(IsFirmareUpgradeInProgress());
    }
    ::unlink(lockFile);
    fs::create_directory(lockFile);  // cannot be opened for writing, by nobody
    EXPECT_TRUE(IsFirmareUpgradeInProgress());
    fs::remove(lockFile);
}

}  // namespace
