#include "WebApps/webconfig/apps/SaveTurn.h"

#include <atomic>
#include <mutex>

namespace webconfig::apps {

namespace {

std::mutex turn;
std::atomic<int> present{0};  // who have the turn or wait for it
thread_local std::unique_lock<std::mutex> mine;

}  // namespace

SaveTurn::SaveTurn(int most) {
    if (present.fetch_add(1) >= most) {
        --present;
        return;
    }
    mine = std::unique_lock(turn);
    _isMine = true;
}

void SaveTurn::End() {
    if (!mine.owns_lock())
        return;
    mine.unlock();
    --present;
}

}  // namespace webconfig::apps
