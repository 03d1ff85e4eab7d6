#include <gtest/gtest.h>

#include <string>

#include "seriald_client/PortStatistics.h"
#include "seriald_client/SerialdMsg.h"
#include "tests/unit/platform/TemporaryFolder.h"
#include "tests/unit/vexa/DaemonProcess.h"

namespace {

TEST(Seriald, AnswersWithItsReport) {
    TemporaryFolder const folder;
    auto const report = [&](std::string const &text) { folder.File("report.ports", text); };
    DaemonProcess const daemon(SERIALD, folder.File("report", ""), SerialdMsg::serverAddress);
    report(
        "ports = 2\nport2.function = 4\nport2.received_packets = 3400\n"
        "port2.transmitted_packets = 1200\nport2.message = Connected");
    auto const statistics = SerialdMsg::QueryStatistics();
    ASSERT_TRUE(statistics);
    EXPECT_EQ(statistics->clientId, 99u);
    auto const *const port = statistics->FindPort(4);
    ASSERT_TRUE(port);
    EXPECT_EQ(port->receivedPackets, 3400u);
    EXPECT_EQ(port->transmittedPackets, 1200u);
    EXPECT_STREQ(port->message, "Connected");

    for (char const *manner : {"silent", "short", "long", "noise"}) {
        report(std::string("answer = ") + manner);
        EXPECT_FALSE(SerialdMsg::QueryStatistics()) << manner;
    }
    report("answer = garbage");
    auto const garbage = SerialdMsg::QueryStatistics();
    ASSERT_TRUE(garbage);
    EXPECT_EQ(garbage->count, 10u);
    EXPECT_FALSE(garbage->FindPort(4));
}

}  // namespace
