#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <string>

#include "WebApps/webconfig/apps/jsonrpc/CellularTexts.h"
#include "WebApps/webconfig/apps/jsonrpc/Duration.h"
#include "WebApps/webconfig/apps/jsonrpc/NtpqReport.h"

namespace {

using namespace webconfig::apps;

constexpr std::uint32_t maxCode = std::numeric_limits<std::uint32_t>::max();
constexpr std::int32_t minNumber = std::numeric_limits<std::int32_t>::min();

/// The texts of \a codes, as one.
template <typename Code, typename Text>
std::string Texts(std::initializer_list<Code> codes, Text textOf) {
    std::string texts;
    for (auto const code : codes)
        texts += textOf(code) + "|";
    return texts;
}

TEST(CellularTexts, SimStatus) {
    EXPECT_EQ(Texts({0u, 1u, 2u, 3u, 10u, 11u, 12u, maxCode}, cellular::SimStatusText),
              "SIM error|Waiting for status query|Ready|Unknown|Unknown|Not inserted|Unknown|Unknown|");
    EXPECT_EQ(cellular::SimCcidText("8949", 2), "8949");
    EXPECT_EQ(cellular::SimCcidText("8949", 11), "8949");
    EXPECT_EQ(cellular::SimCcidText("8949", 10), "Unknown");
    EXPECT_EQ(cellular::SimCcidText("", 2), "Unknown");
}

TEST(CellularTexts, SignalStrength) {
    EXPECT_EQ(Texts({minNumber, -75, -1, 0, 1, 2, 30, 31, 32, 99}, cellular::SignalStrengthText),
              "-2147483648 dBm|-75 dBm|-1 dBm|-113 dBm or less|-111 dBm|-109 dBm|-53 dBm|-51 dBm or greater|"
              "Not known or not detectable|Not known or not detectable|");
}

TEST(CellularTexts, RatesAndTypesDependOnTheKindOfNetwork) {
    std::initializer_list<std::uint32_t> const codes = {0, 1, 6, 7, 8, maxCode};
    auto const rates = [&](std::uint32_t kind) {
        return Texts(codes, [&](auto code) { return cellular::BitErrorRateText(kind, code); });
    };
    EXPECT_EQ(rates(2), "< 0.2%|0.4%|12.8%|> 12.8%|Unknown|Unknown|");
    EXPECT_EQ(rates(3), "< 0.01%|0.1%|8.0%|> 8.0%|Unknown|Unknown|");
    EXPECT_EQ(rates(1), "Unknown|Unknown|Unknown|Unknown|Unknown|Unknown|");
    auto const types = [&](std::uint32_t kind, std::int32_t frequency) {
        return Texts(codes, [&](auto code) { return cellular::ConnectionTypeText(kind, code, frequency); });
    };
    EXPECT_EQ(types(2, 0), "GPRS|Unknown|3G w/HSDPA+HSUPA|4G E-UTRAN|Unknown|Unknown|");
    EXPECT_EQ(types(3, -1),
              "CDMA - Unknown|CDMA - 1xRTT|CDMA - Unknown|CDMA - Unknown|CDMA - Unknown|"
              "CDMA - Unknown|");
    EXPECT_EQ(cellular::ConnectionTypeText(2, 7, 800), "4G E-UTRAN (≈800MHz)");
}

TEST(CellularTexts, Temperature) {
    EXPECT_EQ(Texts({minNumber, minNumber + 1, 41}, cellular::TemperatureText),
              "Unknown|-2147483647&#176;C|41&#176;C|");
    EXPECT_EQ(Texts({-3, -2, 0, 2, 3}, cellular::TemperatureIndicationText),
              "Unknown|Below lowest temp limit (shutdown)|Normal operating temperature|"
              "Above uppermost temp limit (shutdown)|Unknown|");
}

TEST(CellularTexts, NumbersAreSplitAtTheFirstMark) {
    struct {
        char const *text;
        char const *mobile;
        bool hasAssembly;
        char const *assembly;
    } const cases[] = {
        {"+491511^VA^1", "+491511", true, "VA^1"},
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
    EXPECT_EQ(Texts({0u, 300u, 301u, 18000u, 18001u, maxCode}, DurationText),
              "0 seconds|300 seconds|5 minutes|300 minutes|5 hours|1193046 hours|");
}

TEST(NtpqReport, TellsWhatTheClockFollows) {
    constexpr char head[] =
        "     remote           refid      st t when poll reach   delay   offset  jitter\n"
        "==============================================================================\n";
    struct {
        char const *peers;
        char const *clocks;  // there is a GPS, it is followed, the pulses are
        char const *syncTo;
    } const cases[] = {
        {"", "---", ""},
        {"*192.168.1.10   .DCF. 1 u 3 64 377 0.1 0.2 0.3\n", "---", "192.168.1.10"},
        {"+10.0.0.1       10.0.0.9 2 u\n*10.0.0.2       10.0.0.9 2 u\n", "---", "10.0.0.2"},
        {"*127.127.28.0   .GPS. 0 l\no127.127.22.0   .PPS. 0 l\n", "hgp", "GPS with PPS"},
        {"*127.127.28.0   .GPS. 0 l\n 127.127.22.0   .PPS. 0 l\n", "hg-", "GPS"},
        {"+127.127.28.0   .GPS. 0 l\n*127.127.22.0   .PPS. 0 l\n", "h-p", "PPS"},
        {"+127.127.28.0   .GPS. 0 l\n*10.0.0.2       10.0.0.9 2 u\n", "h--", "10.0.0.2"},
        // The pulses count only beside a satellite receiver, and only the first line that has them.
        {"o127.127.22.0   .PPS. 0 l\n*10.0.0.2   10.0.0.9 2 u\n", "---", "10.0.0.2"},
        {" 127.127.28.0   .GPS. 0 l\n 127.127.22.0 .PPS. 0 l\no127.127.22.1 .PPS. 0 l\n", "h--", ""},
        {"*2001:db8::1    .DCF. 1 u\n", "---", ""},
    };
    for (auto const &c : cases) {
        NtpqReport const report = ReadNtpq(std::string(head) + c.peers);
        EXPECT_TRUE(report.running) << c.peers;
        std::string const clocks{report.hasGps ? 'h' : '-', report.gpsSync ? 'g' : '-',
                                 report.ppsSync ? 'p' : '-'};
        EXPECT_EQ(clocks, c.clocks) << c.peers;
        EXPECT_EQ(report.syncTo, c.syncTo) << c.peers;
    }
    NtpqReport const refused = ReadNtpq("ntpq: read: Connection refused\n*127.127.28.0   .GPS. 0 l\n");
    EXPECT_FALSE(refused.running || refused.hasGps || refused.gpsSync);
    EXPECT_EQ(refused.syncTo, "");
}

}  // namespace
