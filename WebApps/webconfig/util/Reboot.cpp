#include "WebApps/webconfig/util/Reboot.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "WebApps/webconfig/util/Daemon.h"
#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::util {

namespace {

constexpr char logTag[] = "WebApps/webconfig/util/Reboot";

int RunReboot() {
    ::setsid();
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        WEBCONFIG_LOG(error, logTag) << "ForkReboot: getrlimit " << std::strerror(errno);
        return EXIT_FAILURE;
    }
    if (limit.rlim_max == 0) {
        WEBCONFIG_LOG(error, logTag) << "ForkReboot: Max number of open file descriptors is 0!!";
        return EXIT_FAILURE;
    }
    DetachDescriptors();
    return ::execl("/sbin/reboot", "reboot", "-d", "5", nullptr);
}

}  // namespace

void ForkReboot() {
    bool const forked = ForkDetached(RunReboot) >= 0;
    Happened("reboot", OutcomeOf(forked));
    if (!forked)
        WEBCONFIG_LOG(error, logTag) << "ForkReboot failed";
    else
        WEBCONFIG_LOG(info, logTag) << "Forked a reboot";
}

}  // namespace webconfig::util
