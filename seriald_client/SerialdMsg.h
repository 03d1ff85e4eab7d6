#pragma once

#include <cstdint>
#include <string_view>

/// The datagrams to the serial daemon. Integers are in native byte order.
namespace SerialdMsg {

/// Client id of those who only ask; no port has it.
constexpr std::uint32_t SerialdStatusClientID = 99;

// Addresses are abstract: the leading NUL stands where a path would begin.
constexpr std::string_view serverAddress("\0/orvane/seriald/server", 23);
constexpr std::string_view clientAddressPrefix("\0/orvane/seriald/client/", 24);

enum class Type : std::uint32_t { Data = 0, PortSettings = 1, Control = 2 };

enum class Command : std::uint32_t {
    RequestStats = 2,
    RequestPortMap = 3,
    GpsRequestToSend = 4,
    GpsSendComplete = 6,
};

constexpr unsigned maxData = 4096;  ///< bytes in one data datagram

/// Followed on the wire by \a size bytes.
struct DataHeader {
    Type type = Type::Data;
    std::uint32_t clientId = 0;
    std::uint32_t seconds = 0;  ///< wall clock at sending
    std::uint32_t microseconds = 0;
    std::uint32_t size = 0;
};
static_assert(sizeof(DataHeader) == 20);

/// What the three parameters after the baud rate mean is the daemon's affair.
struct Settings {
    std::uint32_t baud = 0;
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    std::uint32_t c = 0;
};

struct PortSettings {
    Type type = Type::PortSettings;
    std::uint32_t clientId = 0;
    Settings settings;
};
static_assert(sizeof(PortSettings) == 24);

struct Control {
    Type type = Type::Control;
    std::uint32_t clientId = 0;
    Command command{};
    std::uint32_t reserved = 0;
};
static_assert(sizeof(Control) == 16);

}  // namespace SerialdMsg
