#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/jsonrpc/CommandOutputs.h"
#include "WebApps/webconfig/apps/jsonrpc/NtpqReport.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/Files.h"

namespace webconfig::apps {

namespace {

constexpr CommandOutput sources[] = {
    {"rawOutput", "chronyc -n sources -v"},
    {"clients", "chronyc -n clients"},
};

}  // namespace

cppcms::json::value JsonRpc::NtpServerStatus() {
    return util::FileExists("/usr/bin/chronyc") ? ChronydStatus() : NtpdStatus();
}

cppcms::json::value JsonRpc::ChronydStatus() {
    cppcms::json::value status;
    status["isChronyd"] = true;
    std::string const tracking = util::ShellCommand("chronyc -n tracking", maxOutput);
    bool const running = tracking.find("Reference ID") != std::string::npos;
    status["running"] = running;
    if (running) {
        status["tracking"] = tracking;
        AddOutputs(status, sources);
    }
    return status;
}

cppcms::json::value JsonRpc::NtpdStatus() {
    std::string const output = util::ShellCommand("ntpq -pn 2>&1", maxOutput);
    NtpqReport const report = ReadNtpq(output);
    cppcms::json::value status;
    status["running"] = report.running;
    status["hasGps"] = report.hasGps;
    status["gpsSync"] = report.gpsSync;
    status["ppsSync"] = report.ppsSync;
    status["syncTo"] = report.syncTo;
    status["rawOutput"] = output;
    return status;
}

}  // namespace webconfig::apps
