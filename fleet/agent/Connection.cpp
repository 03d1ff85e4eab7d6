#include "fleet/agent/Connection.h"

#include <mqtt_protocol.h>

#include "WebApps/webconfig/util/Log.h"
#include "fleet/Messages.h"

namespace fleet::agent {

namespace {

constexpr char logTag[] = "fleet/agent/Connection";

/// Changes that the broker may send before the first is on the disk.
constexpr int receiveMaximum = 4;
/// The broker keeps changes for a device that is away for so long.
constexpr std::uint32_t sessionSeconds = 30 * 24 * 60 * 60;

}  // namespace

Connection::Connection(Settings settings)
    : BrokerLink(std::move(settings.broker),
                 {.client = settings.id,
                  .clean = false,
                  .sessionSeconds = sessionSeconds,
                  .receiveMaximum = receiveMaximum,
                  .lastWill = Topic(settings.id, topics::online)},
                 logTag),
      _id(settings.id) {}

void Connection::_Taken(bool known) {
    _known = known;
    _Subscribe(Topic(_id, topics::change));
    _online = Publish(topics::online, words::yes, true);
}

void Connection::_OnMessage(mosquitto_message const &message) {
    try {
        _listener.take(
            {static_cast<char const *>(message.payload), static_cast<std::size_t>(message.payloadlen)});
    } catch (std::exception const &failure) {
        // Without its acknowledgement, which is not written yet, the broker sends it again.
        WEBCONFIG_LOG(error, logTag) << "A change cannot be written down: " << failure.what();
        _Break();
    }
}

void Connection::_OnPublish(int message, int reason) {
    if (reason >= firstRefusal) {
        _SetReason("the broker does not take what this device says of itself", reason);
        return;
    }
    if (message != _online) {
        _listener.acknowledged(message);
        return;
    }
    _SetReached();
    _listener.reached(_known);
}

int Connection::Publish(char const *topic, std::string const &message, bool retained) {
    return _Publish(Topic(_id, topic), message, retained);
}

void Connection::Reopen(std::chrono::seconds delay) {
    _End(MQTT_RC_DISCONNECT_WITH_WILL_MSG, delay);
    _listener.lost();
}

void Connection::Close() {
    if (_IsReached())
        Publish(topics::online, words::no, true);
    _End(MQTT_RC_NORMAL_DISCONNECTION, {});
}

}  // namespace fleet::agent
