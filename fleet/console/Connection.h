#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

#include "fleet/BrokerLink.h"
#include "fleet/console/Conductor.h"
#include "fleet/console/Lead.h"
#include "fleet/console/Registry.h"
#include "fleet/console/Settings.h"

namespace fleet::console {

/// The console's connection with the broker, on a thread of its own, which is the conductor's, too.
class Connection : public BrokerLink, public Publisher {
  public:
    /// Throws std::runtime_error where the settings cannot be used.
    Connection(Settings const &settings, Registry &registry);
    ~Connection() override;

    /// Begins to serve \a conductor, until Stop() or the end.
    void Start(Conductor &conductor);
    void Stop();

    int Publish(std::string const &topic, std::string const &message, bool retained) override;

    /// For any thread.
    struct Status {
        std::string broker;     ///< "connected", or why not
        std::int64_t since;     ///< this is so, seconds of UTC
        std::int64_t messages;  ///< that have come
    };
    Status Now() const;

  private:
    void _Taken(bool known) override;
    void _OnMessage(mosquitto_message const &message) override;
    void _OnPublish(int message, int reason) override;
    void _OnSubscribe() override;
    void _OnLost() override;

    void _Run();
    void _Work();
    void _GoOn();
    void _SubscribeNext();
    void _AskForReports();
    void _Complain(std::string const &about);
    void _Tell();

    std::string const _group;
    Registry &_registry;
    Conductor *_conductor = nullptr;
    Lead _lead;
    std::thread _thread;
    std::atomic<bool> _ends{false};

    using Time = std::chrono::steady_clock::time_point;
    int _subscribed = 0;      // how many of the topics
    bool _isGranted = false;  // the last of them
    std::string _askedUpTo;   // the last device whose report was missing
    Time _lastMessage{};      // of those that were said before
    Time _lastWork{};
    Time _nextComplaint{};
    std::string _trouble;  // of the conductor

    mutable std::mutex _guard;
    Status _status{"not connected yet", 0, 0};
    std::atomic<std::int64_t> _messages{0};
};

}  // namespace fleet::console
