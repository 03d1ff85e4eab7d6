#include "WebApps/webconfig/util/Firmware.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vnt_util/GlobalLock.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>

#include "WebApps/webconfig/util/Command.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/Daemon.h"
#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/FolderStates.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Firmware";

constexpr char lockFile[] = "/tmp/fwtool_6v1Znb.lock";
constexpr char tool[] = "/usr/bin/fwtool";

/// So long, from the first one on, locks of nobody we can tell keep the pages in this process' life.
constexpr std::chrono::minutes unknownHolderLimit{10};

bool Failed(char const *reason) {
    WEBCONFIG_LOG(error, logTag) << "FWupgrade: " << reason;
    return false;
}

bool BecomeDaemon() {
    if (::setsid() < 0)
        return Failed("failed to create a session");
    if (::chdir("/") != 0)
        return Failed("failed to change dir");
    ::umask(0);
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return Failed("failed to get rlimit");
    if (limit.rlim_max == 0)
        return Failed("Max number of open file descriptors is 0!!");
    DetachDescriptors();
    return true;
}

/// A script that fails does not stop the upgrade.
void StopApplications(std::string const &mountDirectory) {
    for (auto const &name : FindFiles(mountDirectory, FindFilesType::Directories, ".*")) {
        std::string script = mountDirectory;
        script.append("/").append(name).append("/etc/init.d/rcS");
        if (!FileExists(script))
            continue;
        int const status = RunCommand(Command().Arg(script).Arg("stop"));
        WEBCONFIG_LOG(info, logTag) << '"' << script << " stop\" returned: " << status;
    }
}

int RunUpgrade(std::string const &imagePath, std::string const &mountDirectory) {
    if (!BecomeDaemon())
        return EXIT_FAILURE;
    StopApplications(mountDirectory);
    ::execl(tool, "fwtool", "--upgrade", imagePath.c_str(), "--delete", "--create-ubi-volume",
            "--unmount-ubi-volume", nullptr);
    return EXIT_SUCCESS;  // nobody waits for it: the upgrade just never starts
}

// The process of the last upgrade as a descriptor: nobody waits for that process, so its id may be another's
// by now. Without one (a kernel before 5.3) only the tool's lock counts.
std::atomic<int> upgradeProcess = -1;

void Watch(pid_t pid) {
    int const before = upgradeProcess.exchange(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    if (before >= 0)
        ::close(before);
}

/// Whether \a holder of a lock, as the kernel tells it, may be the tool. Others may lock the tool's file as
/// well, and start a program of root's that keeps their lock: only who has started it counts.
bool MayBeTool(pid_t holder) {
    std::ifstream status("/proc/" + std::to_string(holder) + "/status");
    for (std::string name; status >> name; status.ignore(std::numeric_limits<std::streamsize>::max(), '\n')) {
        uid_t user = 0;
        if (name == "Uid:" && status >> user)
            return IsTrustedUser(user);
    }
    // The lock is of a kind that has no process, or its process has just ended. The tool's would be neither.
    static auto const firstSeen = std::chrono::steady_clock::now();
    return std::chrono::steady_clock::now() - firstSeen < unknownHolderLimit;
}

bool IsUpgradeProcessAlive() {
    pollfd ended{.fd = upgradeProcess, .events = POLLIN, .revents = 0};
    return ended.fd >= 0 && ::poll(&ended, 1, 0) == 0;
}

}  // namespace

pid_t ForkFirmwareUpgrade(std::string const &imagePath, std::string const &mountDirectory) {
    pid_t const pid = ForkDetached([&] { return RunUpgrade(imagePath, mountDirectory); });
    if (pid < 0)
        WEBCONFIG_LOG(error, logTag) << "FWupgrade: failed to fork, " << std::strerror(errno);
    else
        Watch(pid);
    return pid;
}

bool IsFirmareUpgradeInProgress() {
    if (AreAbsent({lockFile}))
        return false;
    struct stat info {};
    if (::lstat(lockFile, &info) != 0 || !IsTrustedUser(info.st_uid))
        return false;
    int const descriptor = OpenTrusted(lockFile, O_RDWR);
    if (descriptor < 0)
        return errno != EPERM;
    vnt_util::GlobalLock const closing(descriptor);
    struct flock wanted {};
    wanted.l_type = F_WRLCK;
    wanted.l_whence = SEEK_SET;
    wanted.l_pid = ::getpid();
    if (::fcntl(descriptor, F_GETLK, &wanted) != 0)
        return true;
    return wanted.l_type != F_UNLCK && MayBeTool(wanted.l_pid);
}

bool IsFirmwareUpgradeRunning() {
    return IsUpgradeProcessAlive() || IsFirmareUpgradeInProgress();
}

std::string &FirmwareUpgradeFile() {
    static std::string path;
    return path;
}

int &FirmwareUpgradePid() {
    static int pid = 0;
    return pid;
}

}  // namespace webconfig::util
