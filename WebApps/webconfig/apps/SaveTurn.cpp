#include "WebApps/webconfig/apps/SaveTurn.h"

#include <atomic>
#include <chrono>
#include <mutex>

namespace webconfig::apps {

namespace {

/// How long one too many waits in spite of that: most turns are short.
constexpr auto patience = std::chrono::seconds(3);

std::timed_mutex turn;
std::atomic<int> present{0};  // who have the turn or wait for it
thread_local std::unique_lock<std::timed_mutex> mine;

}  // namespace

SaveTurn::SaveTurn(int most) {
    bool const tooMany = present.fetch_add(1) >= most;
    mine = std::unique_lock(turn, std::defer_lock);
    if (!tooMany)
        mine.lock();
    else if (!mine.try_lock_for(patience))
        --present;
    _isMine = mine.owns_lock();
}

void SaveTurn::End() {
    if (!mine.owns_lock())
        return;
    mine.unlock();
    --present;
}

}  // namespace webconfig::apps
