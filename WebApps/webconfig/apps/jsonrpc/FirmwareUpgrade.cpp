#include <cppcms/json.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/JsonRpc";
constexpr char statusFile[] = "/tmp/fwtool_status.txt";
constexpr char failedStatus[] = "{ 'state' : 'failed' }";  // the single quotes are what the page expects
constexpr std::size_t lineBuffer = 100;
constexpr std::chrono::seconds lockLimit{2};  // a line is written in no time
constexpr std::chrono::milliseconds lockRetry{20};

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

File Open() {
    int const descriptor = util::OpenTrusted(statusFile, O_RDONLY);
    File file(descriptor < 0 ? nullptr : fdopen(descriptor, "r"));
    if (descriptor >= 0 && !file)
        close(descriptor);
    return file;
}

std::string FailedStatus() {
    WEBCONFIG_LOG(error, logTag) << "firmware upgrade failed";
    return failedStatus;
}

/// Waits until no one writes the file, though not for ever as the system would. False where that does not
/// end.
bool Lock(std::FILE *file) {
    struct flock lock {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    auto const patience = std::chrono::steady_clock::now() + lockLimit;
    while (fcntl(fileno(file), F_SETLK, &lock) != 0 && (errno == EAGAIN || errno == EACCES)) {
        if (std::chrono::steady_clock::now() >= patience)
            return false;
        std::this_thread::sleep_for(lockRetry);
    }
    return true;
}

/// First line of the status file, line end included; empty also where it cannot be read.
std::string LockedLine(std::FILE *file) {
    if (!Lock(file)) {
        WEBCONFIG_LOG(warning, logTag) << statusFile << " is locked for long";
        return {};
    }
    char line[lineBuffer];
    return std::fgets(line, sizeof(line), file) ? line : "";
}

}  // namespace

cppcms::json::value JsonRpc::FirmwareUpgradeStatus() {
    bool const inProgress = util::IsFirmwareUpgradeRunning();
    std::string status;
    if (File const file = Open()) {
        status = LockedLine(file.get());
        if (!status.empty() && !inProgress && status.find("done") == std::string::npos)
            status = FailedStatus();
    } else if (!inProgress) {
        status = FailedStatus();
    }
    return status;
}

cppcms::json::value JsonRpc::PrepareFWUpgrade() {
    return util::RunCommand("supvis --suspend deployer");
}

}  // namespace webconfig::apps
