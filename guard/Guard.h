#pragma once

#include "WebApps/webconfig/history/ChangeLog.h"
#include "WebApps/webconfig/history/Trial.h"

namespace guard {

/// Watches one trial after the other, and takes back what nobody keeps. What it has begun it does again after
/// any interruption: each step is on the disk before the next one, and the steps may be repeated.
class Guard {
  public:
    /// \a seconds is how long a trial is.
    Guard(std::string const &trialFile, int seconds) : _file(trialFile), _seconds(seconds) {}

    /// Looks once. To be called about once a second.
    void Look();

  private:
    using Trial = webconfig::history::Trial;

    void _LookAt(Trial trial);
    bool _IsOver(Trial const &trial) const;
    void _TakeBack(Trial trial);

    webconfig::history::TrialFile const _file;
    int const _seconds;
    std::int64_t _savingSince = 0;
    bool _restarts = false;  // the device, for old settings to take effect
};

}  // namespace guard
