#pragma once

#include <cppcms/json.h>
#include <cppcms/rpc_json.h>

#include <memory>
#include <string>
#include <vector>

#include "WebApps/webconfig/apps/jsonrpc/SharedPoll.h"

namespace webconfig::apps {

/// The status calls that the pages poll. The handlers that return a value gather it afresh, on a thread of
/// their own, and share nothing; missing data gives a text such as "Unknown", never an error.
class JsonRpc : public cppcms::rpc::json_rpc_server {
  public:
    explicit JsonRpc(cppcms::service &service);

    static cppcms::json::value FirmwareUpgradeStatus();
    static cppcms::json::value PrepareFWUpgrade();
    static cppcms::json::value GeneralStatus();
    static cppcms::json::value Ethernet1Status();
    /// Undefined, which is answered with HTTP status 404, where the modem's daemon cannot be asked at all.
    static cppcms::json::value CellularStatus();
    static cppcms::json::value OpenvpnStatus();
    static cppcms::json::value PortForwardingStatus();
    static cppcms::json::value OrvaneStatus();
    static cppcms::json::value TailSyslog();
    /// Of the time service that the device has: chronyd or ntpd.
    static cppcms::json::value NtpServerStatus();
    static cppcms::json::value ChronydStatus();
    static cppcms::json::value NtpdStatus();
    static cppcms::json::value DnsServerStatus();
    static cppcms::json::value wifiApStatus();
    static cppcms::json::value wifiClientStatus();

    /// Of settings on trial: "state" (as the notice on the pages) and "seconds" that are left.
    static cppcms::json::value TrialStatus();
    /// Whether there was something that could be kept, or taken back.
    static cppcms::json::value TrialKeep();
    static cppcms::json::value TrialTakeBack();

    void wifiGetChannels(std::string const &countryCode);
    /// Rebuilds the whole service in this process. There is no result: the service stops.
    void Reload();

  private:
    /// Binds a method without parameters that takes time, as a call: notifications are refused.
    void _BindStatus(char const *method, SharedPoll::Gather gather);

    std::vector<std::unique_ptr<SharedPoll>> _polls;
};

}  // namespace webconfig::apps
