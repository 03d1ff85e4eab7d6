#pragma once

#include <cppcms/json.h>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/console/Refused.h"
#include "fleet/console/Registry.h"
#include "fleet/console/Store.h"

namespace fleet::console {

/// Where messages go.
class Publisher {
  public:
    virtual ~Publisher() = default;
    /// The number by which the broker acknowledges the message; 0 where it was not sent.
    virtual int Publish(std::string const &topic, std::string const &message, bool retained) = 0;
};

/// Sends changes, takes results, and drives rollouts: docs/fleet.md. It may be cut off anywhere, for a change
/// is in the store before it is sent, and the device knows its id again: whatever is unfinished is sent once
/// more on each new connection. What is not to be sent any more only asks what has become of it: it has
/// expired long ago, so that a device that has not seen it refuses it.
class Conductor {
  public:
    using Clock = std::function<std::int64_t()>;  ///< seconds of UTC

    /// What has ended is dropped after \a keep days.
    Conductor(
        Store &store, Registry &registry, Publisher &publisher, int keep,
        Clock clock = [] { return std::time(nullptr); });

    // For one thread, that of the connection.
    void Reached();
    void Lost();
    void Acknowledged(int message);
    /// Throws Malformed.
    void TakeResult(std::string const &device, std::string_view message);
    /// What is due now. \a leads: whether this console is the one, of those with this store, that sends.
    void Work(bool leads);

    // For any thread. They throw Refused.
    /// The number of the change.
    std::int64_t Change(std::string const &who, std::string const &device, cppcms::json::object const &patch,
                        std::string const &basedOn, bool restart);
    /// The number of the rollout; \a rollout has what was asked for.
    std::int64_t RollOut(RolloutRow rollout, Filter const &filter);
    void Pause(std::int64_t rollout, std::string const &who);
    void GoOn(std::int64_t rollout, std::string const &who);
    void End(std::int64_t rollout, std::string const &who);
    /// The number of the rollout that takes it back.
    std::int64_t TakeBack(std::int64_t rollout, std::string const &who);
    void Forget(std::string const &device);

  private:
    struct Result {
        std::string device;
        std::int64_t number = 0;
        State state = State::Sent;
        std::int64_t seconds = 0;  // of a trial
        bool restart = false;
        std::string code;
        std::string message;
        std::string refused;
    };

    void _Flush();
    void _Record(Store::Writing &writing, Result const &result);
    void _LoadTags(std::int64_t now);
    void _Load(std::int64_t now);
    void _DropEnded(std::int64_t now);
    void _LookWhoIsOnline();
    void _Send(std::int64_t now);
    void _AskAgain(std::int64_t now);
    void _GiveUp(std::int64_t now);
    void _Drive(std::int64_t now);
    void _Drive(std::int64_t number, std::int64_t now);
    bool _StopIfTooManyFail(Store::Writing &writing, RolloutRow &rollout);
    /// Whether the members of a wave are still there, or there again; those that are not in time have failed.
    enum class Settling { Waits, Fails, Done };
    Settling _Settle(Store::Writing &writing, RolloutRow const &rollout, std::int64_t now);
    void _BeginNextWave(Store::Writing &writing, RolloutRow &rollout, std::int64_t now);
    void _ClearTopics();
    std::size_t _Room() const;
    bool _Publish(ChangeRow const &change, std::string const &patch, std::int64_t expires);
    bool _IsRunning(std::int64_t rollout) const;

    RolloutRow _Known(Store::Writing &writing, std::int64_t rollout);
    void _Set(Store::Writing &writing, RolloutRow &rollout, RolloutState state, std::string const &who,
              std::string const &text);
    void _AddTakingBack(Store::Writing &writing, RolloutRow const &takingBack, ChangeRow const &member);

    Store &_store;
    Registry &_registry;
    Publisher &_publisher;
    std::int64_t const _keep;  // seconds
    Clock const _clock;

    bool _reached = false;
    std::set<int> _unacknowledged;
    std::vector<Result> _results;
    std::vector<OpenChange> _open;
    std::vector<bool> _online;  // the devices of those
    std::set<std::int64_t> _running;
    std::set<std::int64_t> _held;  // rollouts that may go on
    /// Changes that their devices have been sent by this connection, and whether that was a late question.
    std::map<std::int64_t, bool> _told;
    std::map<std::int64_t, std::int64_t> _settling;  // rollouts, since when
    std::optional<sqlite::Connection::Mark> _mark;
    std::int64_t _loaded = 0;
    std::int64_t _nextDrop = 0;
    std::int64_t _lookedForTags = 0;
    std::string _tags = "none";  // which state of them the registry has
    std::int64_t _driven = 0;
    std::atomic<bool> _asked{true};  // somebody has asked for something

    std::mutex _guard;
    std::deque<std::string> _forgotten;  // whose topics are to be cleared
};

}  // namespace fleet::console
