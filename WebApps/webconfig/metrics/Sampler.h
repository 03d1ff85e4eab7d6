#pragma once

#include <thread>

#include "WebApps/webconfig/metrics/Readings.h"
#include "WebApps/webconfig/metrics/Samples.h"

/// What the device does and did, for the overview: kept in memory, of a day.
namespace webconfig::metrics {

/// Takes the samples as long as it lives, on a thread of its own. What it has taken outlasts it, so that the
/// next service goes on with it.
class Sampler {
  public:
    Sampler();
    /// Waits for the daemon that is being asked: two seconds at most.
    ~Sampler();
    Sampler(Sampler const &) = delete;
    Sampler &operator=(Sampler const &) = delete;

  private:
    std::jthread _thread;
};

/// Whether there is one.
bool IsSampling();

struct Now {
    Readings readings;  ///< of the last seconds, when somebody asks again and again
    Series series;
};

/// What is there, at once, with the samples of after \a uptime.
Now Ask(std::int64_t uptime);

}  // namespace webconfig::metrics
