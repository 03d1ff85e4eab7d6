#pragma once

#include <mosquitto.h>

#include <chrono>
#include <memory>
#include <random>
#include <string>

#include "fleet/BrokerSettings.h"

namespace fleet {

/// A connection with the broker: MQTT 5, served by one thread. It is made again, with growing pauses,
/// whenever it is lost. SIGALRM is to reach no other thread: it ends an attempt that takes too long.
class BrokerLink {
  public:
    /// How each connection begins.
    struct Terms {
        std::string client;                ///< what this side is called
        bool clean = true;                 ///< nothing is kept of the connection before
        std::uint32_t sessionSeconds = 0;  ///< so long the broker keeps what comes while there is none
        std::uint16_t receiveMaximum = 0;  ///< messages that may come before the first is acknowledged
        std::string lastWill;              ///< topic of a retained "false"; empty: there is none
    };

    virtual ~BrokerLink();
    BrokerLink(BrokerLink const &) = delete;
    BrokerLink &operator=(BrokerLink const &) = delete;

    /// Serves the connection for about \a time, or a shorter one.
    void Serve(std::chrono::milliseconds time);

  protected:
    /// Throws std::runtime_error where the settings cannot be used.
    BrokerLink(BrokerSettings settings, Terms terms, char const *logTag);

    // What happens, on the thread that serves. The first: the broker has taken the connection, with the
    // session of one before or not.
    virtual void _Taken(bool known) = 0;
    virtual void _OnMessage(mosquitto_message const &message) = 0;
    /// The broker has acknowledged, or refused.
    virtual void _OnPublish(int message, int reason) = 0;
    virtual void _OnSubscribe() {}
    /// There is no connection, where there was one that was reached.
    virtual void _OnLost() = 0;

    /// The connection is of use: it does not end unless it is lost.
    void _SetReached();
    bool _IsReached() const { return _reached; }
    /// Why the broker is about to end the connection.
    void _SetReason(std::string const &why, int reason);
    void _Subscribe(std::string const &topic);
    void _Unsubscribe(std::string const &topic);
    /// The number of the message that is to be acknowledged; 0 where it was not sent.
    int _Publish(std::string const &topic, std::string const &message, bool retained);
    /// Breaks the connection off, so that the broker sends again what was not acknowledged.
    void _Break();
    /// Ends the connection; the next attempt is made after \a pause.
    void _End(int reason, std::chrono::milliseconds pause);
    void _Hurry(bool hurry) { _hurries = hurry; }
    void _Say(std::string const &text);
    /// Why there is no connection; empty where there is one.
    std::string const &_Problem() const { return _said; }

    static constexpr int firstRefusal = 0x80;  // from here on, reasons of MQTT are refusals

  private:
    using Clock = std::chrono::steady_clock;
    struct Destroy {
        void operator()(mosquitto *connection) const { mosquitto_destroy(connection); }
    };
    using Handle = std::unique_ptr<mosquitto, Destroy>;

    Handle _New();
    void _Connect();
    void _SetUpTls(mosquitto *connection) const;
    void _Lose(std::string const &why);

    BrokerSettings const _settings;
    Terms const _terms;
    char const *const _logTag;
    Handle _connection;
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

}  // namespace fleet
