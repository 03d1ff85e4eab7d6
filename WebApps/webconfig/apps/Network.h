#pragma once

#include <string>

#include "WebApps/webconfig/apps/Base.h"
#include "WebApps/webconfig/data/PortForwardingRules.h"

namespace webconfig::data {
struct Ethernet1;
struct OpenVPN;
struct PortForwarding;
}  // namespace webconfig::data

namespace webconfig::apps {

struct EthernetPort;

/// Pages of the network settings.
class Network : public Base {
  public:
    explicit Network(cppcms::service &service);

    void Ethernet1();
    void OpenVPN();
    void Orvane();
    void PortForwarding();
    void Cellular();
    void Ntpd();
    void DNSServer();
    void AccessPoint();
    void Wlan();

  private:
    /// The page of a wired port, all but its command output.
    void EthernetInternal(data::Ethernet1 &content, EthernetPort const &port);

    // One for each button of the page.
    void _OpenVPNSave(data::OpenVPN &content);
    void _OpenVPNUpload(data::OpenVPN &content);
    void _OpenVPNProvision(data::OpenVPN &content);
    /// Installs the configuration at \a path. False where that fails, with the text for the page in
    /// \a error or, where there is none, an empty text.
    static bool _OpenVPNUpdate(std::string const &path, std::string &error);

    static void _PortForwardingLoadData(data::PortForwardingRules &rules);
    static bool _PortForwardingCheckRule(data::PortForwarding &content, data::PortForwardingKey const &key);
    // One for each button of the page; they tell whether the rules have to be applied.
    bool _PortForwardingAddHandler(data::PortForwarding &content);
    bool _PortForwardingSaveHandler(data::PortForwarding &content);
    bool _PortForwardingDeleteHandler(data::PortForwarding &content);
    bool _PortForwardingEditHandler(data::PortForwarding &content);
    bool _PortForwardingCancelHandler(data::PortForwarding &content);
    bool _PortForwardingIsNamed(data::PortForwardingKey const &key);
    static void _PortForwardingPrmWriteEntry(data::PortForwardingKey const &key,
                                             data::PortForwardingEntry const &entry);
    static void _PortForwardingPrmDeleteEntry(data::PortForwardingKey const &key);
};

}  // namespace webconfig::apps
