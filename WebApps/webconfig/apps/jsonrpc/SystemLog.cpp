#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/Switch.h"

namespace webconfig::apps {

namespace {

constexpr unsigned maxTail = 8096;  // not 8192: this odd figure is intended
constexpr char persistentLog[] = "tail -n 30 /home/root/log/messages";
constexpr char volatileLog[] = "tail -n 30 /var/log/messages";

}  // namespace

cppcms::json::value JsonRpc::TailSyslog() {
    cppcms::json::value status;
    status["tail"] =
        util::ShellCommand(util::IsOn("syslogd/persistent") ? persistentLog : volatileLog, maxTail);
    return status;
}

}  // namespace webconfig::apps
