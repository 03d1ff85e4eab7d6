#pragma once

#include <cppcms/json.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/Messages.h"
#include "fleet/agent/Journal.h"

namespace fleet::agent {

/// The service is not there, or does not answer; it is to be asked again.
struct Away : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The service does not do what a call wants.
struct Denied : std::runtime_error {
    Denied(std::string const &method, cppcms::json::value error);
    std::string Code() const { return error.get("code", ""); }

    cppcms::json::value error;  ///< as the answer has it
};

/// The calls of this device's service: docs/api.md.
class Service {
  public:
    virtual ~Service() = default;
    /// Throws Away or Denied.
    virtual cppcms::json::value Call(std::string const &method, cppcms::json::array const &parameters,
                                     std::string const &user = "fleet") = 0;
};

/// The connection with the broker.
class Broker {
  public:
    virtual ~Broker() = default;
    /// Sends a message with an acknowledgement; its number, or 0 where there is no connection.
    virtual int Publish(char const *topic, std::string const &message, bool retained) = 0;
    /// Ends the connection, with the last will, and makes another one after \a delay.
    virtual void Reopen(std::chrono::seconds delay) = 0;
    /// Whether it tries hard to connect: something goes back unless it does.
    virtual void Hurry(bool hurry) = 0;
};

/// What a device of a fleet does: it takes changes from the broker, lets the service make them, tells what
/// has become of them, and how the device is.
///
/// A change is neither lost, nor made twice, nor left half, wherever this process or the power ends:
///
/// 1. Take() writes it down before the broker gets its acknowledgement. Ended before: the broker sends it
///    again; ended behind: it is known, and to see it again does nothing.
/// 2. Step::Applying is written down, with the newest set of the device's history, before the service is
///    asked. As nobody else makes sets as "fleet: WHO", and this makes one at a time, the history then says
///    whether that has happened: no newer set of that user, and it is made; a whole one, and it goes on at 3;
///    one that is not whole, and what is missing of it is made, for a patch writes only what differs. The
///    same way is gone when the service gives no answer.
/// 3. The set, its result and whether it is on trial are written down at once. A trial is kept by the
///    service, which is asked again if that was not written down: then nothing is on trial any more, and the
///    history says whether the guard has taken the set back.
/// 4. The result stays to be told until the broker has acknowledged it. Ended in between, it is told twice,
///    with the same words.
/// 5. A restart that the change asks for is written down with its result, by the start of the device that it
///    is to end. Once the result is told, the service is asked for it, which restarts the device only in that
///    start: so it is restarted once, whoever has done it. Nothing is kept before.
class Agent {
  public:
    using Clock = std::function<std::time_t()>;

    ///  health is how often the device tells how it does.
    Agent(
        std::chrono::seconds health, Service &service, Broker &broker, Journal &journal,
        Clock clock = [] { return std::time(nullptr); });

    // What the connection tells.

    /// A message on the device's topic for changes. What throws has not taken it.
    void Take(std::string_view message);
    /// The broker has acknowledged a message of a connection that is new; \a known says that it still has
    /// what was retained.
    void Reached(bool known);
    void Lost();
    void Acknowledged(int message);

    /// Does what there is to do, once. To be called about once a second.
    void Work(std::chrono::steady_clock::time_point now);

  private:
    using Time = std::chrono::steady_clock::time_point;
    using Set = cppcms::json::value;

    void _GoOn(Time now);
    void _Restart(Time now);
    void _Begin(Entry &entry);
    void _Apply(Entry &entry);
    void _Ask(Entry &entry, Change const &change);
    /// True where it will take a while.
    bool _Settle(Entry &entry);
    void _Keep(Entry &entry, std::int64_t trial);
    void _Went(Entry &entry, Change const &change, cppcms::json::value made);
    void _End(Entry &entry, char const *state, cppcms::json::value result);
    void _Refuse(Entry &entry, std::string const &code, std::string const &message);

    cppcms::json::value _Trial();
    /// Sets of the history behind that number, the oldest first.
    std::vector<Set> _Sets(std::int64_t behind);
    /// Whether all that is on trial since that set is the fleet's. What others have changed meanwhile may be
    /// what nobody reaches the device by: that they keep themselves.
    bool _IsOurs(std::int64_t trial);
    cppcms::json::value _Reported();

    void _Tell();
    void _Report(Time now);
    void _TellHealth(Time now);
    void _Complain(std::string const &about);

    std::chrono::seconds const _healthInterval;
    Service &_service;
    Broker &_broker;
    Journal &_journal;
    Clock const _clock;

    bool _reached = false;
    struct Sent {
        int message = 0;  // 0: nothing waits for its acknowledgement
        std::int64_t number = 0;
        std::string text;
        bool arrived = false;
    };
    Sent _telling;          // a result
    Sent _reporting;        // the text is what is compared
    std::string _reported;  // what the broker has
    Time _nextSettle{};
    Time _nextReport{};
    Time _nextHealth{};
    Time _nextRestart{};
    Time _nextComplaint{};
    std::string _busy;     // the change that the service had no time for
    std::string _problem;  // why the service cannot be asked; empty while it can
};

}  // namespace fleet::agent
