#include "WebApps/webconfig/apps/SaveTurn.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>

#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

/// How long one too many waits in spite of that: most turns are short.
constexpr auto patience = std::chrono::seconds(3);

/// The same for the guard, which takes back in the meantime.
constexpr std::chrono::seconds guardLimit{3};

constexpr char const *busy = util::Translatable(
    "Other settings are still being saved. Nothing of this form was: go back and save it again in a moment.");
constexpr Saving::Refusal ends = {"the service ends", busy};
constexpr Saving::Refusal tooMany = {"too many others wait for their turn", busy};
constexpr Saving::Refusal goingBack = {
    "earlier settings are being taken back",
    util::Translatable("Earlier settings are being taken back. Nothing of this form was saved: look at the "
                       "page again in a moment.")};

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

// One worker is left to pages that only show, but two who save at once are always served.
Saving::Saving(cppcms::service &service) : _turn(std::max(2, service.threads_no() - 1)) {
    if (util::AreCommandsEnding()) {  // what is stored now could not be put into effect
        _refusal = &ends;
    } else if (!_turn.IsMine()) {
        _refusal = &tooMany;
    } else if (auto const *const trial = history::TheTrialFile()) {
        _trialTurn.emplace(*trial, guardLimit);
        auto const current = trial->Read();
        if (!_trialTurn->IsMine() || (current && current->state == history::TrialState::Returning))
            _refusal = &goingBack;
    }
}

}  // namespace webconfig::apps
