#include "fleet/agent/Agent.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "WebApps/webconfig/util/Digest.h"
#include "WebApps/webconfig/util/Log.h"
#include "fleet/Messages.h"

namespace fleet::agent {

namespace {

namespace json = cppcms::json;
using namespace std::chrono_literals;

constexpr char logTag[] = "fleet/agent/Agent";

/// Settings that others change are seen that late.
constexpr auto reportInterval = 10s;
/// Rubbish must not fill the log.
constexpr auto complaintInterval = 60s;

/// What takes effect in the background, a lease or a radio link, has so long before the connection is tried;
/// or a part of the trial, where that is short.
constexpr std::int64_t longestSettling = 10;
constexpr std::int64_t settlingPart = 4;

/// The device is gone long before it is asked again.
constexpr auto restartInterval = 30s;

/// An uptime behind all samples, of which the newest readings are enough.
constexpr std::int64_t noSamples = std::int64_t{1} << 50;

/// A patch that the service dies of must not be tried for ever.
constexpr int mostTries = 3;
/// More than anybody sends before the first is made.
constexpr std::size_t mostOpen = 32;
constexpr std::size_t setsAtOnce = 10;      // they may be long
constexpr std::size_t revisionLength = 16;  // hexadecimal digits

std::string UserOf(std::string const &who) {
    return std::string(userPrefix) + who;
}

std::string RevisionOf(json::value const &settings) {
    std::istringstream text(settings.save());
    auto const digest = webconfig::util::DigestOf(text, webconfig::util::DigestKind::Sha256);
    return webconfig::util::Hex(digest).substr(0, revisionLength);
}

std::int64_t NumberOf(json::value const &set) {
    return set.get<std::int64_t>("number");
}

bool IsOfFleet(json::value const &set) {
    return set.get("user", "").starts_with(userPrefix);
}

bool IsOfGuard(json::value const &set) {
    return set.get("user", "") == "webconfig-guard";
}

json::array KeysOf(json::value const &set) {
    json::array keys;
    for (auto const &change : set["changes"].array())
        keys.push_back(change["key"]);
    return keys;
}

/// Whether the guard has taken back some of \a keys in one of \a sets.
bool IsTakenBack(json::array const &keys, std::vector<json::value> const &sets) {
    auto const isOfKeys = [&keys](json::value const &key) {
        return std::find(keys.begin(), keys.end(), key) != keys.end();
    };
    return std::any_of(sets.begin(), sets.end(), [&](json::value const &set) {
        auto const back = KeysOf(set);
        return IsOfGuard(set) && std::any_of(back.begin(), back.end(), isOfKeys);
    });
}

std::int64_t Uptime() {
    double seconds = 0;
    std::ifstream("/proc/uptime") >> seconds;
    return static_cast<std::int64_t>(seconds);
}

}  // namespace

Denied::Denied(std::string const &method, json::value denied)
    : std::runtime_error(denied.type() == json::is_string ? method + ": " + denied.str()
                                                          : denied.get("message", "")),
      error(std::move(denied)) {}

Agent::Agent(std::chrono::seconds health, Service &service, Broker &broker, Journal &journal, Clock clock)
    : _healthInterval(health),
      _service(service),
      _broker(broker),
      _journal(journal),
      _clock(std::move(clock)) {}

void Agent::Take(std::string_view message) {
    Entry entry;
    try {
        Change const change = ReadChange(message);
        entry.id = change.id;
        entry.message = message;
    } catch (Malformed const &malformed) {
        entry.id = malformed.Id();
        _Complain(std::string("A change that is none: ") + malformed.what());
        if (entry.id.empty())
            return;
        entry.step = Step::Ended;
    }
    if (_journal.Find(entry.id)) {
        _journal.Retell(entry.id);
        return;
    }
    bool const full = _journal.Open().size() >= mostOpen;
    if (entry.step != Step::Ended && !full) {
        _journal.Add(entry);
        return;
    }
    json::value result;
    result["id"] = entry.id;
    result["state"] = states::refused;
    result["code"] = full ? "busy" : "malformed";
    result["message"] = full ? "Too many changes wait" : "This is no change";
    entry.step = Step::Ended;
    entry.message.clear();
    entry.result = result.save();
    entry.told = false;
    _journal.Add(entry);
}

void Agent::Reached(bool known) {
    _reached = true;
    if (!known)
        _reported.clear();
    _nextReport = _nextHealth = {};
}

void Agent::Lost() {
    _reached = false;
    _telling = _reporting = {};
}

void Agent::Acknowledged(int message) {
    if (message == _telling.message) {
        _telling.arrived = true;
    } else if (message == _reporting.message) {
        _reported = std::move(_reporting.text);
        _reporting = {};
    }
}

void Agent::Work(Time now) {
    try {
        if (_reached)
            _Tell();
        _Restart(now);
        _GoOn(now);
        if (_reached) {
            _Report(now);
            _TellHealth(now);
        }
        if (!_problem.empty())
            WEBCONFIG_LOG(notice, logTag) << "All goes on again";
        _problem.clear();
    } catch (std::exception const &problem) {
        if (_problem != problem.what())
            WEBCONFIG_LOG(warning, logTag) << "To be tried again: " << problem.what();
        _problem = problem.what();
    }
}

void Agent::_Restart(Time now) {
    auto entry = _journal.ToRestart();
    if (!entry || !entry->told || now < _nextRestart)
        return;
    if (_service.Call("device_restart", {entry->boot}).boolean()) {
        WEBCONFIG_LOG(notice, logTag) << "The device restarts, for change " << entry->id;
        _nextRestart = now + restartInterval;
        return;
    }
    entry->boot.clear();
    _journal.Update(*entry);
}

void Agent::_GoOn(Time now) {
    bool const settles = now >= _nextSettle;
    bool busy = now < _nextRestart;
    for (Entry &entry : _journal.Open()) {
        if (entry.step == Step::OnTrial) {
            if (settles && _Settle(entry))
                _nextSettle = now + reportInterval;
            continue;
        }
        if (busy)
            continue;
        if (entry.step == Step::Taken)
            _Begin(entry);
        else
            _Apply(entry);
        busy = entry.step == Step::Taken || entry.step == Step::Applying;
    }
}

void Agent::_Begin(Entry &entry) {
    Change const change = ReadChange(entry.message);
    if (change.expires != 0 && _clock() > change.expires) {
        _Refuse(entry, "expired", "It came too late");
        return;
    }
    // It would join what is on trial, and go back, or stay, with that. A trial of ours that only waits for a
    // restart may be joined.
    json::value const trial = _Trial();
    std::string const state = trial.get("state", "");
    if (state == "running" || state == "returning")
        return;
    if (state == "waiting" && !_IsOurs(trial.get<std::int64_t>("set")))
        return;
    // What somebody saves between this and the call is not seen; that is a moment.
    if (!change.based_on.empty() && change.based_on != _Reported().get("revision", "")) {
        _Refuse(entry, "conflict", "The settings have changed since");
        return;
    }
    auto const newest = _service.Call("history_list", {0, 1}).array();
    entry.before = newest.empty() ? 0 : NumberOf(newest.front());
    entry.step = Step::Applying;
    _Ask(entry, change);
}

void Agent::_Apply(Entry &entry) {
    Change const change = ReadChange(entry.message);
    std::string const user = UserOf(change.who);
    auto const sets = _Sets(entry.before);
    auto const isOurs = [&user](Set const &set) { return set.get("user", "") == user; };
    auto const first = std::find_if(sets.begin(), sets.end(), isOurs);
    if (first == sets.end()) {
        _Ask(entry, change);
        return;
    }
    if (IsTakenBack(KeysOf(*first), std::vector<Set>(first, sets.end()))) {
        entry.set = NumberOf(*first);
        _End(entry, states::returned, json::object());
        return;
    }
    auto const &last = *std::find_if(sets.rbegin(), sets.rend(), isOurs);
    json::value const trial = _Trial();
    if (last.get("result", "") != "saved") {
        // The guard takes back what is on trial and was not saved to the end.
        std::string const state = trial.get("state", "");
        if (state == "none" || state == "returned" || trial.get<std::int64_t>("set", 0) > NumberOf(last))
            _Ask(entry, change);
        return;
    }
    json::value found;
    found["set"] = NumberOf(last);
    found["changed"] = KeysOf(last);
    found["restart"] = _service.Call("device_describe", {})["restart"];
    found["trial"] = trial;
    _Went(entry, change, found);
}

void Agent::_Ask(Entry &entry, Change const &change) {
    if (_busy != entry.id) {
        if (entry.tries == mostTries) {
            json::value result;
            result["code"] = "failed";
            result["message"] = "The service gave no answer";
            _End(entry, states::failed, result);
            return;
        }
        ++entry.tries;
        _journal.Update(entry);
    }
    _busy.clear();
    try {
        _Went(entry, change, _service.Call("settings_set", {json::value(change.patch)}, UserOf(change.who)));
    } catch (Denied const &denied) {
        if (denied.Code().empty() || denied.Code() == "busy") {
            _busy = entry.id;
            throw;
        }
        json::value result;
        result["code"] = denied.Code();
        result["message"] = denied.what();
        if (auto const &reasons = denied.error.find("refused"); !reasons.is_undefined())
            result["refused"] = reasons;
        _End(entry, denied.Code() == "failed" ? states::failed : states::refused, result);
    }
}

void Agent::_Went(Entry &entry, Change const &change, json::value made) {
    json::value const trial = made["trial"];
    if (change.restart && made.get("restart", false))
        entry.boot = _service.Call("device_describe", {}).get("boot", "");
    made.object().erase("trial");
    entry.set = made["set"].is_null() ? 0 : made.get<std::int64_t>("set");
    std::string const state = trial.get("state", "");
    bool const onTrial = entry.set != 0 && (state == "running" || state == "waiting") &&
                         trial.get<std::int64_t>("set", 0) <= entry.set;
    if (!onTrial) {
        _End(entry, states::done, made);
        return;
    }
    made["seconds"] = trial["seconds"];
    entry.step = Step::OnTrial;
    _End(entry, states::trial, made);
    Lost();
    _nextSettle = {};
    _broker.Reopen(std::chrono::seconds(
        std::min(longestSettling, trial.get<std::int64_t>("seconds", 0) / settlingPart)));
}

bool Agent::_Settle(Entry &entry) {
    json::value const trial = _Trial();
    std::string const state = trial.get("state", "");
    _broker.Hurry(state == "running");
    auto const begun = trial.get<std::int64_t>("set", 0);
    bool const isOurs = state != "none" && begun <= entry.set;
    if (isOurs && state != "returned") {
        if (state == "running" && _reached)
            _Keep(entry, begun);
        return state == "waiting";
    }
    json::value result = json::object();
    std::istringstream before(entry.result);
    result.load(before, true);
    bool const returned = isOurs || IsTakenBack(result["changed"].array(), _Sets(entry.set));
    if (returned)
        entry.boot.clear();
    result.object().erase("seconds");
    _End(entry, returned ? states::returned : states::kept, result);
    return false;
}

void Agent::_Keep(Entry &entry, std::int64_t trial) {
    if (_journal.ToRestart() || !_IsOurs(trial))
        return;
    if (_service.Call("trial_keep", {}).boolean()) {
        WEBCONFIG_LOG(notice, logTag)
            << "The broker is reached: the settings of change " << entry.id << " stay";
        _Settle(entry);
    }
}

void Agent::_End(Entry &entry, char const *state, json::value result) {
    result["id"] = entry.id;
    result["state"] = state;
    if (entry.set != 0)
        result["set"] = entry.set;
    result["revision"] = _Reported()["revision"];
    if (entry.step != Step::OnTrial || state != states::trial) {
        entry.step = Step::Ended;
        entry.message.clear();
    }
    entry.result = result.save();
    entry.told = false;
    _journal.Update(entry);
    _nextReport = {};
    WEBCONFIG_LOG(notice, logTag) << "Change " << entry.id << ": " << state;
}

void Agent::_Refuse(Entry &entry, std::string const &code, std::string const &message) {
    json::value result;
    result["code"] = code;
    result["message"] = message;
    _End(entry, states::refused, result);
}

json::value Agent::_Trial() {
    try {
        return _service.Call("trial_status", {});
    } catch (Denied const &) {  // this device puts nothing on trial
        json::value none;
        none["state"] = "none";
        return none;
    }
}

std::vector<Agent::Set> Agent::_Sets(std::int64_t behind) {
    std::vector<Set> sets;
    for (std::int64_t before = 0;; before = NumberOf(sets.front())) {
        auto const listed = _service.Call("history_list", {before, setsAtOnce}).array();
        for (auto const &set : listed) {
            if (NumberOf(set) <= behind)
                return sets;
            sets.insert(sets.begin(), set);
        }
        if (listed.size() < setsAtOnce)
            return sets;
    }
}

bool Agent::_IsOurs(std::int64_t trial) {
    auto const sets = _Sets(trial - 1);
    return !sets.empty() && std::all_of(sets.begin(), sets.end(), IsOfFleet);
}

json::value Agent::_Reported() {
    json::value reported = _service.Call("device_describe", {});
    reported.object().erase("boot");
    reported["settings"] = _service.Call("settings_get", {json::value(json::array())});
    reported["revision"] = RevisionOf(reported["settings"]);
    reported["trial"] = _Trial()["state"];
    return reported;
}

void Agent::_Tell() {
    if (_telling.arrived) {
        _journal.MarkTold(_telling.number, _telling.text);
        _telling = {};
    }
    if (_telling.message != 0)
        return;
    auto const entry = _journal.Untold();
    if (!entry)
        return;
    _telling = {_broker.Publish(topics::result, entry->result, false), entry->number, entry->result, false};
}

void Agent::_Report(Time now) {
    if (now < _nextReport || _reporting.message != 0)
        return;
    _nextReport = now + reportInterval;
    json::value reported = _Reported();
    std::string const compared = RevisionOf(reported);
    if (compared == _reported)
        return;
    reported["uptime"] = Uptime();
    _reporting = {_broker.Publish(topics::reported, reported.save(), true), 0, compared, false};
}

void Agent::_TellHealth(Time now) {
    if (now < _nextHealth)
        return;
    _nextHealth = now + _healthInterval;
    json::value health = json::object();
    try {
        json::value const metrics = _service.Call("metrics", {noSamples});
        health = metrics["now"];
    } catch (Denied const &) {  // this device measures nothing
    }
    health["time"] = static_cast<std::int64_t>(_clock());
    health["uptime"] = Uptime();
    _broker.Publish(topics::health, health.save(), true);
}

void Agent::_Complain(std::string const &about) {
    auto const now = std::chrono::steady_clock::now();
    if (now < _nextComplaint)
        return;
    _nextComplaint = now + complaintInterval;
    WEBCONFIG_LOG(warning, logTag) << about;
}

}  // namespace fleet::agent
