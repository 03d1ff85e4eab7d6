#pragma once

#include <string>

namespace webconfig::util {

/// What firmware images are made for.
inline constexpr char hardwarePlatform[] = "brq4";

/// "korbex_" and the assembly serial number, asked for once in the life of the process.
std::string DeviceName();

/// The assembly serial number; empty where there is none.
std::string SystemAssemblySN();

/// Stores another assembly serial number; true on success.
bool SetSystemAssemblySN(std::string const &number);

std::string SystemDeviceID();

/// The IPv4 address of \a interface in dotted form, the last one of several; empty where it has none.
std::string AddressOf(std::string const &interface);

/// The IPv4 address, in dotted form, of the first of br1, eth0 and eth1 that has one; empty where none
/// has.
std::string GetCurrentIPAddress();

}  // namespace webconfig::util
