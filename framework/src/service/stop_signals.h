#pragma once

#include <booster/noncopyable.h>

#include <array>
#include <csignal>

namespace cppcms::impl {

/// While it lives, SIGINT, SIGTERM and SIGUSR1 write to an event descriptor instead of what they did before.
class stop_signals : public booster::noncopyable {
  public:
    explicit stop_signals(int event_descriptor);
    ~stop_signals();

  private:
    static constexpr std::array<int, 3> signals{SIGINT, SIGTERM, SIGUSR1};
    std::array<struct sigaction, signals.size()> before_{};
};

}  // namespace cppcms::impl
