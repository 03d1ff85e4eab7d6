#include "WebApps/webconfig/metrics/Sampler.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace webconfig::metrics {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds interval{Samples::interval};

/// How old the readings may be that somebody asks for.
constexpr std::chrono::seconds freshness{5};

// Static: what is in it was never written as long as nothing has come, and takes no memory.
constinit Samples samples{};
Readings latest;
bool asked = false;
Clock::time_point due;  // of the next sample
std::mutex guard;       // of all these
std::condition_variable_any askedNow;

std::atomic<bool> sampling = false;

/// Takes in what was read. Samples that were missed, as between two services, are not made up for.
void TakeIn(Readings readings) {
    auto const now = Clock::now();
    if (now >= due) {
        samples.Add(readings);
        due = now < due + interval ? due + interval : now + interval;
    }
    latest = std::move(readings);
    asked = false;
}

void Sample(std::stop_token const &stop) {
    pthread_setname_np(pthread_self(), "metrics");
    while (!stop.stop_requested()) {
        Readings readings = ReadSystem();
        AddDaemons(readings);
        std::unique_lock lock(guard);
        TakeIn(std::move(readings));
        askedNow.wait_until(lock, stop, std::min(due, Clock::now() + freshness), [] { return false; });
        askedNow.wait_until(lock, stop, due, [] { return asked; });
    }
}

}  // namespace

Sampler::Sampler() : _thread(Sample) {
    sampling = true;
}

Sampler::~Sampler() {
    sampling = false;
}

bool IsSampling() {
    return sampling;
}

Now Ask(std::int64_t uptime) {
    std::lock_guard const lock(guard);
    asked = true;
    askedNow.notify_all();
    return {latest, samples.After(uptime)};
}

}  // namespace webconfig::metrics
