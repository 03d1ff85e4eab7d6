#include "device/daemons/MessageServer.h"

#include "device/daemons/Behaviour.h"
#include "device/daemons/RawMessage.h"

namespace daemons {

namespace {

std::string Packed(cVexaMsg const &message) {
    char buffer[512];
    return {buffer, static_cast<std::size_t>(message.Pack(buffer, sizeof buffer))};
}

}  // namespace

MessageServer::MessageServer(char const *name, std::string reportFile, std::uint32_t request,
                             MakeAnswer *makeAnswer)
    : endpoint_(name, this), reportFile_(std::move(reportFile)), request_(request), makeAnswer_(makeAnswer) {
    if (endpoint_.Listen() < 0)
        Fail(std::string(name) + " cannot take its name on the message service");
}

bool MessageServer::HandleMessage(cVexaMsg *message, char const *sender, cVexa &client) {
    if (message->Type() != request_)
        return false;
    Report report(reportFile_);
    std::string answer = Packed(*makeAnswer_(report));
    if (auto const datagram = Behave(report, std::move(answer))) {
        // A client that has gone meanwhile is no failure.
        RawMessage const raw(*datagram);
        client.Send(sender, &raw);
    }
    return true;
}

}  // namespace daemons
