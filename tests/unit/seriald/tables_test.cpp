#include <gtest/gtest.h>

#include <string>

#include "seriald_client/PortStatistics.h"
#include "seriald_client/SerialPRM.h"
#include "seriald_client/SerialdClient.h"
#include "tests/unit/platform/Wire.h"

namespace {

constexpr char modem[] = "/dev/serial/by-id/usb-cellular-modem-modem";

TEST(SerialPRM, Functions) {
    struct {
        char const *value;
        int id;
    } const cases[] = {{"none", -1}, {"shell", 2}, {"gprs_dialup", 4}};
    for (auto const &[value, id] : cases) {
        EXPECT_EQ(cSerialPRM::GetFuncIdFromPRMValue(value), id);
        EXPECT_EQ(cSerialPRM::GetPRMValueForFuncId(id), value);
    }
    EXPECT_EQ(cSerialPRM::GetFuncIdFromPRMValue("gprs"), -1);
    for (int const id : {-2, 0, 1, 3, 5})
        EXPECT_EQ(cSerialPRM::GetPRMValueForFuncId(id), "") << id;
}

TEST(SerialPRM, Ports) {
    struct {
        char const *key;
        char const *tty;
        std::uint32_t clientId;
    } const cases[] = {{"serial/port/gprs/function", modem, 1}, {"serial/port/tcp1/function", "tcp1", 11}};
    for (auto const &[key, tty, clientId] : cases) {
        EXPECT_EQ(cSerialPRM::GetTTY(key), tty);
        EXPECT_EQ(cSerialPRM::GetPrmParname(tty), key);
        EXPECT_EQ(cSerialPRM::GetSerialdClientID(tty), clientId);
        EXPECT_EQ(cSerialdClient::GetSerialdClientID(tty), clientId);
    }
    for (char const *unknown : {"", "tcp", "tcp10", "/dev/ttyS0"}) {
        EXPECT_EQ(cSerialPRM::GetTTY(unknown), "");
        EXPECT_EQ(cSerialPRM::GetPrmParname(unknown), "");
        EXPECT_EQ(cSerialdClient::GetSerialdClientID(unknown), 0u);
    }
}

/// A reply with the function id 4 in the ports 3 and 5 (from 1).
Wire Reply(std::uint32_t count) {
    Wire wire(2492);
    wire.Long(0, 2).Long(4, 99).Long(2488, count);
    for (std::size_t const port : {2, 4}) {
        std::size_t const record = 8 + 248 * port;
        wire.Long(record, 4).Long(record + 4, 100 + port).Long(record + 8, 0xfffffff0 + port);
        wire.Text(record + 20, std::string(100, '#')).Text(record + 120, std::string(128, 'm'));
    }
    return wire;
}

TEST(Statistics, TheFirstValidPortOfAFunctionIsFound) {
    struct {
        std::uint32_t count;
        bool found;
    } const cases[] = {{0, false}, {2, false}, {3, true}, {10, true}, {11, true}, {0xffffffff, true}};
    for (auto const &[count, found] : cases) {
        std::string const bytes = Reply(count).bytes();
        auto const statistics = SerialdMsg::UnpackStatistics(bytes.data(), bytes.size());
        ASSERT_TRUE(statistics);
        EXPECT_LE(statistics->count, 10u);
        EXPECT_FALSE(statistics->FindPort(3));
        auto const *const port = statistics->FindPort(4);
        ASSERT_EQ(port != nullptr, found) << count;
        if (!found)
            continue;
        EXPECT_EQ(port->receivedPackets, 102u);
        EXPECT_EQ(port->transmittedPackets, 0xfffffff2);
        EXPECT_EQ(port->message, std::string(127, 'm'));
    }
}

TEST(Statistics, OtherLengthsAreNoReply) {
    std::string const bytes = Reply(10).bytes() + std::string(10, '\0');
    for (std::size_t const size : {0u, 4u, 2491u, 2493u, 2502u})
        EXPECT_FALSE(SerialdMsg::UnpackStatistics(bytes.data(), size)) << size;
}

}  // namespace
