#include "stop_signals.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

namespace cppcms::impl {

namespace {

std::atomic<int> target{-1};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler reads it");

void on_signal(int) {
    int const error = errno;
    std::uint64_t const one = 1;
    if (int const fd = target; fd >= 0) [[maybe_unused]]
        auto const written = ::write(fd, &one, sizeof(one));
    errno = error;
}

}  // namespace

stop_signals::stop_signals(int event_descriptor) {
    target = event_descriptor;
    struct sigaction action {};
    action.sa_handler = on_signal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < signals.size(); ++i)
        sigaction(signals[i], &action, &before_[i]);
}

stop_signals::~stop_signals() {
    for (std::size_t i = 0; i < signals.size(); ++i)
        sigaction(signals[i], &before_[i], nullptr);
    target = -1;
}

}  // namespace cppcms::impl
