#pragma once

#include "tests/pages/support/Page.h"

namespace pages {

/// What a service and a guard of a test's own want, and a rule that is on trial when it is saved: two keys,
/// one set.
class OnTrial : public testing::Test {
  protected:
    explicit OnTrial(std::string const &seconds)
        : configuration(device::Configuration(
              8095,
              R"("history":{"file":"/tmp/trial/history.db"},"trial":{"file":"/tmp/trial/trial","seconds":)" +
                  seconds + "},")) {
        Reset();
    }

    void Reset() const {
        device::Shell("rm -rf /tmp/trial; mkdir /tmp/trial");
        store.Set({{"net/portfwd/tcp/08443/d_port", none}, {"net/portfwd/tcp/08443/d_ip", none}});
    }
    static Html AddRule() {
        return Html(Browser(address)
                        .Post(forwarding, {{"protocol", "tcp"},
                                           {"sourcePort", "8443"},
                                           {"destinationIP", "192.168.0.33"},
                                           {"destinationPort", "443"},
                                           {"add", "Add Row"}})
                        .body);
    }
    /// How much of the rule is stored: 0 to 2 keys.
    static std::size_t Keys() {
        return device::Count(device::Shell("prm list net/portfwd/tcp/08443"), "/d_");
    }

    static constexpr char address[] = "http://127.0.0.1:8095";
    static constexpr char forwarding[] = "/config/network/port_forwarding";
    static constexpr char trialFile[] = "/tmp/trial/trial";
    static constexpr char guardProgram[] = "/usr/sbin/webconfig-guard";
    std::string const configuration;
    device::KeptStore const store;
};

}  // namespace pages
