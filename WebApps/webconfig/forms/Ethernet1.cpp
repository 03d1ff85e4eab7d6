#include "WebApps/webconfig/forms/Ethernet1.h"

#include <string>

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/settings/Rules.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

namespace {

constexpr char const *invalidAddress = util::Translatable("Invalid IP address");

/// Bit i of a speed mask is the speed i.
constexpr char const *speeds[] = {
    util::Translatable("10Mbs Half duplex"), util::Translatable("10Mbs Full duplex"),
    util::Translatable("100Mbs Half duplex"), util::Translatable("100Mbs Full duplex")};

}  // namespace

Ethernet1::Ethernet1() {
    SetUp(addressMode, "addressMode", "cfg_eth1_address_mode", "Address Mode");
    util::validation::Limit(addressMode, settings::Row("net/lan_addr_mode"));
    addressMode.selected_id("static");
    add(addressMode);

    SetUp(ipAddress, "ipAddress", "cfg_eth1_ip", "IP Address");
    ipAddress.error_message(invalidAddress);
    add(ipAddress);

    SetUp(netmask, "netmask", "cfg_eth1_netmask", "Netmask");
    settings::Limits const &prefixes = settings::Row("net/lan_netmask").limits;
    for (long prefix = prefixes.most; prefix >= prefixes.least; --prefix) {
        std::string const dotted = settings::DottedNetmask(static_cast<unsigned>(prefix));
        netmask.add(dotted + '/' + std::to_string(prefix), dotted);
    }
    add(netmask);

    SetUp(gateway, "gateway", "cfg_eth1_gateway", "Gateway");
    gateway.error_message(invalidAddress);
    add(gateway);

    SetUp(speedsAvailable, "speedsAvailable", "cfg_eth1_speed", "Available speeds");
    speedsAvailable.rows(4);
    speedsAvailable.at_least(1);
    speedsAvailable.error_message("At least one speed must be selected");
    add(speedsAvailable);

    SetUpSubmit(saveButton, "saveButton", "cfg_eth1_save", "Save");
    add(saveButton);
}

void Ethernet1::AddSpeeds(unsigned mask) {
    for (unsigned bit = 0; bit < std::size(speeds); ++bit)
        speedsAvailable.add(util::Translate(speeds[bit]), (mask >> bit & 1U) != 0);
}

unsigned Ethernet1::SpeedMask() {
    unsigned mask = 0;
    auto const selected = speedsAvailable.selected_map();
    for (unsigned bit = 0; bit < selected.size(); ++bit)
        mask |= static_cast<unsigned>(selected[bit]) << bit;
    return mask;
}

bool Ethernet1::validate() {
    if (IsDhcp()) {
        ipAddress.SetAllowEmpty(true);
        gateway.SetAllowEmpty(true);
    } else {
        util::validation::NonEmpty(netmask);
    }
    return Base::validate();
}

}  // namespace webconfig::forms
