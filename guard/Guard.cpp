#include "guard/Guard.h"

#include "WebApps/webconfig/history/Patch.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Util.h"

namespace guard {

namespace {

using namespace webconfig;
using namespace std::chrono_literals;
using history::TrialState;
using history::TrialTurn;

constexpr char logTag[] = "guard/Guard";

/// A device that is started again and again within its trials, by a watchdog or a loose plug, must not stay
/// in settings that nobody keeps.
constexpr int mostBoots = 3;

/// Whoever saves may run commands for a minute before the trial begins.
constexpr std::int64_t longestSave = 120;

/// A process that hangs, or was stopped, keeps its turn: settings go back all the same.
constexpr auto turnLimit = 15s;

bool IsUpgrading() {
    return util::IsFirmwareUpgradeFlagged() || util::IsFirmareUpgradeInProgress();
}

}  // namespace

void Guard::Look() {
    auto const trial = _file.Read();
    if (trial)
        _LookAt(*trial);
    if (!trial || trial->state != TrialState::Saving)
        _savingSince = 0;
}

void Guard::_LookAt(Trial trial) {
    std::int64_t const now = history::SecondsSinceBoot();
    switch (trial.state) {
        case TrialState::Returned:
            // Behind the writing, so that it is done also by the guard that comes after a crash.
            if (trial.restart && trial.boots > 0 && trial.boot == history::CurrentBoot() && !_restarts) {
                _restarts = true;
                util::ForkReboot();
            }
            return;
        case TrialState::Returning:
            _TakeBack(trial);
            return;
        case TrialState::Saving: {
            if (_savingSince == 0)
                _savingSince = now;
            // Whoever gets the turn meanwhile knows that the one who was saving has ended.
            if (!TrialTurn(_file, 0ms).IsMine() && now < _savingSince + longestSave)
                return;
            if (_file.Read() == trial) {
                WEBCONFIG_LOG(error, logTag)
                    << "The settings of change " << trial.set << " were not saved to the end";
                _TakeBack(trial);
            }
            return;
        }
        case TrialState::Running:
            break;
    }
    if (trial.boot != history::CurrentBoot()) {
        TrialTurn const turn(_file, turnLimit);
        if (_file.Read() != trial)
            return;
        trial.boot = history::CurrentBoot();
        ++trial.boots;
        trial.until = now + (trial.boots > mostBoots ? 0 : _seconds);
        _file.Write(trial);
    }
    if (_IsOver(trial) && !IsUpgrading())
        _TakeBack(trial);
}

bool Guard::_IsOver(Trial const &trial) const {
    return trial.asked || (trial.until != 0 && history::SecondsSinceBoot() >= trial.until);
}

void Guard::_TakeBack(Trial trial) {
    TrialTurn const turn(_file, turnLimit);
    // Somebody may have kept them while this waited for its turn.
    auto const now = _file.Read();
    if (!now || now->set != trial.set || (now->state == TrialState::Running && !_IsOver(*now)))
        return;
    trial = *now;
    trial.state = TrialState::Returning;
    _file.Write(trial);
    std::string const reason =
        trial.asked ? "Taken back: somebody asked for it" : "Taken back: nobody kept it";
    WEBCONFIG_LOG(notice, logTag) << "The settings since change " << trial.set << " go back. " << reason;
    {
        history::Recording recording([] { return util::Requester{"webconfig-guard", "", ""}; });
        recording.SetReason(reason);
        auto const plan = history::PlanToTakeBack(history::Kept()->Since(trial.set));
        auto const applied = history::Apply(plan.writes);
        if (applied == history::Applied::NotStored) {
            WEBCONFIG_LOG(error, logTag) << "The store does not take the old settings; they are tried again";
            return;
        }
        if (applied == history::Applied::NotInEffect)
            WEBCONFIG_LOG(error, logTag) << "A command that puts the old settings into effect has failed";
    }
    trial.state = TrialState::Returned;
    _file.Write(trial);
}

}  // namespace guard
