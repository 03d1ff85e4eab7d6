#include "device/daemons/SerialServer.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "device/daemons/Behaviour.h"
#include "device/daemons/Report.h"
#include "seriald_client/PortStatistics.h"
#include "seriald_client/SerialdMsg.h"

namespace daemons {

namespace {

/// The reply's type and client id are those of the request.
std::string MakeReply(Report &report, SerialdMsg::Control const &request) {
    SerialdMsg::Statistics statistics;
    statistics.type = static_cast<std::uint32_t>(request.type);
    statistics.clientId = request.clientId;
    report.Get("ports", statistics.count);
    int number = 0;
    for (SerialdMsg::PortRecord &port : statistics.ports) {
        std::string const prefix = "port" + std::to_string(++number) + '.';
        report.Get(prefix + "function", port.functionId);
        report.Get(prefix + "received_packets", port.receivedPackets);
        report.Get(prefix + "transmitted_packets", port.transmittedPackets);
        report.Get(prefix + "message", port.message);
    }
    return {reinterpret_cast<char const *>(&statistics), sizeof statistics};
}

bool AsksForStatistics(SerialdMsg::Control const &datagram, ssize_t size) {
    return size == sizeof datagram && datagram.type == SerialdMsg::Type::Control &&
           datagram.command == SerialdMsg::Command::RequestStats;
}

}  // namespace

SerialServer::SerialServer(std::string reportFile)
    : reportFile_(std::move(reportFile)), socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un own{};
    own.sun_family = AF_UNIX;
    SerialdMsg::serverAddress.copy(own.sun_path, sizeof own.sun_path);
    socklen_t const length = offsetof(sockaddr_un, sun_path) + SerialdMsg::serverAddress.size();
    if (socket_ < 0 || ::bind(socket_, reinterpret_cast<sockaddr *>(&own), length) < 0)
        Fail("seriald cannot take its address");
}

SerialServer::~SerialServer() {
    ::close(socket_);
}

void SerialServer::Process() {
    char data[sizeof(SerialdMsg::DataHeader) + SerialdMsg::maxData];
    sockaddr_un from{};
    socklen_t length = sizeof from;
    auto *const sender = reinterpret_cast<sockaddr *>(&from);
    ssize_t const size = ::recvfrom(socket_, data, sizeof data, MSG_DONTWAIT, sender, &length);
    SerialdMsg::Control request;
    std::memcpy(&request, data, sizeof request);
    if (!AsksForStatistics(request, size))
        return;
    Report report(reportFile_);
    if (auto const reply = Behave(report, "", MakeReply(report, request)))
        ::sendto(socket_, reply->data(), reply->size(), MSG_DONTWAIT, sender, length);
}

}  // namespace daemons
