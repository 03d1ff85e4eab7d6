#pragma once

#include <string>

namespace webconfig::data {

/// What every page says of settings on trial.
struct TrialNotice {
    enum class Kind { None, Waiting, Running, Returning, Returned };
    Kind kind = Kind::None;
    long long seconds = 0;  ///< that are left of a running trial
    std::string until;      ///< when it is over, as the device's clock has it

    bool IsShown() const { return kind != Kind::None; }
    bool IsWaiting() const { return kind == Kind::Waiting; }
    bool IsRunning() const { return kind == Kind::Running; }
    bool IsReturning() const { return kind == Kind::Returning; }
    bool IsReturned() const { return kind == Kind::Returned; }
};

}  // namespace webconfig::data
