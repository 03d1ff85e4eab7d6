#include <vexa/Messages.h>

#include <concepts>
#include <cstring>
#include <tuple>
#include <type_traits>

namespace {

template <typename Message, typename Class>
concept Is = std::same_as<std::remove_const_t<Message>, Class>;

// The payload of each class: its fields in the order of the wire.

auto Fields(Is<cVexaMsgGPRSStats> auto &message) {
    return std::tie(message.modemType, message.modemFirmwareVersion, message.modemSerialNumber,
                    message.mobileNumber, message.simCcid, message.networkKind, message.signalQuality,
                    message.bitErrorRate, message.network, message.forcedAutomatic, message.accessTechnology,
                    message.frequency, message.simStatus, message.apn, message.secondsConnected,
                    message.moduleTemperature, message.temperatureIndication, message.pppTxPackets,
                    message.pppRxPackets, message.pppTxBytes, message.pppRxBytes, message.pppTxBytesTotal,
                    message.pppRxBytesTotal);
}

auto Fields(Is<cVexaMsgServerStats> auto &message) {
    return std::tie(message.connected, message.serverAddress, message.flag, message.counters, message.value);
}

auto Fields(Is<cVexaMsgOpenVPNStats> auto &message) {
    return std::tie(message.connected, message.secondsInState, message.status);
}

template <typename Message>
concept HasPayload = requires(Message &message) {
    Fields(message);
};

constexpr unsigned headerSize = sizeof(std::uint32_t);

template <typename... Field>
constexpr unsigned SizeOf(std::tuple<Field &...> const *) {
    return (sizeof(Field) + ...);
}

template <HasPayload Message>
constexpr unsigned payloadSize =
    SizeOf(static_cast<decltype(Fields(std::declval<Message &>())) const *>(nullptr));

template <typename Message>
constexpr unsigned messageSize = headerSize;
template <HasPayload Message>
constexpr unsigned messageSize<Message> = headerSize + payloadSize<Message>;

static_assert(messageSize<cVexaMsgGPRSStats> == 404);
static_assert(messageSize<cVexaMsgServerStats> == 28);
static_assert(messageSize<cVexaMsgOpenVPNStats> == 73);

template <typename Field>
void Put(char *&to, Field const &field) {
    std::memcpy(to, &field, sizeof field);
    to += sizeof field;
}

/// What is behind the end of a text stays here, and a text always has an end.
template <std::size_t Size>
void Put(char *&to, char const (&text)[Size]) {
    std::memset(to, 0, Size);
    std::memcpy(to, text, ::strnlen(text, Size - 1));
    to += Size;
}

template <typename Field>
void Get(char const *&from, Field &field) {
    std::memcpy(&field, from, sizeof field);
    from += sizeof field;
}

template <std::size_t Size>
void Get(char const *&from, char (&text)[Size]) {
    std::memcpy(text, from, Size);
    text[Size - 1] = '\0';
    from += Size;
}

template <HasPayload Message>
void PutPayload(char *to, Message const &message) {
    std::apply([&](auto const &...field) { (Put(to, field), ...); }, Fields(message));
}

template <typename Message>
std::unique_ptr<cVexaMsg> UnpackAs(char const *data, std::size_t size) {
    if (size != messageSize<Message>)
        return nullptr;
    auto message = std::make_unique<Message>();
    if constexpr (HasPayload<Message>) {
        char const *from = data + headerSize;
        std::apply([&](auto &...field) { (Get(from, field), ...); }, Fields(*message));
    }
    return message;
}

/// Packs as the answers of statusd and openvpnd do.
template <HasPayload Message>
int PackOrHeader(int header, char *buffer, unsigned size, Message const &message) {
    if (header < 1 || size < messageSize<Message>)
        return header;
    PutPayload(buffer + header, message);
    return messageSize<Message>;
}

}  // namespace

int cVexaMsg::Pack(char *buffer, unsigned int size) const {
    if (size < headerSize)
        return -1;
    std::memcpy(buffer, &type_, headerSize);
    return headerSize;
}

int cVexaMsgGPRSStats::Pack(char *buffer, unsigned int size) const {
    int const header = cVexaMsg::Pack(buffer, size);
    if (header < 1)
        return header;
    if (size >= messageSize<cVexaMsgGPRSStats>)
        PutPayload(buffer + header, *this);
    return messageSize<cVexaMsgGPRSStats>;
}

int cVexaMsgServerStats::Pack(char *buffer, unsigned int size) const {
    return PackOrHeader(cVexaMsg::Pack(buffer, size), buffer, size, *this);
}

int cVexaMsgOpenVPNStats::Pack(char *buffer, unsigned int size) const {
    return PackOrHeader(cVexaMsg::Pack(buffer, size), buffer, size, *this);
}

namespace vexa {

std::unique_ptr<cVexaMsg> Unpack(char const *data, std::size_t size) {
    std::uint32_t type = 0;
    if (size < headerSize)
        return nullptr;
    std::memcpy(&type, data, headerSize);
    switch (type) {
        case cVexaMsgGPRSStats::messageType:
            return UnpackAs<cVexaMsgGPRSStats>(data, size);
        case cVexaMsgRequestGPRSStats::messageType:
            return UnpackAs<cVexaMsgRequestGPRSStats>(data, size);
        case cVexaMsgRequestServerStats::messageType:
            return UnpackAs<cVexaMsgRequestServerStats>(data, size);
        case cVexaMsgServerStats::messageType:
            return UnpackAs<cVexaMsgServerStats>(data, size);
        case cVexaMsgRequestOpenVPNStats::messageType:
            return UnpackAs<cVexaMsgRequestOpenVPNStats>(data, size);
        case cVexaMsgOpenVPNStats::messageType:
            return UnpackAs<cVexaMsgOpenVPNStats>(data, size);
        default:
            return nullptr;
    }
}

}  // namespace vexa
