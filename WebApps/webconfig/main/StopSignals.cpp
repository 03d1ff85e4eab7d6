#include "WebApps/webconfig/main/StopSignals.h"

#include <pthread.h>

#include <memory>

namespace webconfig {

StopSignals::StopSignals(void (*shutDown)(cppcms::service &service)) : _shutDown(shutDown) {
    sigemptyset(&_signals);
    for (int const signal : {SIGTERM, SIGINT, SIGUSR1})
        sigaddset(&_signals, signal);
    pthread_sigmask(SIG_BLOCK, &_signals, nullptr);
    _thread = std::thread([this] { _Watch(); });
}

StopSignals::~StopSignals() {
    {
        std::lock_guard const lock(_guard);
        _ending = true;
    }
    pthread_kill(_thread.native_handle(), SIGUSR1);
    _thread.join();
}

int StopSignals::Signal() {
    std::lock_guard const lock(_guard);
    return _signal;
}

void StopSignals::WaitFor(std::chrono::seconds time) {
    std::unique_lock lock(_guard);
    _changed.wait_for(lock, time, [this] { return _signal != 0; });
}

void StopSignals::Run(cppcms::service &service) {
    // By way of the event loop: a service that does not run yet must not be shut down.
    service.post([this, &service] { _Direct(&service); });
    auto const forget = [](StopSignals *self) { self->_Direct(nullptr); };
    std::unique_ptr<StopSignals, decltype(forget)> const untilItEnds(this, forget);
    service.run();
}

void StopSignals::_Watch() {
    for (;;) {
        int signal = 0;
        sigwait(&_signals, &signal);
        std::lock_guard const lock(_guard);
        if (_ending)
            return;
        if (_signal == 0)
            _signal = signal;
        _changed.notify_all();
        if (_service)
            _shutDown(*_service);
    }
}

void StopSignals::_Direct(cppcms::service *service) {
    std::lock_guard const lock(_guard);
    _service = service;
    if (_service && _signal != 0)
        _shutDown(*_service);
}

}  // namespace webconfig
