#pragma once

#include <string>

#include "WebApps/webconfig/apps/Base.h"

namespace webconfig::data {
struct Ethernet1;
}  // namespace webconfig::data

namespace webconfig::apps {

/// Pages of the network settings.
class Network : public Base {
  public:
    explicit Network(cppcms::service &service);

    void Ethernet1();

  private:
    /// Registers a page at "/" + \a name, under \a name for links.
    void _Page(std::string const &name, void (Network::*handler)());

    /// A wired port: the name of its page, the keys of its settings.
    struct EthernetPort;
    /// The page of a wired port, all but its command output.
    void EthernetInternal(data::Ethernet1 &content, EthernetPort const &port);
    void _EthernetSave(data::Ethernet1 &content, EthernetPort const &port);
};

}  // namespace webconfig::apps
