#include "WebApps/webconfig/apps/jsonrpc/NtpqReport.h"

#include <booster/regex.h>

namespace webconfig::apps {

namespace {

// The list has one peer a line: a mark ("*" for the peer that is followed, "o" where it gives the pulses),
// its address, the source of its time, and figures.

bool FollowsGps(std::string const &output) {
    static booster::regex const gpsPeer(R"((?m)^\*[\w\.]+[\s]+\.GPS)");
    return booster::regex_search(output, gpsPeer);
}

bool FollowsPps(std::string const &output) {
    static booster::regex const ppsPeer(R"((?m)^(.)[\w\.]+[\s]+\.PPS)");
    booster::smatch match;
    if (!booster::regex_search(output, match, ppsPeer))
        return false;
    std::string const mark = match[1];
    return mark == "*" || mark == "o";
}

std::string FollowedPeer(std::string const &output) {
    static booster::regex const peer(R"((?m)^\*([\w\.]+)\s+)");
    booster::smatch match;
    return booster::regex_search(output, match, peer) ? match[1].str() : "";
}

}  // namespace

NtpqReport ReadNtpq(std::string const &output) {
    NtpqReport report;
    report.running = output.find("Connection refused") == std::string::npos;
    if (!report.running)
        return report;
    report.hasGps = output.find(".GPS") != std::string::npos;
    report.gpsSync = report.hasGps && FollowsGps(output);
    report.ppsSync = report.hasGps && FollowsPps(output);
    if (report.gpsSync)
        report.syncTo = report.ppsSync ? "GPS with PPS" : "GPS";
    else
        report.syncTo = report.ppsSync ? "PPS" : FollowedPeer(output);
    return report;
}

}  // namespace webconfig::apps
