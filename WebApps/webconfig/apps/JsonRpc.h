#pragma once

#include <cppcms/json.h>
#include <cppcms/rpc_json.h>

#include <memory>
#include <string>
#include <vector>

#include "WebApps/webconfig/apps/jsonrpc/CallQueue.h"
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

    /// Of settings on trial: "state" (as the notice on the pages), "seconds" that are left, and the "set" of
    /// the history that has begun it, where one has.
    static cppcms::json::value TrialStatus();
    /// Whether there was something that could be kept, or taken back.
    static cppcms::json::value TrialKeep();
    static cppcms::json::value TrialTakeBack();

    /// What the device does, and what it did since an uptime: docs/device-pages.md.
    static cppcms::json::value Metrics(CallQueue::Call const &call);

    // For machines: docs/api.md.
    static cppcms::json::value DeviceDescribe();
    static cppcms::json::value DeviceRestart(CallQueue::Call const &call);
    static cppcms::json::value SettingsDescribe();
    static cppcms::json::value SettingsGet(CallQueue::Call const &call);
    static cppcms::json::value SettingsDiff(CallQueue::Call const &call);
    static cppcms::json::value SettingsSet(CallQueue::Call const &call);
    static cppcms::json::value HistoryList(CallQueue::Call const &call);
    static cppcms::json::value HistoryUndo(CallQueue::Call const &call);
    void Discover();

    void wifiGetChannels(std::string const &countryCode);
    /// Rebuilds the whole service in this process. There is no result: the service stops.
    void Reload();

  private:
    // Bind a method as a call: notifications are refused.
    void _Bind(char const *method, std::size_t parameters, SharedPoll::Gather gather);
    void _Bind(char const *method, std::size_t parameters, CallQueue::Serve serve);
    template <typename... Parameters>
    void _Bind(char const *method, std::size_t parameters, void (JsonRpc::*handler)(Parameters...));

    bool const _machines;  // whether the configuration asks for what is for machines
    std::vector<std::unique_ptr<SharedPoll>> _polls;
    std::vector<std::unique_ptr<CallQueue>> _queues;
};

}  // namespace webconfig::apps
