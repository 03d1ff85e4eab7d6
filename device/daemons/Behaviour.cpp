#include "device/daemons/Behaviour.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <thread>

namespace daemons {

namespace {

constexpr std::uint32_t maxDelay = 60000;
constexpr std::size_t headerSize = 4;  // the type, of whatever kind of datagram

void Wait(Report &report) {
    std::uint32_t milliseconds = 0;
    report.Get("delay", milliseconds);
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(milliseconds, maxDelay)));
}

}  // namespace

std::optional<std::string> Behave(Report &report, std::string datagram) {
    Wait(report);
    std::string const manner = report.Text("answer", "normal");
    if (manner == "silent")
        return std::nullopt;
    if (manner == "short")
        datagram.pop_back();
    else if (manner == "long")
        datagram.push_back('\0');
    else if (manner == "noise")
        datagram.assign(100, '\xa5');
    else if (manner == "garbage")
        std::fill(datagram.begin() + headerSize, datagram.end(), '\xff');
    else if (manner != "normal")
        report.Complain("answer", "'" + manner + "' is none of normal, silent, short, long, noise, garbage");
    return datagram;
}

}  // namespace daemons
