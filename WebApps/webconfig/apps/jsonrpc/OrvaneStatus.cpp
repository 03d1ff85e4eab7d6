#include <arpa/inet.h>

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/util/DaemonQuery.h"

namespace webconfig::apps {

namespace {

/// \a address is in host order.
std::string DottedAddress(std::uint32_t address) {
    in_addr const network{.s_addr = htonl(address)};
    char text[INET_ADDRSTRLEN];
    return inet_ntop(AF_INET, &network, text, sizeof text);
}

}  // namespace

cppcms::json::value JsonRpc::OrvaneStatus() {
    cppcms::json::value status;
    if (auto const link = util::AskStatusd().answer) {
        status["isConnected"] = link->connected != 0;
        status["serverAddress"] = DottedAddress(link->serverAddress);
    } else {
        status["isConnected"] = "Unknown";
        status["serverAddress"] = "Unknown";
    }
    return status;
}

}  // namespace webconfig::apps
