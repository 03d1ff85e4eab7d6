#pragma once

#include <string>

namespace webconfig::apps {

/// What ntpq's list of peers tells.
struct NtpqReport {
    bool running = false;
    bool hasGps = false;
    bool gpsSync = false;
    bool ppsSync = false;
    std::string syncTo;  ///< "GPS", "PPS", both, or the address of the peer that is followed
};

/// Reads the output of "ntpq -pn".
NtpqReport ReadNtpq(std::string const &output);

}  // namespace webconfig::apps
