#pragma once

#include <mosquitto.h>

#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "fleet/agent/Agent.h"
#include "fleet/agent/Settings.h"

namespace fleet::agent {

/// The connection with the broker: MQTT 5, one thread. It is made again, with growing pauses, whenever it is
/// lost. Each connection begins with nothing of the one before but the session that the broker keeps, so that
/// changes wait there.
class Connection : public Broker {
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
    ~Connection() override;
    Connection(Connection const &) = delete;
    Connection &operator=(Connection const &) = delete;

    void Listen(Listener listener) { _listener = std::move(listener); }
    /// Serves the connection for about \a time, or a shorter one.
    void Serve(std::chrono::milliseconds time);
    /// Says that the device goes, and goes.
    void Close();

    int Publish(char const *topic, std::string const &message, bool retained) override;
    void Reopen(std::chrono::seconds delay) override;
    void Hurry(bool hurry) override { _hurries = hurry; }

  private:
    using Clock = std::chrono::steady_clock;
    struct Destroy {
        void operator()(mosquitto *connection) const { mosquitto_destroy(connection); }
    };
    using Handle = std::unique_ptr<mosquitto, Destroy>;

    Handle _New();
    void _Connect();
    void _SetUpTls(mosquitto *connection) const;
    void _OnConnect(int reason, int flags);
    void _OnMessage(mosquitto_message const &message);
    void _OnPublish(int message, int reason);
    void _Lose(std::string const &why);
    void _Say(std::string const &text);

    Settings const _settings;
    Listener _listener;
    Handle _connection;
    bool _known = false;
    int _online = 0;  // the message that says so; 0 as long as the broker has not taken the connection
    bool _reached = false;
    Clock::time_point _since{};  // it is reached
    bool _hurries = false;
    Clock::time_point _deadline{};  // for being reached
    Clock::time_point _next{};      // attempt
    std::chrono::milliseconds _pause;
    std::string _said;
    std::string _why;  // there is no connection, in the broker's words
    std::minstd_rand _random{std::random_device()()};
};

}  // namespace fleet::agent
