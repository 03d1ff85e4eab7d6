#include <cppcms/json.h>

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr unsigned maxOutput = 4096;
constexpr unsigned maxProcessList = 10000;

}  // namespace

void JsonRpc::GeneralStatus() {
    cppcms::json::value status;
    status["date"] = util::ShellCommand("date", maxOutput);
    status["uptime"] = util::ShellCommand("uptime", maxOutput);
    status["top"] = util::ShellCommand("top -b -n1", maxOutput);
    status["processStatus"] = util::ShellCommand("ps -ef", maxProcessList);
    status["boardTemp"] = "unknown";  // no board sensor is read
    return_result(status);
}

}  // namespace webconfig::apps
