#include <gtest/gtest.h>

#include <limits>

#include "WebApps/webconfig/apps/jsonrpc/CellularTexts.h"
#include "WebApps/webconfig/apps/jsonrpc/Duration.h"
#include "WebApps/webconfig/apps/jsonrpc/NtpqReport.h"

namespace {

using namespace webconfig::apps;

constexpr std::uint32_t maxCode = std::numeric_limits<std::uint32_t>::max();
constexpr std::int32_t minNumber = std::numeric_limits<std::int32_t>::min();

TEST(CellularTexts, SimStatus) {
    std::pair<std::uint32_t, char const *> const cases[] = {
        {0, "SIM error"}, {1, "Waiting for status query"},
        {2, "Ready"},     {3, "Unknown"},
        {10, "Unknown"},  {11, "Not inserted"},
        {12, "Unknown"},  {maxCode, "Unknown"},
    };
    for (auto const &[code, text] : cases)
        EXPECT_EQ(cellular::SimStatusText(code), text) << code;
    EXPECT_EQ(cellular::SimCcidText("8949", 2), "8949");
    EXPECT_EQ(cellular::SimCcidText("8949", 11), "8949");
    EXPECT_EQ(cellular::SimCcidText("8949", 10), "Unknown");
    EXPECT_EQ(cellular::SimCcidText("", 2), "Unknown");
}

TEST(CellularTexts, SignalStrength) {
    std::pair<std::int32_t, char const *> const cases[] = {
        {minNumber, "-2147483648 dBm"},
        {-75, "-75 dBm"},
        {-1, "-1 dBm"},
        {0, "-113 dBm or less"},
        {1, "-111 dBm"},
        {2, "-109 dBm"},
        {30, "-53 dBm"},
        {31, "-51 dBm or greater"},
        {32, "Not known or not detectable"},
        {99, "Not known or not detectable"},
    };
    for (auto const &[quality, text] : cases)
        EXPECT_EQ(cellular::SignalStrengthText(quality), text) << quality;
}

TEST(CellularTexts, BitErrorRateDependsOnTheKindOfNetwork) {
    struct {
        std::uint32_t errorClass;
        char const *gsm;
        char const *cdma;
    } const cases[] = {
        {0, "< 0.2%", "< 0.01%"},
        {1, "0.4%", "0.1%"},
        {2, "0.8%", "0.5%"},
        {3, "1.6%", "1.0%"},
        {4, "3.2%", "2.0%"},
        {5, "6.4%", "4.0%"},
        {6, "12.8%", "8.0%"},
        {7, "> 12.8%", "> 8.0%"},
        {8, "Unknown", "Unknown"},
        {99, "Unknown", "Unknown"},
        {maxCode, "Unknown", "Unknown"},
    };
    for (auto const &[errorClass, gsm, cdma] : cases) {
        EXPECT_EQ(cellular::BitErrorRateText(2, errorClass), gsm) << errorClass;
        EXPECT_EQ(cellular::BitErrorRateText(3, errorClass), cdma) << errorClass;
        EXPECT_EQ(cellular::BitErrorRateText(1, errorClass), "Unknown") << errorClass;
        EXPECT_EQ(cellular::BitErrorRateText(4, errorClass), "Unknown") << errorClass;
    }
}

TEST(CellularTexts, ConnectionTypeDependsOnTheKindOfNetwork) {
    struct {
        std::uint32_t technology;
        char const *gsm;
        char const *cdma;
    } const cases[] = {
        {0, "GPRS", "CDMA - Unknown"},
        {1, "Unknown", "CDMA - 1xRTT"},
        {2, "3G", "CDMA - EVDO"},
        {3, "GPRS w/EDGE", "CDMA - EVDO"},
        {4, "3G w/HSDPA", "CDMA - Unknown"},
        {5, "3G w/HSUPA", "CDMA - Unknown"},
        {6, "3G w/HSDPA+HSUPA", "CDMA - Unknown"},
        {7, "4G E-UTRAN", "CDMA - Unknown"},
        {8, "Unknown", "CDMA - Unknown"},
        {maxCode, "Unknown", "CDMA - Unknown"},
    };
    for (auto const &[technology, gsm, cdma] : cases) {
        EXPECT_EQ(cellular::ConnectionTypeText(2, technology, 0), gsm) << technology;
        EXPECT_EQ(cellular::ConnectionTypeText(3, technology, -1), cdma) << technology;
        EXPECT_EQ(cellular::ConnectionTypeText(0, technology, 0), "Unknown") << technology;
    }
    EXPECT_EQ(cellular::ConnectionTypeText(2, 7, 800), "4G E-UTRAN (≈800MHz)");
    EXPECT_EQ(cellular::ConnectionTypeText(3, 1, 1), "CDMA - 1xRTT (≈1MHz)");
    EXPECT_EQ(cellular::ConnectionTypeText(5, 7, 900), "Unknown (≈900MHz)");
}

TEST(CellularTexts, Temperature) {
    EXPECT_EQ(cellular::TemperatureText(minNumber), "Unknown");
    EXPECT_EQ(cellular::TemperatureText(minNumber + 1), "-2147483647&#176;C");
    EXPECT_EQ(cellular::TemperatureText(41), "41&#176;C");
    std::pair<std::int32_t, char const *> const cases[] = {
        {-3, "Unknown"},
        {-2, "Below lowest temp limit (shutdown)"},
        {-1, "Below low temp alert limit"},
        {0, "Normal operating temperature"},
        {1, "Above upper temp alert limit"},
        {2, "Above uppermost temp limit (shutdown)"},
        {3, "Unknown"},
    };
    for (auto const &[indication, text] : cases)
        EXPECT_EQ(cellular::TemperatureIndicationText(indication), text) << indication;
}

TEST(CellularTexts, NumbersAreSplitAtTheFirstMark) {
    struct {
        char const *text;
        char const *mobile;
        bool hasAssembly;
        char const *assembly;
    } const cases[] = {
        {"", "", false, ""},
        {"+491511", "+491511", false, ""},
        {"+491511^VA-1", "+491511", true, "VA-1"},
        {"+491511^VA^1", "+491511", true, "VA^1"},
        {"+491511^", "+491511", true, ""},
        {"^VA-1", "", true, "VA-1"},
    };
    for (auto const &c : cases) {
        cellular::Numbers const numbers = cellular::SplitNumbers(c.text);
        EXPECT_EQ(numbers.mobile, c.mobile) << c.text;
        EXPECT_EQ(numbers.hasAssembly, c.hasAssembly) << c.text;
        EXPECT_EQ(numbers.assembly, c.assembly) << c.text;
    }
}

TEST(Duration, UnitsChangeBeyondTheirBorders) {
    std::pair<std::uint32_t, char const *> const cases[] = {
        {0, "0 seconds"},       {1, "1 seconds"},   {300, "300 seconds"},       {301, "5 minutes"},
        {18000, "300 minutes"}, {18001, "5 hours"}, {maxCode, "1193046 hours"},
    };
    for (auto const &[seconds, text] : cases)
        EXPECT_EQ(DurationText(seconds), text) << seconds;
}

TEST(NtpqReport, TellsWhatTheClockFollows) {
    constexpr char head[] =
        "     remote           refid      st t when poll reach   delay   offset  jitter\n"
        "==============================================================================\n";
    struct {
        char const *peers;
        bool hasGps;
        bool gpsSync;
        bool ppsSync;
        char const *syncTo;
    } const cases[] = {
        {"", false, false, false, ""},
        {"*192.168.1.10   .DCF. 1 u 3 64 377 0.1 0.2 0.3\n", false, false, false, "192.168.1.10"},
        {"+10.0.0.1       10.0.0.9 2 u\n*10.0.0.2       10.0.0.9 2 u\n", false, false, false, "10.0.0.2"},
        {"*127.127.28.0   .GPS. 0 l\no127.127.22.0   .PPS. 0 l\n", true, true, true, "GPS with PPS"},
        {"*127.127.28.0   .GPS. 0 l\n", true, true, false, "GPS"},
        {"*127.127.28.0   .GPS. 0 l\n 127.127.22.0   .PPS. 0 l\n", true, true, false, "GPS"},
        {"+127.127.28.0   .GPS. 0 l\n*127.127.22.0   .PPS. 0 l\n", true, false, true, "PPS"},
        {"+127.127.28.0   .GPS. 0 l\n*10.0.0.2       10.0.0.9 2 u\n", true, false, false, "10.0.0.2"},
        {" 127.127.28.0   .GPS. 0 l\n", true, false, false, ""},
        // The pulses count only beside a satellite receiver, and only the first line that has them.
        {"o127.127.22.0   .PPS. 0 l\n*10.0.0.2   10.0.0.9 2 u\n", false, false, false, "10.0.0.2"},
        {" 127.127.28.0   .GPS. 0 l\n 127.127.22.0 .PPS. 0 l\no127.127.22.1 .PPS. 0 l\n", true, false, false,
         ""},
        {"*2001:db8::1    .DCF. 1 u\n", false, false, false, ""},
    };
    for (auto const &c : cases) {
        NtpqReport const report = ReadNtpq(std::string(head) + c.peers);
        EXPECT_TRUE(report.running) << c.peers;
        EXPECT_EQ(report.hasGps, c.hasGps) << c.peers;
        EXPECT_EQ(report.gpsSync, c.gpsSync) << c.peers;
        EXPECT_EQ(report.ppsSync, c.ppsSync) << c.peers;
        EXPECT_EQ(report.syncTo, c.syncTo) << c.peers;
    }
    NtpqReport const refused = ReadNtpq("ntpq: read: Connection refused\n*127.127.28.0   .GPS. 0 l\n");
    EXPECT_FALSE(refused.running || refused.hasGps || refused.gpsSync);
    EXPECT_EQ(refused.syncTo, "");
}

}  // namespace
