#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/jsonrpc/CommandOutputs.h"

namespace webconfig::apps {

namespace {

constexpr CommandOutput outputs[] = {
    {"date", "date"},
    {"uptime", "uptime"},
    {"top", "top -b -n1"},  // nine tenths of the time: it naps, to see who works meanwhile
    {"processStatus", "ps -ef", 10000},
};

}  // namespace

cppcms::json::value JsonRpc::GeneralStatus() {
    cppcms::json::value status;
    AddOutputs(status, outputs);
    status["boardTemp"] = "unknown";  // no board sensor is read
    return status;
}

}  // namespace webconfig::apps
