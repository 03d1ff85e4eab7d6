#include <gtest/gtest.h>
#include <vexa/Messages.h>

#include <algorithm>
#include <typeinfo>

#include "tests/unit/platform/Wire.h"

namespace {

template <std::size_t Size>
void Set(char (&field)[Size], std::string const &text) {
    text.copy(field, Size);
}

std::string Packed(cVexaMsg const &message) {
    std::string buffer(1000, '#');
    buffer.resize(message.Pack(buffer.data(), buffer.size()));
    return buffer;
}

cVexaMsgServerStats ServerStats() {
    cVexaMsgServerStats message;
    message.connected = 1;
    message.serverAddress = 0x0a630001;
    message.flag = 0x7f;
    for (std::uint32_t index = 0; index < 4; ++index)
        message.counters[index] = 0x11223340 + index;
    message.value = 0xbeef;
    return message;
}

cVexaMsgOpenVPNStats OpenVpnStats() {
    cVexaMsgOpenVPNStats message;
    message.connected = 1;
    message.secondsInState = 0x01020304;
    Set(message.status, "Initialization Sequence Completed");
    return message;
}

cVexaMsgGPRSStats GprsStats() {
    cVexaMsgGPRSStats message;
    Set(message.modemType, std::string(31, 'M'));
    Set(message.modemFirmwareVersion, "1.2.3");
    Set(message.modemSerialNumber, "35661");
    Set(message.mobileNumber, "+4915^VA-1");
    Set(message.simCcid, "8949");
    message.networkKind = 2;
    message.signalQuality = -75;
    message.bitErrorRate = 7;
    Set(message.network, "Field Mobile");
    message.forcedAutomatic = 1;
    message.accessTechnology = 6;
    message.frequency = 800;
    message.simStatus = 11;
    Set(message.apn, std::string(127, 'a'));
    message.secondsConnected = 18001;
    message.moduleTemperature = INT32_MIN;
    message.temperatureIndication = -2;
    message.pppTxPackets = 0x10000001;
    message.pppRxPackets = 0x20000002;
    message.pppTxBytes = 0x30000003;
    message.pppRxBytes = 0x40000004;
    message.pppTxBytesTotal = 0x50000005;
    message.pppRxBytesTotal = 0xffffffff;
    return message;
}

std::string const serverStatsBytes = Wire(28)
                                         .Long(0, 15)
                                         .Byte(4, 1)
                                         .Long(5, 0x0a630001)
                                         .Byte(9, 0x7f)
                                         .Long(10, 0x11223340)
                                         .Long(14, 0x11223341)
                                         .Long(18, 0x11223342)
                                         .Long(22, 0x11223343)
                                         .Word(26, 0xbeef)
                                         .bytes();

std::string const openVpnStatsBytes =
    Wire(73).Long(0, 22).Byte(4, 1).Long(5, 0x01020304).Text(9, "Initialization Sequence Completed").bytes();

std::string const gprsStatsBytes = Wire(404)
                                       .Long(0, 8)
                                       .Text(4, std::string(31, 'M'))
                                       .Text(36, "1.2.3")
                                       .Text(52, "35661")
                                       .Text(84, "+4915^VA-1")
                                       .Text(116, "8949")
                                       .Long(148, 2)
                                       .Long(152, 0xffffffb5)
                                       .Long(156, 7)
                                       .Text(160, "Field Mobile")
                                       .Long(224, 1)
                                       .Long(228, 6)
                                       .Long(232, 800)
                                       .Long(236, 11)
                                       .Text(240, std::string(127, 'a'))
                                       .Long(368, 18001)
                                       .Long(372, 0x80000000)
                                       .Long(376, 0xfffffffe)
                                       .Long(380, 0x10000001)
                                       .Long(384, 0x20000002)
                                       .Long(388, 0x30000003)
                                       .Long(392, 0x40000004)
                                       .Long(396, 0x50000005)
                                       .Long(400, 0xffffffff)
                                       .bytes();

TEST(Messages, LayoutIsTheSameBothWays) {
    auto const gprs = GprsStats();
    auto const server = ServerStats();
    auto const openVpn = OpenVpnStats();
    cVexaMsgRequestGPRSStats const requestGprs;
    cVexaMsgRequestServerStats const requestServer;
    cVexaMsgRequestOpenVPNStats const requestOpenVpn;
    struct {
        cVexaMsg const &message;
        std::string bytes;
    } const cases[] = {
        {gprs, gprsStatsBytes},
        {server, serverStatsBytes},
        {openVpn, openVpnStatsBytes},
        {requestGprs, Wire(4).Long(0, 9).bytes()},
        {requestServer, Wire(4).Long(0, 14).bytes()},
        {requestOpenVpn, Wire(4).Long(0, 21).bytes()},
    };
    for (auto const &[message, bytes] : cases) {
        EXPECT_EQ(Packed(message), bytes) << message.Type();
        auto const unpacked = vexa::Unpack(bytes.data(), bytes.size());
        ASSERT_TRUE(unpacked) << message.Type();
        cVexaMsg const &object = *unpacked;
        EXPECT_EQ(typeid(object), typeid(message));
        EXPECT_EQ(unpacked->Type(), message.Type());
        EXPECT_EQ(Packed(*unpacked), bytes) << message.Type();
    }
}

TEST(Messages, SmallBuffersGetTheTypeOrNothing) {
    auto const gprs = GprsStats();
    auto const server = ServerStats();
    auto const openVpn = OpenVpnStats();
    cVexaMsgRequestServerStats const request;
    struct {
        cVexaMsg const &message;
        unsigned size;
        int result;
        unsigned written;
    } const cases[] = {
        {request, 0, -1, 0}, {request, 3, -1, 0},   {request, 4, 4, 4},    {server, 3, -1, 0},
        {server, 4, 4, 4},   {server, 27, 4, 4},    {server, 28, 28, 28},  {openVpn, 3, -1, 0},
        {openVpn, 72, 4, 4}, {openVpn, 73, 73, 73}, {gprs, 3, -1, 0},      {gprs, 4, 404, 4},
        {gprs, 100, 404, 4}, {gprs, 403, 404, 4},   {gprs, 404, 404, 404},
    };
    for (auto const &[message, size, result, written] : cases) {
        std::string buffer(500, '#');
        EXPECT_EQ(message.Pack(buffer.data(), size), result) << message.Type() << " in " << size;
        EXPECT_EQ(buffer, Packed(message).substr(0, written) + std::string(500 - written, '#'))
            << message.Type() << " in " << size;
    }
}

TEST(Messages, OtherLengthsAndTypesAreNoMessages) {
    for (std::string const &good :
         {gprsStatsBytes, serverStatsBytes, openVpnStatsBytes, Wire(4).Long(0, 9).bytes()}) {
        for (std::size_t size = 0; size < good.size(); ++size)
            EXPECT_FALSE(vexa::Unpack(good.data(), size)) << size << " of " << good.size();
        std::string const longer = good + '\0';
        EXPECT_FALSE(vexa::Unpack(longer.data(), longer.size())) << longer.size();
    }
    for (std::uint32_t const type : {0u, 7u, 10u, 22u, 0x08000000u, 0xffffffffu}) {
        std::string const bytes = Wire(28).Long(0, type).bytes();
        EXPECT_FALSE(vexa::Unpack(bytes.data(), bytes.size())) << type;
    }
}

TEST(Messages, TextsEndWhateverArrives) {
    std::string bytes(404, '\xff');
    bytes.replace(0, 4, Wire(4).Long(0, 8).bytes());
    auto const message = vexa::Unpack(bytes.data(), bytes.size());
    auto const *const stats = dynamic_cast<cVexaMsgGPRSStats const *>(message.get());
    ASSERT_TRUE(stats);
    EXPECT_EQ(stats->modemType, std::string(31, '\xff'));
    EXPECT_EQ(stats->modemFirmwareVersion, std::string(15, '\xff'));
    EXPECT_EQ(stats->modemSerialNumber, std::string(31, '\xff'));
    EXPECT_EQ(stats->mobileNumber, std::string(31, '\xff'));
    EXPECT_EQ(stats->simCcid, std::string(31, '\xff'));
    EXPECT_EQ(stats->network, std::string(63, '\xff'));
    EXPECT_EQ(stats->apn, std::string(127, '\xff'));

    bytes.replace(0, 4, Wire(4).Long(0, 22).bytes());
    auto const other = vexa::Unpack(bytes.data(), 73);
    EXPECT_EQ(dynamic_cast<cVexaMsgOpenVPNStats const &>(*other).status, std::string(63, '\xff'));
}

TEST(Messages, WhatIsBehindATextStaysHere) {
    cVexaMsgOpenVPNStats message;
    std::fill(std::begin(message.status), std::end(message.status), 'x');
    EXPECT_EQ(Packed(message).substr(9), std::string(63, 'x') + '\0');
    Set(message.status, std::string("up") + '\0');
    EXPECT_EQ(Packed(message).substr(9), "up" + std::string(62, '\0'));
}

}  // namespace
