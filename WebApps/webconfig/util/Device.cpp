#include "WebApps/webconfig/util/Device.h"

#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <vnt_util/system.h>

#include <array>
#include <memory>

#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::util {

namespace {

/// In the order of preference.
constexpr char const *interfaces[] = {"br1", "eth0", "eth1"};

struct FreeAddresses {
    void operator()(ifaddrs *list) const { ::freeifaddrs(list); }
};

std::string AddressText(sockaddr const *address) {
    std::array<char, NI_MAXHOST> host{};
    if (::getnameinfo(address, sizeof(sockaddr_in), host.data(), host.size(), nullptr, 0, NI_NUMERICHOST) !=
        0)
        return {};
    return host.data();
}

}  // namespace

std::string DeviceName() {
    static std::string const name = "korbex_" + SystemAssemblySN();
    return name;
}

std::string SystemAssemblySN() {
    return vnt_util::system::GetBarcodeASN(nullptr);
}

bool SetSystemAssemblySN(std::string const &number) {
    bool const set = vnt_util::system::SetBarcodeASN(number);
    Happened("setting", OutcomeOf(set), {{"key", "assembly serial number"}, {"operation", "SetBarcodeASN"}});
    return set;
}

std::string SystemDeviceID() {
    return Translatable("(not supported)");
}

std::string AddressOf(std::string const &interface) {
    ifaddrs *first = nullptr;
    if (::getifaddrs(&first) != 0)
        return {};
    std::unique_ptr<ifaddrs, FreeAddresses> const list(first);
    std::string address;
    for (ifaddrs const *entry = first; entry; entry = entry->ifa_next) {
        if (entry->ifa_addr && entry->ifa_addr->sa_family == AF_INET && interface == entry->ifa_name)
            address = AddressText(entry->ifa_addr);
    }
    return address;
}

std::string GetCurrentIPAddress() {
    for (char const *const interface : interfaces) {
        if (std::string address = AddressOf(interface); !address.empty())
            return address;
    }
    return {};
}

}  // namespace webconfig::util
