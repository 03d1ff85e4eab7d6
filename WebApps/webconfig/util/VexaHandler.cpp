#include "WebApps/webconfig/util/VexaHandler.h"

namespace webconfig::util {

template <typename Answer>
void VexaHandler::Keep(cVexaMsg const &message) {
    // A type code alone does not make an object of its class.
    if (message.Type() != Answer::messageType)
        return;
    if (auto const *const answer = dynamic_cast<Answer const *>(&message))
        std::get<std::unique_ptr<Answer>>(latest_) = std::make_unique<Answer>(*answer);
}

bool VexaHandler::HandleMessage(cVexaMsg *message, char const * /*sender*/, cVexa & /*client*/) {
    Keep<cVexaMsgGPRSStats>(*message);
    Keep<cVexaMsgServerStats>(*message);
    Keep<cVexaMsgOpenVPNStats>(*message);
    return true;
}

}  // namespace webconfig::util
