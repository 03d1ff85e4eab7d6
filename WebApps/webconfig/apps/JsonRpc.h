#pragma once

#include <cppcms/json.h>
#include <cppcms/rpc_json.h>

#include <string>

namespace webconfig::apps {

/// The status calls that the pages poll. Each handler gathers its data afresh; missing data gives a text
/// such as "Unknown", never an error.
class JsonRpc : public cppcms::rpc::json_rpc_server {
  public:
    explicit JsonRpc(cppcms::service &service);

    void FirmwareUpgradeStatus();
    void GeneralStatus();
    void Ethernet1Status();
    /// Its answer is HTTP status 404 where the modem's daemon cannot be asked at all.
    void CellularStatus();
    void OpenvpnStatus();
    void PortForwardingStatus();
    void OrvaneStatus();
    void TailSyslog();
    /// Of the time service that the device has: chronyd or ntpd.
    void NtpServerStatus();
    void ChronydStatus();
    void NtpdStatus();
    void DnsServerStatus();
    /// Rebuilds the whole service in this process. There is no result: the service stops.
    void Reload();
    void wifiApStatus();
    void wifiClientStatus();
    void wifiGetChannels(std::string const &countryCode);
    void PrepareFWUpgrade();

  private:
    void _Bind(char const *method, void (JsonRpc::*handler)());
    /// Returns \a result with each of its texts cleaned: what tools and daemons print may be any bytes.
    void _Return(cppcms::json::value result);
};

}  // namespace webconfig::apps
