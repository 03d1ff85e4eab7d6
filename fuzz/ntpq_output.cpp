// The list of peers that ntpq prints: what it says never contradicts itself.
#include <cassert>

#include "WebApps/webconfig/apps/jsonrpc/NtpqReport.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    std::string const output(reinterpret_cast<char const *>(data), size);
    auto const report = webconfig::apps::ReadNtpq(output);
    assert(report.running || report.syncTo.empty());
    assert(report.hasGps || !(report.gpsSync || report.ppsSync));
    assert(output.find(report.syncTo) != std::string::npos || report.gpsSync || report.ppsSync);
    return 0;
}
