#include "fleet/console/Conductor.h"

#include <algorithm>

#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Utf8.h"
#include "fleet/Messages.h"

namespace fleet::console {

namespace {

namespace json = cppcms::json;

constexpr char logTag[] = "fleet/console/Conductor";

/// A change of one device waits so long for it.
constexpr std::int64_t patience = 600;  // seconds
/// An answer may be under way still, and clocks differ.
constexpr std::int64_t grace = 10;
/// A trial ends in its time, unless its device restarts meanwhile; then it has to tell us.
constexpr std::int64_t behindTrial = 60;
constexpr std::int64_t behindRestart = 300;
/// Who has fallen silent is listened to for so long: what has become of it?
constexpr std::int64_t day = 24 * 60 * 60;
constexpr std::int64_t lateAnswers = day;
/// Has expired anyway.
constexpr std::int64_t longAgo = 1;

/// Messages that the broker may have to acknowledge: the others wait in the store.
constexpr std::size_t mostUnacknowledged = 500;
constexpr std::size_t mostResults = 500;      // are written down at once
constexpr std::size_t mostUnwritten = 5000;   // are kept while the store takes nothing
constexpr std::size_t mostForgotten = 1000;   // wait to be
constexpr std::int64_t mostDropped = 10000;   // changes at once
constexpr std::int64_t loadInterval = 2;      // seconds
constexpr std::size_t mostMessageText = 500;  // bytes
constexpr std::size_t mostReasons = 16 << 10;

std::string Cut(std::string const &text, std::size_t most) {
    return webconfig::util::CleanText(std::string_view(text).substr(0, most));
}

std::int64_t Failures(Counts const &counts) {
    std::int64_t failures = 0;
    for (State const state : {State::Returned, State::Refused, State::Failed, State::Silent})
        failures += counts[static_cast<std::size_t>(state)];
    return failures;
}

json::object Parsed(std::string const &text) {
    json::value value;
    char const *begin = text.data();
    if (!value.load(begin, begin + text.size(), true) || value.type() != json::is_object)
        return {};
    return value.object();
}

/// What gives a device what it had; nothing where that is not known. Secrets were never told.
json::object PatchBack(std::string const &before) {
    json::object patch = Parsed(before);
    std::erase_if(patch, [](auto const &member) { return member.second.type() == json::is_object; });
    return patch;
}

/// Whether a member in this state may have something to take back.
bool IsToTakeBack(State state) {
    return state == State::Done || state == State::Kept || state == State::Failed;
}

}  // namespace

Conductor::Conductor(Store &store, Registry &registry, Publisher &publisher, int keep, Clock clock)
    : _store(store),
      _registry(registry),
      _publisher(publisher),
      _keep(keep * day),
      _clock(std::move(clock)) {}

void Conductor::Reached() {
    _reached = true;
    _told.clear();
    _unacknowledged.clear();
}

void Conductor::Lost() {
    _reached = false;
    _told.clear();
    _unacknowledged.clear();
}

void Conductor::Acknowledged(int message) {
    _unacknowledged.erase(message);
}

void Conductor::TakeResult(std::string const &device, std::string_view message) {
    json::value const said = ReadObject(message);
    Result result;
    result.device = device;
    result.number = _store.NumberIn(said.get("id", ""));
    if (result.number == 0)
        return;  // another console's
    auto const state = StateOf(said.get("state", ""));
    if (!state || *state < State::Trial || *state > State::Failed)
        throw Malformed("A result without a state", "");
    result.state = *state;
    result.seconds = std::clamp<std::int64_t>(said.get<std::int64_t>("seconds", 0), 0, lateAnswers);
    result.restart = said.get("restart", false);
    result.code = Cut(said.get("code", ""), mostMessageText);
    result.message = Cut(said.get("message", ""), mostMessageText);
    if (said.type("refused") == json::is_object)
        result.refused = said["refused"].save();
    if (result.refused.size() > mostReasons)
        result.refused.clear();
    // What the store cannot take is asked for again, with the next connection.
    if (_results.size() < mostUnwritten)
        _results.push_back(std::move(result));
    if (_results.size() >= mostResults)
        _Flush();
}

void Conductor::Work(bool leads) {
    _Flush();
    _ClearTopics();
    std::int64_t const now = _clock();
    _LoadTags(now);
    if (!leads)
        return;
    _Load(now);
    _GiveUp(now);
    _Drive(now);
    _DropEnded(now);
    if (!_reached)
        return;
    _LookWhoIsOnline();
    _AskAgain(now);
    _Send(now);
}

void Conductor::_Flush() {
    if (_results.empty())
        return;
    Store::Writing writing(_store);
    for (auto const &result : _results)
        _Record(writing, result);
    writing.Commit();
    _results.clear();
    _asked = true;
}

void Conductor::_Record(Store::Writing &writing, Result const &result) {
    auto change = writing->Change(result.number);
    // Who has not been sent it, or another device, cannot know what has become of it.
    if (!change || change->device != result.device || change->state == State::Waiting ||
        change->state == State::Withdrawn)
        return;
    bool const isLate = IsFinal(change->state) && change->state != State::Silent;
    if (change->state == result.state || (isLate && !IsFinal(result.state)))
        return;
    bool const wasToTakeBack = IsToTakeBack(change->state);
    std::int64_t const now = _clock();
    change->state = result.state;
    change->time = now;
    change->code = result.code;
    change->message = result.message;
    change->refused = result.refused;
    if (result.state == State::Trial)
        change->expires =
            std::max(change->expires, now + result.seconds + (result.restart ? behindRestart : behindTrial));
    writing->Update(*change);
    if (change->rollout == 0 || wasToTakeBack || !IsToTakeBack(change->state))
        return;
    if (auto const takingBack = writing->TakingBack(change->rollout))
        _AddTakingBack(writing, *takingBack, *change);
}

void Conductor::_LoadTags(std::int64_t now) {
    if (now < _lookedForTags + loadInterval)
        return;
    _lookedForTags = now;
    Store::Reading const reading(_store);
    std::string const tags = reading->Value(Tables::tagsName);
    if (tags == _tags)
        return;
    _registry.SetTags(reading->AllTags());  // another console may have set some
    _tags = tags;
}

void Conductor::_Load(std::int64_t now) {
    auto const mark = _store.CommitMark();
    if (!_asked.exchange(false) && mark && mark == _mark && now < _loaded + loadInterval)
        return;
    _mark = mark;
    _loaded = now;
    _driven = 0;
    Store::Reading const reading(_store);
    _open = reading->Open(now - lateAnswers);
    _running.clear();
    _held.clear();
    for (auto const &rollout : reading->Unfinished())
        (rollout.state == RolloutState::Running ? _running : _held).insert(rollout.number);
    std::map<std::int64_t, bool> told;
    for (auto const &open : _open) {
        if (auto const found = _told.find(open.number); found != _told.end())
            told.insert(*found);
    }
    _told = std::move(told);
}

void Conductor::_DropEnded(std::int64_t now) {
    if (now < _nextDrop)
        return;
    Store::Writing writing(_store);
    bool const isAll = writing->DropEnded(now - _keep, mostDropped);
    writing.Commit();
    _nextDrop = now + (isAll ? day : 1);
}

void Conductor::_LookWhoIsOnline() {
    std::vector<std::string> devices;
    devices.reserve(_open.size());
    for (auto const &open : _open)
        devices.push_back(open.device);
    _online = _registry.AreOnline(devices);
    for (std::size_t i = 0; i < _open.size(); ++i) {
        if (!_online[i])
            _told.erase(_open[i].number);  // the broker may have lost it until the device comes back
    }
}

std::size_t Conductor::_Room() const {
    return mostUnacknowledged - std::min(mostUnacknowledged, _unacknowledged.size());
}

bool Conductor::_IsRunning(std::int64_t rollout) const {
    return rollout == 0 || _running.contains(rollout);
}

bool Conductor::_Publish(ChangeRow const &row, std::string const &patch, std::int64_t expires) {
    fleet::Change change;
    change.id = _store.IdOf(row.number);
    change.who = row.who;
    change.patch = Parsed(row.patch.empty() ? patch : row.patch);
    change.based_on = row.based_on;
    change.expires = expires;
    change.restart = row.restart;
    int const message = _publisher.Publish(Topic(row.device, topics::change), Written(change), false);
    if (message == 0)
        return false;
    _unacknowledged.insert(message);
    _told[row.number] = expires == longAgo;
    return true;
}

void Conductor::_Send(std::int64_t now) {
    std::vector<OpenChange *> due;
    std::size_t const room = _Room();
    for (std::size_t i = 0; i < _open.size() && due.size() < room; ++i) {
        // What it has now is what a rollout is taken back to.
        if (_open[i].state == State::Waiting && _online[i] && _IsRunning(_open[i].rollout) &&
            _registry.HasReported(_open[i].device))
            due.push_back(&_open[i]);
    }
    if (due.empty())
        return;
    std::map<std::int64_t, std::optional<RolloutRow>> rollouts;
    std::vector<ChangeRow> sent;
    {
        Store::Writing writing(_store);
        for (OpenChange *const open : due) {
            auto change = writing->Change(open->number);
            auto const [rollout, isNew] = rollouts.try_emplace(open->rollout);
            if (isNew && open->rollout != 0)
                rollout->second = writing->Rollout(open->rollout);
            // Somebody may have stopped it meanwhile.
            bool const goes =
                open->rollout == 0 || (rollout->second && rollout->second->state == RolloutState::Running);
            if (!goes || !change || change->state != State::Waiting)
                continue;
            change->state = open->state = State::Sent;
            change->time = now;
            auto const &patch = change->patch.empty() ? rollout->second->patch : change->patch;
            change->before = json::value(_registry.Before(change->device, Parsed(patch))).save();
            writing->Update(*change);
            sent.push_back(std::move(*change));
        }
        writing.Commit();
    }
    for (auto const &change : sent) {
        auto const &rollout = rollouts[change.rollout];
        if (!_Publish(change, rollout ? rollout->patch : "", change.expires))
            return;
    }
}

void Conductor::_AskAgain(std::int64_t now) {
    std::size_t room = _Room();
    std::map<std::int64_t, std::string> patches;
    for (std::size_t i = 0; i < _open.size() && room > 0; ++i) {
        auto const &open = _open[i];
        // Before it is given up it is asked once more: another console may have lost its answer.
        bool const isLate = open.state == State::Silent || now > open.expires;
        auto const told = _told.find(open.number);
        bool const isTold = told != _told.end() && (told->second || !isLate);
        if (open.state == State::Waiting || !_online[i] || isTold ||
            (open.state == State::Sent && _held.contains(open.rollout)))
            continue;
        Store::Reading const reading(_store);
        auto const change = reading->Change(open.number);
        if (!change)
            continue;
        auto const [patch, isNew] = patches.try_emplace(open.rollout);
        if (auto const rollout = isNew ? reading->Rollout(open.rollout) : std::nullopt)
            patch->second = rollout->patch;
        bool const goesOn = !isLate && _IsRunning(open.rollout);
        if (!_Publish(*change, patch->second, goesOn ? change->expires : longAgo))
            return;
        --room;
    }
}

void Conductor::_GiveUp(std::int64_t now) {
    std::vector<OpenChange *> silent;
    for (auto &open : _open) {
        // What is held may still be asked for, and has all the time again then.
        bool const isHeld = open.state != State::Trial && _held.contains(open.rollout);
        if (!IsFinal(open.state) && now > open.expires + grace && !isHeld)
            silent.push_back(&open);
    }
    if (silent.empty())
        return;
    Store::Writing writing(_store);
    for (OpenChange *const open : silent) {
        auto change = writing->Change(open->number);
        if (!change || change->state != open->state || now <= change->expires + grace)
            continue;
        bool const wasSent = change->state != State::Waiting;
        change->state = open->state = State::Silent;
        change->time = now;
        change->code = wasSent ? "silent" : "offline";
        change->message = wasSent ? "It has not answered in time" : "It was not online, and was not asked";
        writing->Update(*change);
    }
    writing.Commit();
    _driven = 0;
}

void Conductor::_Drive(std::int64_t now) {
    if (_driven == now)
        return;
    _driven = now;
    std::vector<RolloutRow> running;
    {
        Store::Reading const reading(_store);
        running = reading->Unfinished();
    }
    std::erase_if(_settling, [&](auto const &settling) { return !_IsRunning(settling.first); });
    for (auto const &rollout : running) {
        if (rollout.state == RolloutState::Running)
            _Drive(rollout.number, now);
    }
}

void Conductor::_Drive(std::int64_t number, std::int64_t now) {
    Store::Writing writing(_store);
    auto rollout = writing->Rollout(number);
    if (!rollout || rollout->state != RolloutState::Running)
        return;
    if (!_StopIfTooManyFail(writing, *rollout)) {
        if (rollout->wave_now >= 0 && writing->CountUnfinished(number, rollout->wave_now) > 0) {
            _settling.erase(number);
            return;
        }
        Settling const settling = rollout->wave_now < 0 ? Settling::Done : _Settle(writing, *rollout, now);
        if (settling == Settling::Waits)
            return;
        if (settling == Settling::Done)
            _BeginNextWave(writing, *rollout, now);
    }
    writing.Commit();
    _asked = true;
}

bool Conductor::_StopIfTooManyFail(Store::Writing &writing, RolloutRow &rollout) {
    std::int64_t const failures = Failures(writing->CountMembers(rollout.number));
    std::int64_t const failing = std::max<std::int64_t>(0, failures - rollout.forgiven);
    std::int64_t const asked = writing->CountAsked(rollout.number) - rollout.forgivenOf;
    if (failing * 100 <= rollout.limit * std::max<std::int64_t>(1, asked))
        return false;
    rollout.reason = std::to_string(failing) + " of " + std::to_string(std::max(failing, asked)) +
                     " have failed or fallen silent: more than " + std::to_string(rollout.limit) + " %";
    _Set(writing, rollout, RolloutState::Stopped, "", "Stopped: " + rollout.reason);
    _running.erase(rollout.number);
    return true;
}

Conductor::Settling Conductor::_Settle(Store::Writing &writing, RolloutRow const &rollout, std::int64_t now) {
    std::int64_t const since = _settling.try_emplace(rollout.number, now).first->second;
    if (now < since + rollout.settle)
        return Settling::Waits;
    std::vector<ChangeRow> gone;
    for (auto &member : writing->Wave(rollout.number, rollout.wave_now)) {
        if ((member.state == State::Done || member.state == State::Kept) &&
            !_registry.IsOnline(member.device))
            gone.push_back(std::move(member));
    }
    if (gone.empty()) {
        _settling.erase(rollout.number);
        return Settling::Done;
    }
    if (now < since + rollout.settle + rollout.patience)
        return Settling::Waits;
    for (auto &member : gone) {
        member.state = State::Silent;
        member.time = now;
        member.code = "gone";
        member.message = "It went offline behind the change, and has not come back";
        writing->Update(member);
    }
    return Settling::Fails;
}

void Conductor::_BeginNextWave(Store::Writing &writing, RolloutRow &rollout, std::int64_t now) {
    if (rollout.wave_now + 1 >= rollout.waves) {
        _Set(writing, rollout, RolloutState::Done, "", "All members have been asked");
        _running.erase(rollout.number);
        return;
    }
    ++rollout.wave_now;
    writing->BeginWave(rollout.number, rollout.wave_now, now, now + rollout.patience);
    writing->Update(rollout);
}

void Conductor::_ClearTopics() {
    for (std::size_t room = _Room(); _reached && room > 0; --room) {
        std::string device;
        {
            std::lock_guard const lock(_guard);
            if (_forgotten.empty())
                return;
            device = std::move(_forgotten.front());
            _forgotten.pop_front();
        }
        if (_registry.IsOnline(device))
            continue;  // it has just come back
        for (char const *const name : {topics::reported, topics::health, topics::online})
            _publisher.Publish(Topic(device, name), "", true);
    }
}

std::int64_t Conductor::Change(std::string const &who, std::string const &device, json::object const &patch,
                               std::string const &basedOn, bool restart) {
    if (!_registry.Knows(device))
        throw Refused("unknown", "There is no such device");
    ChangeRow change;
    change.device = device;
    change.who = who;
    change.time = _clock();
    change.patch = json::value(patch).save();
    change.based_on = basedOn;
    change.restart = restart;
    change.expires = change.time + patience;
    Store::Writing writing(_store);
    std::int64_t const number = writing->Add(change);
    writing.Commit();
    _asked = true;
    return number;
}

std::int64_t Conductor::RollOut(RolloutRow rollout, Filter const &filter) {
    auto const devices = _registry.Select(filter);
    if (devices.empty())
        throw Refused("nobody", "No device is meant");
    rollout.time = _clock();
    rollout.canaries = std::min(rollout.canaries, static_cast<std::int64_t>(devices.size()));
    std::int64_t const first = rollout.canaries > 0 ? 1 : 0;
    auto const waveOf = [&](std::int64_t member) {
        return member < rollout.canaries ? 0 : first + (member - rollout.canaries) / rollout.wave;
    };
    rollout.waves = waveOf(static_cast<std::int64_t>(devices.size()) - 1) + 1;
    ChangeRow member;
    member.who = rollout.who;
    member.time = rollout.time;
    member.restart = rollout.restart;
    Store::Writing writing(_store);
    member.rollout = rollout.number = writing->Add(rollout);
    for (std::size_t i = 0; i < devices.size(); ++i) {
        member.device = devices[i];
        member.wave = waveOf(static_cast<std::int64_t>(i));
        writing->Add(member);
    }
    writing->AddLog(rollout.number, {rollout.time, rollout.who, "Begun"});
    writing.Commit();
    _asked = true;
    WEBCONFIG_LOG(notice, logTag) << "Rollout " << rollout.number << " to " << devices.size()
                                  << " devices, by " << rollout.who;
    return rollout.number;
}

RolloutRow Conductor::_Known(Store::Writing &writing, std::int64_t rollout) {
    if (auto known = writing->Rollout(rollout))
        return *known;
    throw Refused("unknown", "There is no rollout " + std::to_string(rollout));
}

void Conductor::_Set(Store::Writing &writing, RolloutRow &rollout, RolloutState state, std::string const &who,
                     std::string const &text) {
    rollout.state = state;
    writing->Update(rollout);
    writing->AddLog(rollout.number, {_clock(), who, text});
    WEBCONFIG_LOG(notice, logTag) << "Rollout " << rollout.number << ": " << text
                                  << (who.empty() ? "" : ", by " + who);
}

void Conductor::Pause(std::int64_t rollout, std::string const &who) {
    Store::Writing writing(_store);
    RolloutRow known = _Known(writing, rollout);
    if (known.state != RolloutState::Running)
        throw Refused("state", "It does not run");
    _Set(writing, known, RolloutState::Paused, who, "Paused");
    writing.Commit();
    _asked = true;
}

void Conductor::GoOn(std::int64_t rollout, std::string const &who) {
    Store::Writing writing(_store);
    RolloutRow known = _Known(writing, rollout);
    if (known.state != RolloutState::Paused && known.state != RolloutState::Stopped)
        throw Refused("state", "It is neither paused nor stopped");
    if (known.state == RolloutState::Stopped) {
        known.forgiven = Failures(writing->CountMembers(rollout));
        known.forgivenOf = writing->CountAsked(rollout);
        known.reason.clear();
    }
    std::int64_t const now = _clock();
    if (known.wave_now >= 0)  // who has not answered has all the time again
        writing->BeginWave(rollout, known.wave_now, now, now + known.patience);
    _Set(writing, known, RolloutState::Running, who, "Goes on");
    writing.Commit();
    _asked = true;
}

void Conductor::End(std::int64_t rollout, std::string const &who) {
    Store::Writing writing(_store);
    RolloutRow known = _Known(writing, rollout);
    if (known.state > RolloutState::Stopped)
        throw Refused("state", "It has ended");
    writing->Withdraw(rollout, _clock());
    _Set(writing, known, RolloutState::Ended, who, "Ended");
    writing.Commit();
    _asked = true;
}

std::int64_t Conductor::TakeBack(std::int64_t rollout, std::string const &who) {
    Store::Writing writing(_store);
    RolloutRow known = _Known(writing, rollout);
    if (known.state == RolloutState::TakenBack)
        throw Refused("state", "It is taken back already");
    writing->Withdraw(rollout, _clock());
    RolloutRow back;
    back.title = known.title;
    back.who = who;
    back.why = "Takes back rollout " + std::to_string(rollout);
    back.time = _clock();
    back.patch = "{}";
    back.restart = known.restart;
    back.canaries = 0;
    back.limit = 100;  // it does not stop by itself
    back.patience = known.patience;
    back.settle = 0;
    back.waves = 1;
    back.selection = "{}";
    back.takes_back = rollout;
    auto const members = writing->Members(rollout, {}, 0, -1);
    back.wave = std::max<std::int64_t>(1, static_cast<std::int64_t>(members.size()));
    back.number = writing->Add(back);
    writing->AddLog(back.number, {back.time, who, "Begun"});
    for (auto const &member : members) {
        if (IsToTakeBack(member.state))
            _AddTakingBack(writing, back, member);
    }
    _Set(writing, known, RolloutState::TakenBack, who,
         "Taken back by rollout " + std::to_string(back.number));
    writing.Commit();
    _asked = true;
    return back.number;
}

void Conductor::_AddTakingBack(Store::Writing &writing, RolloutRow const &takingBack,
                               ChangeRow const &member) {
    RolloutRow rollout = takingBack;
    json::object const patch = PatchBack(member.before);
    ChangeRow back;
    back.device = member.device;
    back.who = rollout.who;
    back.time = _clock();
    back.patch = json::value(patch).save();
    back.restart = rollout.restart;
    back.rollout = rollout.number;
    if (patch.empty()) {
        back.state = State::Withdrawn;
        back.code = "unknown";
        back.message = "What it had before is not known";
    } else if (rollout.wave_now >= 0) {
        back.expires = back.time + rollout.patience;
    }
    writing->Add(back);
    if (rollout.state == RolloutState::Done && back.state == State::Waiting)
        _Set(writing, rollout, RolloutState::Running, "", "Goes on: " + member.device + " has answered late");
}

void Conductor::Forget(std::string const &device) {
    if (!_registry.Knows(device))
        throw Refused("unknown", "There is no such device");
    if (_registry.IsOnline(device))
        throw Refused("online", "It is online: it would come back at once");
    {
        std::lock_guard const lock(_guard);
        if (_forgotten.size() >= mostForgotten)
            throw Refused("busy", "Too many are to be forgotten");
        _forgotten.push_back(device);
    }
    Store::Writing writing(_store);
    writing->SetTags(device, {});
    writing->SetNote(device, "");
    writing.Commit();
}

}  // namespace fleet::console
