#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "fleet/BrokerLink.h"
#include "fleet/agent/Agent.h"
#include "fleet/agent/Settings.h"

namespace fleet::agent {

/// The device's connection with the broker. Each one begins with nothing of the one before but the session
/// that the broker keeps, so that changes wait there.
class Connection : public BrokerLink, public Broker {
  public:
    /// Who is told what comes.
    struct Listener {
        std::function<void(std::string_view message)> take;  ///< a change; what throws has not taken it
        std::function<void(bool known)> reached;
        std::function<void()> lost;
        std::function<void(int message)> acknowledged;
    };

    /// Throws std::runtime_error where the settings cannot be used.
    explicit Connection(Settings settings);

    void Listen(Listener listener) { _listener = std::move(listener); }
    /// Says that the device goes, and goes.
    void Close();

    int Publish(char const *topic, std::string const &message, bool retained) override;
    void Reopen(std::chrono::seconds delay) override;
    void Hurry(bool hurry) override { _Hurry(hurry); }

  private:
    void _Taken(bool known) override;
    void _OnMessage(mosquitto_message const &message) override;
    void _OnPublish(int message, int reason) override;
    void _OnLost() override { _listener.lost(); }

    std::string const _id;
    Listener _listener;
    bool _known = false;
    int _online = 0;  // the message that says so; 0 as long as the broker has not taken the connection
};

}  // namespace fleet::agent
