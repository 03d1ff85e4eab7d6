#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>

#include "WebApps/webconfig/metrics/Samples.h"
#include "tests/unit/platform/TemporaryFolder.h"

namespace webconfig::metrics {

namespace {

/// All series of after \a uptime, one a line.
std::string Told(Samples const &samples, std::int64_t uptime) {
    Series const series = samples.After(uptime);
    std::string text = series.uptime + '|' + series.load + '|' + series.memory + '|' + series.temperature +
                       '|' + series.signal;
    for (auto const &[interface, rates] : series.traffic)
        text += '\n' + interface + ' ' + rates.received + '|' + rates.sent;
    return text;
}

Readings At(double uptime, std::vector<Traffic> traffic = {}) {
    Readings readings;
    readings.uptime = uptime;
    readings.traffic = std::move(traffic);
    return readings;
}

}  // namespace

TEST(Samples, AreKeptAsTheyAreAndToldFromAMomentOn) {
    auto const samples = std::make_unique<Samples>();
    EXPECT_EQ(Told(*samples, 0), "||||");
    Readings full = At(30.9, {{"eth0", 1000, 500}});
    full.load = 0.126;
    full.memory = Memory{3, 1};
    full.temperature = -12.34;
    full.signal = -73;
    samples->Add(full);
    Readings extreme =
        At(60.9, {{"eth0", 4000, std::uint64_t{1} << 40}, {"a name too long!", 1, 1}, {"ppp0", 9, 9}});
    extreme.load = 1e9;
    extreme.signal = std::numeric_limits<int>::min();
    samples->Add(extreme);
    // A counter that begins anew, an interface that is gone for a while, and a longer time than usual.
    samples->Add(At(120.9, {{"eth0", 4600, 0}}));
    samples->Add(At(150.9, {{"eth0", 4600, 300}, {"ppp0", 909, 1809}}));
    std::string const last = "150||||\neth0 0|10\nppp0 10|20";
    std::pair<std::int64_t, std::string> const cases[] = {
        {0,
         "30,60,120,150|13,65534,,|3333,,,|-123,,,|-73,-32768,,\n"
         "eth0 ,100,10,0|,4294967294,,10\nppp0 ,,,10|,,,20"},
        {120, last},
        {149, last},
        {150, "||||\neth0 |\nppp0 |"},
    };
    for (auto const &[uptime, told] : cases)
        EXPECT_EQ(Told(*samples, uptime), told) << uptime;
    EXPECT_EQ(Told(*samples, 151), Told(*samples, 0)) << "of before a restart";
    EXPECT_EQ(Told(*samples, -1), Told(*samples, 0));
}

TEST(Samples, TheNewestTakesThePlaceOfTheOldestAndOfTheInterfaceThatIsAwayForLongest) {
    auto const samples = std::make_unique<Samples>();
    auto const interfaces = [](int first, std::size_t count) {
        std::vector<Traffic> traffic;
        for (std::size_t i = 0; i < count; ++i)
            traffic.push_back({"tun" + std::to_string(first + static_cast<int>(i)), 1, 1});
        return traffic;
    };
    auto const names = [&samples] {
        std::string text;
        for (auto const &one : samples->After(0).traffic)
            text += one.first.substr(3);
        return text;
    };
    samples->Add(At(1, interfaces(0, Samples::maxInterfaces + 1)));
    EXPECT_EQ(names(), "01234567") << "there is no more room";
    samples->Add(At(2, interfaces(1, 7)));
    samples->Add(At(3, interfaces(2, 7)));
    EXPECT_EQ(names(), "12345678");
    for (std::size_t i = 0; i < Samples::length; ++i)
        samples->Add(At(10.0 + static_cast<double>(i)));
    std::string const uptimes = samples->After(0).uptime;
    EXPECT_TRUE(uptimes.starts_with("10,11,") && uptimes.ends_with(",2889")) << uptimes.substr(0, 20);
    EXPECT_EQ(static_cast<std::size_t>(std::count(uptimes.begin(), uptimes.end(), ',')), Samples::length - 1);
}

TEST(Readings, OfProcAndSys) {
    TemporaryFolder const root;
    for (char const *const folder : {"proc/net", "sys/class/thermal/thermal_zone0",
                                     "sys/class/thermal/cooling_device0", "sys/class/thermal/thermal_zone1"})
        std::filesystem::create_directories(root / folder);
    auto const nothing = ReadSystem(root.Path());
    EXPECT_FALSE(nothing.load || nothing.memory || nothing.temperature || !nothing.traffic.empty());
    EXPECT_EQ(nothing.uplink, "");

    root.File("proc/loadavg", "0.42 0.30 0.25 1/120 4711\n");
    root.File("proc/meminfo", "MemTotal:     1000 kB\nMemFree:       10 kB\nMemAvailable:  400 kB\n");
    root.File("sys/class/thermal/thermal_zone0/temp", "41500\n");
    root.File("sys/class/thermal/thermal_zone1/temp", "-273000\n");
    root.File("proc/net/dev",
              "Inter-|   Receive  |  Transmit\n face |bytes packets\n"
              "    lo: 5 1 0 0 0 0 0 0 5 1 0 0 0 0 0 0\n"
              "  eth0:18446744073709551615 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15\n"
              "  sit0: 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n  eth1: 7\n");
    root.File("proc/net/route",
              "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\tWindow\tIRTT\n"
              "ppp0\t00000000\t0100610A\t0003\t0\t0\t700\t00000000\t0\t0\t0\n"
              "eth0\t00000000\t0100630A\t0003\t0\t0\t100\t00000000\t0\t0\t0\n"
              "eth1\t00000000\t0100630A\t0002\t0\t0\t1\t00000000\t0\t0\t0\n"
              "br1\t00000000\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n");
    auto const readings = ReadSystem(root.Path());
    EXPECT_EQ(readings.load, 0.42);
    EXPECT_EQ(readings.memory->total, 1000U);
    EXPECT_EQ(readings.memory->used, 600U);
    EXPECT_EQ(readings.temperature, 41.5);
    EXPECT_EQ(readings.uplink, "eth0");
    ASSERT_EQ(readings.traffic.size(), 1U);
    EXPECT_EQ(readings.traffic[0].interface, "eth0");
    EXPECT_EQ(readings.traffic[0].received, std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(readings.traffic[0].sent, 8U);
}

}  // namespace webconfig::metrics
