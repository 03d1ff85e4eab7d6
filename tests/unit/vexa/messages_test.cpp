#include <gtest/gtest.h>
#include <vexa/Messages.h>

#include <algorithm>
#include <sstream>

#include "tests/unit/platform/Wire.h"

namespace {

std::string Packed(cVexaMsg const &message) {
    std::string buffer(1000, '#');
    buffer.resize(message.Pack(buffer.data(), buffer.size()));
    return buffer;
}

template <typename... Field>
std::string Fields(Field const &...field) {
    std::ostringstream text;
    ((text << field << ' '), ...);
    return text.str();
}

std::string FieldsOf(cVexaMsg const &message) {
    if (auto const *m = dynamic_cast<cVexaMsgServerStats const *>(&message))
        return Fields(+m->connected, m->serverAddress, +m->flag, m->counters[0], m->counters[1],
                      m->counters[2], m->counters[3], m->value);
    if (auto const *m = dynamic_cast<cVexaMsgOpenVPNStats const *>(&message))
        return Fields(+m->connected, m->secondsInState, m->status);
    if (auto const *m = dynamic_cast<cVexaMsgGPRSStats const *>(&message))
        return Fields(m->modemType, m->modemFirmwareVersion, m->modemSerialNumber, m->mobileNumber,
                      m->simCcid, m->networkKind, m->signalQuality, m->bitErrorRate, m->network,
                      m->forcedAutomatic, m->accessTechnology, m->frequency, m->simStatus, m->apn,
                      m->secondsConnected, m->moduleTemperature, m->temperatureIndication, m->pppTxPackets,
                      m->pppRxPackets, m->pppTxBytes, m->pppRxBytes, m->pppTxBytesTotal, m->pppRxBytesTotal);
    return "none";
}

std::string const serverStats = Wire(28, {{0, {15}},
                                          {4, {1}, 1},
                                          {5, {0x0a630001}},
                                          {9, {127}, 1},
                                          {10, {1000, 1001, 1002, 1003}},
                                          {26, {48879}, 2}})
                                    .bytes();
std::string const openVpnStats =
    Wire(73, {{0, {22}}, {4, {1}, 1}, {5, {0x01020304}}}, {{9, "Initialization"}}).bytes();
std::string const gprsStats =
    Wire(404,
         {{0, {8}},
          {148, {2, 0xffffffb5, 7}},
          {224, {1, 6, 800, 11}},
          {368, {18001, 0x80000000, 0xfffffffe, 1001, 1002, 1003, 1004, 1005, 0xffffffff}}},
         {{4, std::string(31, 'M')},
          {36, "1.2.3"},
          {52, "35661"},
          {84, "+4915^VA-1"},
          {116, "8949"},
          {160, "Field"},
          {240, std::string(127, 'a')}})
        .bytes();

TEST(Messages, LayoutIsTheSameBothWays) {
    std::tuple<std::string, unsigned, std::string> const cases[] = {
        {gprsStats, 8,
         std::string(31, 'M') + " 1.2.3 35661 +4915^VA-1 8949 2 -75 7 Field 1 6 800 11 " +
             std::string(127, 'a') + " 18001 -2147483648 -2 1001 1002 1003 1004 1005 4294967295 "},
        {serverStats, 15, "1 174260225 127 1000 1001 1002 1003 48879 "},
        {openVpnStats, 22, "1 16909060 Initialization "},
        {Packed(cVexaMsgRequestGPRSStats()), 9, "none"},
        {Packed(cVexaMsgRequestServerStats()), 14, "none"},
        {Packed(cVexaMsgRequestOpenVPNStats()), 21, "none"},
    };
    for (auto const &[bytes, type, fields] : cases) {
        auto const message = vexa::Unpack(bytes.data(), bytes.size());
        ASSERT_TRUE(message) << type;
        EXPECT_EQ(message->Type(), type);
        EXPECT_EQ(FieldsOf(*message), fields);
        EXPECT_EQ(Packed(*message), bytes) << type;
        for (std::size_t size = 0; size < bytes.size(); ++size)
            EXPECT_FALSE(vexa::Unpack(bytes.data(), size)) << type << " of " << size;
        std::string const longer = bytes + '\0';
        EXPECT_FALSE(vexa::Unpack(longer.data(), longer.size())) << type;
    }
    for (std::uint32_t const type : {0u, 7u, 10u, 22u, 0x08000000u, 0xffffffffu})
        EXPECT_FALSE(vexa::Unpack(Wire(28, {{0, {type}}}).bytes().data(), 28)) << type;
}

TEST(Messages, SmallBuffersGetTheTypeOrNothing) {
    std::tuple<std::string, unsigned, int, unsigned> const cases[] = {
        {Wire(4, {{0, {14}}}).bytes(), 3, -1, 0},
        {Wire(4, {{0, {14}}}).bytes(), 4, 4, 4},
        {serverStats, 3, -1, 0},
        {serverStats, 27, 4, 4},
        {serverStats, 28, 28, 28},
        {gprsStats, 403, 404, 4},
        {gprsStats, 404, 404, 404},
    };
    for (auto const &[bytes, size, result, written] : cases) {
        std::string buffer(500, '#');
        EXPECT_EQ(vexa::Unpack(bytes.data(), bytes.size())->Pack(buffer.data(), size), result) << size;
        EXPECT_EQ(buffer, bytes.substr(0, written) + std::string(500 - written, '#')) << size;
    }
}

TEST(Messages, TextsEndWhateverTheyHold) {
    cVexaMsgOpenVPNStats message;
    std::fill(std::begin(message.status), std::end(message.status), 'x');
    std::string const packed = Packed(message);
    EXPECT_EQ(packed.substr(9), std::string(63, 'x') + '\0');
    std::string const unended = packed.substr(0, 72) + 'x';
    EXPECT_EQ(FieldsOf(*vexa::Unpack(unended.data(), unended.size())), "0 0 " + std::string(63, 'x') + ' ');
}

}  // namespace
