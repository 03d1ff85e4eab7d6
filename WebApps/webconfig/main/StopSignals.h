#pragma once

#include <cppcms/service.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <mutex>
#include <thread>

namespace webconfig {

/// Takes the signals that ask the process to stop, SIGTERM, SIGINT and SIGUSR1, on a thread of its own, so
/// that none is lost whatever the process is doing. The framework's own handlers, which know one running
/// service only, never get them.
class StopSignals {
  public:
    /// Blocks the signals for all threads. To be made before any other thread is. \a shutDown ends a service.
    explicit StopSignals(void (*shutDown)(cppcms::service &service));
    ~StopSignals();
    StopSignals(StopSignals const &) = delete;
    StopSignals &operator=(StopSignals const &) = delete;

    /// The signal that came first, 0 as long as there was none.
    int Signal();
    /// Waits until \a time has passed, or a signal has come.
    void WaitFor(std::chrono::seconds time);
    /// Runs \a service until it ends. A signal, also one that has come before, shuts it down.
    void Run(cppcms::service &service);

  private:
    void _Watch();
    void _Direct(cppcms::service *service);

    void (*const _shutDown)(cppcms::service &service);
    sigset_t _signals{};
    std::mutex _guard;
    std::condition_variable _changed;
    int _signal = 0;
    bool _ending = false;
    cppcms::service *_service = nullptr;  // the one that runs
    std::thread _thread;
};

}  // namespace webconfig
