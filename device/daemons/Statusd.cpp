#include "device/daemons/MessageServer.h"

namespace {

std::unique_ptr<cVexaMsg> MakeAnswer(daemons::Report &report) {
    auto stats = std::make_unique<cVexaMsgServerStats>();
    report.Get("connected", stats->connected);
    report.GetAddress("server_address", stats->serverAddress);
    return stats;
}

}  // namespace

int main(int argc, char **argv) {
    daemons::MessageServer server("statusd", daemons::ReportFile("statusd", argc, argv),
                                  cVexaMsgRequestServerStats::messageType, MakeAnswer);
    daemons::Serve({&server});
}
