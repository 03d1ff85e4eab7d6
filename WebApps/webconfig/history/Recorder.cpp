#include "WebApps/webconfig/history/Recorder.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "WebApps/webconfig/history/Patch.h"
#include "WebApps/webconfig/history/Trial.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::history {

namespace {

constexpr char logTag[] = "WebApps/webconfig/history/Recorder";

std::unique_ptr<ChangeLog> &TheLog() {
    static std::unique_ptr<ChangeLog> log;
    return log;
}

thread_local Recording *current = nullptr;

/// The one spelling of a key, as the store has it.
std::string Normal(std::string const &key) {
    return key.substr(std::min(key.find_first_not_of('/'), key.size()));
}

bool DecidesReach(std::string const &key) {
    auto const *const setting = settings::Find(key);
    return setting && setting->reach;
}

/// Whether one of \a changes decides how the device is reached, from the next restart on, or before.
bool HasReachWith(std::vector<Change> const &changes, bool restart) {
    return std::any_of(changes.begin(), changes.end(), [restart](Change const &change) {
        auto const *const setting = settings::Find(change.key);
        return setting && setting->reach && (setting->effect == settings::Effect::Restart) == restart;
    });
}

}  // namespace

/// What the gateway tells goes to the recording of the thread that writes.
class Watcher : public util::WriteWatcher {
  public:
    void Before(std::string const &key, std::optional<std::string> const &after, PRM_PAR_T type) override {
        if (current)
            current->_Before(Normal(key), after ? std::optional(Value{*after, type}) : std::nullopt);
    }
    void After(std::string const &key, bool done) override {
        if (current)
            current->_After(Normal(key), done);
    }
};

void Keep(std::string const &file, int sets) {
    static Watcher watcher;
    TheLog() = file.empty() ? nullptr : std::make_unique<ChangeLog>(file, sets);
    util::Prm::Watch(file.empty() ? nullptr : &watcher);
}

ChangeLog *Kept() {
    return TheLog().get();
}

bool IsKept() {
    return Kept();
}

Recording::Recording(WhoAsks whoAsks) : _whoAsks(std::move(whoAsks)) {
    current = this;
}

Recording::~Recording() {
    Finish();
    current = nullptr;
}

Recording *Recording::Current() {
    return current;
}

void Recording::SetReason(std::string reason) {
    _reason = std::move(reason);
}

template <typename Write>
void Recording::_Record(Write write) {
    if (!IsKept() || _historyFailed)
        return;
    try {
        write(*Kept());
    } catch (std::exception const &failure) {
        _historyFailed = true;
        WEBCONFIG_LOG(error, logTag) << "The history cannot be written: " << failure.what();
    }
}

void Recording::_Before(std::string const &key, std::optional<Value> const &after) {
    _Record([&](ChangeLog &log) {
        Change const change{key, Stored(key), after};
        bool const changes = change.before != change.after;
        if (_open != 0) {
            log.Add(_open, change);
        } else if (changes) {
            auto const trial = CurrentTrial();
            _open = log.Begin(_whoAsks(), _reason, change, trial ? std::optional(trial->set) : std::nullopt);
        }
        if (changes && DecidesReach(key) && !std::exchange(_onTrial, true))
            BeginTrial(_open);
    });
}

void Recording::_After(std::string const &key, bool done) {
    if (!done)
        _unchanged.push_back(key);
}

void Recording::Finish() {
    if (_open == 0)
        return;
    std::int64_t const set = std::exchange(_open, 0);
    std::string const result = _unchanged.empty() ? "saved" : "failed";
    _Record([&](ChangeLog &log) { _changes = log.Finish(set, result, _unchanged); });
    _finished = _changes.empty() ? 0 : set;
    if (std::exchange(_onTrial, false))
        GoOnWithTrial(set, HasReachWith(_changes, false), HasReachWith(_changes, true));
    _unchanged.clear();
}

}  // namespace webconfig::history
