#include "ctl/Commands.h"

#include <cppcms/json.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <thread>

#include "ctl/Transport.h"

namespace ctl {

namespace {

namespace json = cppcms::json;

constexpr long ok = 200;
constexpr long unauthorised = 401;
constexpr long maxSets = 100;  // that the device lists at once

struct Code {
    char const *name;
    Status status;
};
/// What the device says of a call that it does not do.
constexpr Code codes[] = {
    {"refused", Refused}, {"unknown", Refused}, {"conflict", Conflict}, {"busy", Busy}, {"failed", Failed}};

[[noreturn]] void FailWith(json::value const &error) {
    if (error.type() != json::is_object) {
        std::string const text = error.type() == json::is_string ? error.str() : error.save();
        throw Problem(Failed,
                      text == "Method not found" ? "The device's configuration does not offer this" : text);
    }
    std::string text = error.get("message", "");
    if (auto const &refused = error.find("refused"); refused.type() == json::is_object) {
        for (auto const &[key, reason] : refused.object())
            text += "\n  " + key.str() + ": " + reason.str();
    }
    if (auto const &conflicts = error.find("conflicts"); conflicts.type() == json::is_array) {
        for (auto const &key : conflicts.array())
            text += "\n  " + key.str();
    }
    std::string const code = error.get("code", "");
    auto const *const known = std::find_if(std::begin(codes), std::end(codes),
                                           [&code](Code const &one) { return code == one.name; });
    throw Problem(known == std::end(codes) ? Failed : known->status, text);
}

std::string UserName() {
    passwd const *const user = getpwuid(geteuid());
    return user ? user->pw_name : std::to_string(geteuid());
}

Answer Send(Options const &options, std::string const &method, json::array const &parameters = {}) {
    json::value call;
    call["id"] = 1;
    call["method"] = method;
    call["params"] = parameters;
    Answer const answer = options.url.empty() ? PostLocally(options, UserName(), call.save())
                                              : PostRemotely(options, call.save());
    if (answer.status == unauthorised)
        throw Problem(NotAuthorised, "The log-in is wrong, or locked for a while");
    return answer;
}

json::value Call(Options const &options, std::string const &method, json::array const &parameters = {}) {
    Answer const answer = Send(options, method, parameters);
    std::istringstream body(answer.body);
    json::value reply;
    if (answer.status != ok || !reply.load(body, true) || reply.type() != json::is_object)
        throw Problem(Unreachable,
                      "HTTP status " + std::to_string(answer.status) + " in the place of an answer");
    if (!reply["error"].is_null())
        FailWith(reply["error"]);
    return reply["result"];
}

json::value PatchIn(std::string const &path) {
    std::ifstream file;
    if (path != "-")
        file.open(path);
    std::istream &in = path == "-" ? std::cin : file;
    json::value patch;
    int line = 0;
    if (!in || !patch.load(in, true, &line) || patch.type() != json::is_object)
        throw Problem(Usage,
                      path + " has no JSON object" + (line > 0 ? ": line " + std::to_string(line) : ""));
    return patch;
}

/// A value for people, on one line.
std::string TextOf(json::value const &value) {
    switch (value.type()) {
        case json::is_null:
            return "(none)";
        case json::is_object:
            return value.get("set", false) ? "(secret)" : "(no secret)";
        case json::is_string: {
            std::string const quoted = json::to_json(value.str());
            return quoted == '"' + value.str() + '"' ? value.str() : quoted;
        }
        default:
            return value.save();
    }
}

void ShowChanges(json::value const &changes, char const *indent) {
    for (auto const &change : changes.array())
        std::cout << indent << change["key"].str() << ": " << TextOf(change["before"]) << " -> "
                  << TextOf(change["after"]) << '\n';
}

void ShowTrial(json::value const &trial) {
    std::string const state = trial["state"].str();
    if (state == "none")
        std::cout << "Nothing is on trial.\n";
    else if (state == "running")
        std::cout << "On trial: everything goes back in " << trial["seconds"].get_value<long>()
                  << " seconds, unless it is kept.\n";
    else if (state == "waiting")
        std::cout << "On trial from the restart on.\n";
    else
        std::cout << "Settings that nobody has kept were taken back.\n";
}

Status ShowMade(Options const &options, json::value const &made) {
    if (options.json) {
        std::cout << made << '\n';
    } else {
        for (auto const &key : made["changed"].array())
            std::cout << "changed " << key.str() << '\n';
        if (made["changed"].array().empty())
            std::cout << "Nothing to change.\n";
        if (made["restart"].boolean())
            std::cout << "The device has to be restarted.\n";
        if (std::string const state = made["trial"]["state"].str(); state == "running" || state == "waiting")
            ShowTrial(made["trial"]);
    }
    if (made["in_effect"].boolean())
        return Done;
    throw Problem(Failed, "Stored, but a command that puts it into effect has failed: see the device's log");
}

// The commands. Their arguments follow the first word.

Status Get(Options const &options) {
    json::array const keys(options.words.begin() + 1, options.words.end());
    json::value const values = Call(options, "settings_get", {json::value(keys)});
    if (options.json)
        std::cout << values << '\n';
    else
        for (auto const &[key, value] : values.object())
            std::cout << key << '=' << TextOf(value) << '\n';
    if (!keys.empty() && values.object().empty())
        throw Problem(Refused, "The device has no such setting");
    return Done;
}

Status Patch(Options const &options, json::value const &patch) {
    return ShowMade(options, Call(options, "settings_set", {patch}));
}

Status Set(Options const &options) {
    json::value patch;
    for (auto word = options.words.begin() + 1; word != options.words.end(); ++word) {
        std::size_t const sign = word->find('=');
        std::string value;
        if (sign != std::string::npos)
            value = word->substr(sign + 1);
        else if (!std::getline(std::cin, value))
            throw Problem(Usage, "No value of " + *word + " on standard input");
        patch[word->substr(0, sign)] = value;
    }
    return Patch(options, patch);
}

Status Unset(Options const &options) {
    json::value patch;
    for (auto word = options.words.begin() + 1; word != options.words.end(); ++word)
        patch[*word] = json::null();
    return Patch(options, patch);
}

Status Apply(Options const &options) {
    return Patch(options, PatchIn(options.words[1]));
}

Status Diff(Options const &options) {
    json::value const difference = Call(options, "settings_diff", {PatchIn(options.words[1])});
    if (options.json)
        std::cout << difference << '\n';
    else
        ShowChanges(difference["changes"], "");
    for (auto const &[key, reason] : difference["refused"].object())
        std::cerr << key << ": " << reason.str() << '\n';
    if (!difference["refused"].object().empty())
        return Refused;
    return difference["changes"].array().empty() ? Done : Differs;
}

std::string TimeText(std::time_t time) {
    std::ostringstream text;
    std::tm parts{};
    text << std::put_time(gmtime_r(&time, &parts), "%Y-%m-%d %H:%M:%S UTC");
    return text.str();
}

Status History(Options const &options) {
    json::value const sets =
        Call(options, "history_list", {options.before, std::clamp(options.count, 1L, maxSets)});
    if (options.json) {
        std::cout << sets << '\n';
        return Done;
    }
    for (auto const &set : sets.array()) {
        std::string line = std::to_string(set["number"].get_value<long>()) + "  " +
                           TimeText(set["time"].get_value<std::time_t>());
        for (char const *const member : {"user", "address", "page", "result", "reason"}) {
            if (!set[member].str().empty())
                line += "  " + set[member].str();
        }
        std::cout << line << '\n';
        ShowChanges(set["changes"], "    ");
    }
    return Done;
}

Status Undo(Options const &options) {
    std::string const &text = options.words[1];
    long number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ptr != text.data() + text.size())
        throw Problem(Usage, "No number of a change set: " + text);
    return ShowMade(options, Call(options, "history_undo", {number, options.confirmed}));
}

Status ShowStatus(Options const &options, json::value const &trial) {
    if (options.json)
        std::cout << trial << '\n';
    else
        ShowTrial(trial);
    return Done;
}

Status Keep(Options const &options) {
    bool const kept = Call(options, "trial_keep").boolean();
    json::value const trial = Call(options, "trial_status");
    if (kept && !options.json)
        std::cout << "The settings are kept.\n";
    else
        ShowStatus(options, trial);
    // What has been kept, or never was on trial, is as it should be; what went back, or has not been tried,
    // is not.
    return kept || trial["state"].str() == "none" ? Done : Conflict;
}

Status TakeBack(Options const &options) {
    bool const asked = Call(options, "trial_take_back").boolean();
    json::value const trial = Call(options, "trial_status");
    if (asked && !options.json)
        std::cout << "The settings are being taken back.\n";
    else
        ShowStatus(options, trial);
    return Done;
}

Status Trial(Options const &options) {
    return ShowStatus(options, Call(options, "trial_status"));
}

/// A service that opens its socket itself cannot be reached for a moment; what is under way may take ten
/// seconds.
constexpr std::chrono::seconds reloadLimit{15};
constexpr std::chrono::milliseconds retryInterval{100};

Status Reload(Options const &options) {
    Send(options, "reload");  // has no answer
    auto const deadline = std::chrono::steady_clock::now() + reloadLimit;
    for (;; std::this_thread::sleep_for(retryInterval)) {
        try {
            Call(options, "dns_server_status");
            return Done;
        } catch (Problem const &problem) {
            if (problem.ExitStatus() != Unreachable || std::chrono::steady_clock::now() > deadline)
                throw;
        }
    }
}

struct Command {
    char const *name;
    std::size_t least;  // arguments
    std::size_t most;
    Status (*run)(Options const &options);
};
constexpr std::size_t any = 1000;
constexpr Command commands[] = {
    {"get", 0, any, Get},          {"set", 1, any, Set},       {"unset", 1, any, Unset}, {"diff", 1, 1, Diff},
    {"apply", 1, 1, Apply},        {"history", 0, 0, History}, {"undo", 1, 1, Undo},     {"keep", 0, 0, Keep},
    {"take-back", 0, 0, TakeBack}, {"status", 0, 0, Trial},    {"reload", 0, 0, Reload},
};

}  // namespace

Status Run(Options const &options) {
    std::string const name = options.words.empty() ? "" : options.words.front();
    std::size_t const arguments = options.words.size() - (name.empty() ? 0 : 1);
    for (auto const &command : commands) {
        if (name == command.name && arguments >= command.least && arguments <= command.most)
            return command.run(options);
    }
    throw Problem(Usage, "No command, or not with these arguments: see webconfigctl --help.");
}

}  // namespace ctl
