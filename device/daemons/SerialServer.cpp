#include "device/daemons/SerialServer.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "device/daemons/Behaviour.h"
#include "device/daemons/Report.h"
#include "seriald_client/AbstractAddress.h"
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

}  // namespace

SerialServer::SerialServer(std::string reportFile)
    : reportFile_(std::move(reportFile)), socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    AbstractAddress own(SerialdMsg::serverAddress);
    if (socket_ < 0 || ::bind(socket_, own.get(), own.length) < 0)
        Fail("seriald cannot take its address");
}

SerialServer::~SerialServer() {
    ::close(socket_);
}

void SerialServer::Process() {
    char data[sizeof(SerialdMsg::Control) + 1];  // a byte that tells a longer datagram
    AbstractAddress from;
    from.length = sizeof from.address;
    if (::recvfrom(socket_, data, sizeof data, MSG_DONTWAIT, from.get(), &from.length) !=
        sizeof(SerialdMsg::Control))
        return;
    SerialdMsg::Control request;
    std::memcpy(&request, data, sizeof request);
    if (request.type != SerialdMsg::Type::Control || request.command != SerialdMsg::Command::RequestStats)
        return;
    Report report(reportFile_);
    if (auto const reply = Behave(report, MakeReply(report, request)))
        ::sendto(socket_, reply->data(), reply->size(), MSG_DONTWAIT, from.get(), from.length);
}

}  // namespace daemons
