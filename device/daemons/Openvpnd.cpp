#include "device/daemons/MessageServer.h"

namespace {

std::unique_ptr<cVexaMsg> MakeAnswer(daemons::Report &report) {
    auto stats = std::make_unique<cVexaMsgOpenVPNStats>();
    report.Get("connected", stats->connected);
    report.Get("seconds_in_state", stats->secondsInState);
    report.Get("status", stats->status);
    return stats;
}

}  // namespace

int main(int argc, char **argv) {
    daemons::MessageServer server("openvpnd", daemons::ReportFile("openvpnd", argc, argv),
                                  cVexaMsgRequestOpenVPNStats::messageType, MakeAnswer);
    daemons::Serve({&server});
}
