#include <gtest/gtest.h>

#include <string>

#include "seriald_client/PortStatistics.h"
#include "seriald_client/SerialPRM.h"
#include "tests/unit/platform/Wire.h"

namespace {

TEST(SerialPRM, Ports) {
    constexpr char key[] = "serial/port/gprs/function";
    constexpr char tty[] = "/dev/serial/by-id/usb-cellular-modem-modem";
    EXPECT_EQ(cSerialPRM::GetTTY(key), tty);
    EXPECT_EQ(cSerialPRM::GetPrmParname(tty), key);
    EXPECT_EQ(cSerialPRM::GetSerialdClientID(tty), 1u);
    EXPECT_EQ(cSerialPRM::GetTTY("tcp10"), "");
    EXPECT_EQ(cSerialPRM::GetFuncIdFromPRMValue("gprs_dialup"), 4);
    EXPECT_EQ(cSerialPRM::GetFuncIdFromPRMValue("gprs"), -1);
}

/// A reply with the function id 4 in the ports 3 and 5 (from 1).
std::string Reply(std::uint32_t count) {
    constexpr std::uint32_t third = 8 + 248 * 2;
    constexpr std::uint32_t fifth = 8 + 248 * 4;
    return Wire(2492, {{0, {2, 99}}, {2488, {count}}, {third, {4, 102, 0xfffffff2}}, {fifth, {4, 104}}},
                {{third + 20, std::string(100, '#')}, {third + 120, std::string(128, 'm')}})
        .bytes();
}

TEST(Statistics, TheFirstValidPortOfAFunctionIsFound) {
    std::pair<std::uint32_t, bool> const cases[] = {{0, false}, {2, false}, {3, true},
                                                    {10, true}, {11, true}, {0xffffffff, true}};
    for (auto const &[count, found] : cases) {
        std::string const bytes = Reply(count);
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

}  // namespace
