#include "WebApps/webconfig/metrics/Readings.h"

#include <net/route.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <system_error>

#include "WebApps/webconfig/util/DaemonQuery.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Signal.h"
#include "WebApps/webconfig/util/Switch.h"

namespace webconfig::metrics {

namespace {

constexpr char loopback[] = "lo";
constexpr double milli = 1e-3;

std::optional<double> FirstNumber(std::filesystem::path const &path) {
    std::ifstream file(path);
    double number = 0;
    if (file >> number)
        return number;
    return {};
}

std::optional<Memory> ReadMemory(std::string const &path) {
    std::ifstream file(path);
    std::uint64_t total = 0;
    std::uint64_t available = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string name;
        words >> name;
        if (name == "MemTotal:")
            words >> total;
        else if (name == "MemAvailable:")
            words >> available;
    }
    if (total == 0)
        return {};
    return Memory{total, total - std::min(available, total)};
}

/// A sensor that is switched off cannot be read: it does not count.
std::optional<double> HottestSensor(std::string const &folder) {
    std::optional<double> hottest;
    std::error_code none;
    for (auto const &sensor : std::filesystem::directory_iterator(folder, none)) {
        if (auto const degrees = FirstNumber(sensor.path() / "temp"))
            hottest = std::max(hottest.value_or(*degrees * milli), *degrees * milli);
    }
    return hottest;
}

/// Two lines of headings, then "NAME: RECEIVED" with seven more figures, and SENT.
std::vector<Traffic> ReadTraffic(std::string const &path) {
    constexpr int between = 7;
    std::ifstream file(path);
    std::vector<Traffic> all;
    for (std::string line; std::getline(file, line);) {
        std::size_t const colon = line.find(':');
        if (colon == std::string::npos)
            continue;
        std::size_t const name = line.find_first_not_of(' ');
        Traffic one{line.substr(name, colon - name)};
        std::istringstream figures(line.substr(colon + 1));
        figures >> one.received;
        std::uint64_t skipped = 0;
        for (int i = 0; i < between; ++i)
            figures >> skipped;
        if (figures >> one.sent && one.interface != loopback && (one.received > 0 || one.sent > 0))
            all.push_back(std::move(one));
    }
    return all;
}

/// Of several default routes that with the least metric.
std::string DefaultRoute(std::string const &path) {
    std::ifstream file(path);
    std::string best;
    unsigned least = std::numeric_limits<unsigned>::max();
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string interface, destination, gateway, references, uses, mask;
        unsigned flags = 0;
        unsigned metric = 0;
        words >> interface >> destination >> gateway >> std::hex >> flags >> references >> uses >> std::dec >>
            metric >> mask;
        if (words && (flags & RTF_UP) && destination == "00000000" && mask == destination && metric < least) {
            best = interface;
            least = metric;
        }
    }
    return best;
}

void AddModem(Readings &readings) {
    constexpr auto unknown = std::numeric_limits<std::int32_t>::min();
    auto const modem = util::AskSeriald(util::Failures::Silent).answer;
    if (!modem)
        return;
    readings.signal = util::SignalDbm(modem->signalQuality);
    if (!readings.temperature && modem->moduleTemperature != unknown)
        readings.temperature = modem->moduleTemperature;
}

}  // namespace

double Uptime() {
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

Readings ReadSystem(std::string const &root) {
    Readings readings;
    readings.uptime = Uptime();
    readings.load = FirstNumber(root + "/proc/loadavg");
    readings.memory = ReadMemory(root + "/proc/meminfo");
    readings.temperature = HottestSensor(root + "/sys/class/thermal");
    readings.traffic = ReadTraffic(root + "/proc/net/dev");
    readings.uplink = DefaultRoute(root + "/proc/net/route");
    return readings;
}

void AddDaemons(Readings &readings) {
    readings.modem = util::Prm::GetString("serial/port/gprs/function") == "gprs_dialup";
    readings.vpn = util::IsOn("net/openvpn/enabled");
    if (readings.modem)
        AddModem(readings);
    if (!readings.vpn)
        return;
    if (auto const tunnel = util::AskOpenvpnd(util::Failures::Silent).answer)
        readings.tunnel = Tunnel{tunnel->connected != 0, tunnel->secondsInState, tunnel->status};
}

}  // namespace webconfig::metrics
