#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/jsonrpc/CommandOutputs.h"
#include "WebApps/webconfig/util/Commands.h"

namespace webconfig::apps {

cppcms::json::value JsonRpc::NoticeStatus() {
    cppcms::json::value status;
    status["notice"] = util::ShellCommand("cat /etc/motd", maxOutput);
    return status;
}

}  // namespace webconfig::apps
