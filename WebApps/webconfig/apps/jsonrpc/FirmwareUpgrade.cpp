#include <cppcms/json.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/JsonRpc";
constexpr char statusFile[] = "/tmp/fwtool_status.txt";
constexpr char failedStatus[] = "{ 'state' : 'failed' }";  // the single quotes are what the page expects
constexpr std::size_t lineBuffer = 100;

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

std::string FailedStatus() {
    WEBCONFIG_LOG(error, logTag) << "firmware upgrade failed";
    return failedStatus;
}

/// First line of the status file, line end included, read while no one writes it.
std::string LockedLine(std::FILE *file) {
    struct flock lock {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    fcntl(fileno(file), F_SETLKW, &lock);
    char line[lineBuffer];
    return std::fgets(line, sizeof(line), file) ? line : "";
}

}  // namespace

cppcms::json::value JsonRpc::FirmwareUpgradeStatus() {
    bool const inProgress = util::IsFirmwareUpgradeRunning();
    std::string status;
    if (File const file{std::fopen(statusFile, "re")}) {
        status = LockedLine(file.get());
        if (!status.empty() && !inProgress && status.find("done") == std::string::npos)
            status = FailedStatus();
    } else if (!inProgress) {
        status = FailedStatus();
    }
    return status;
}

void JsonRpc::PrepareFWUpgrade() {
    return_result(util::RunCommand("supvis --suspend deployer"));
}

}  // namespace webconfig::apps
