#include <algorithm>
#include <limits>
#include <optional>

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/jsonrpc/SettingsPatch.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/history/Trial.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/settings/Description.h"
#include "WebApps/webconfig/util/FirmwareVerdict.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr int maxSets = 100;
constexpr unsigned maxVersions = 4096;  // bytes
constexpr char const *nameKey = settings::Key("net/hostname");

/// The keys of a row that the store has, or may have.
std::vector<std::string> KeysOf(settings::Setting const &setting) {
    std::size_t const star = setting.key.find('*');
    if (star == std::string_view::npos)
        return {std::string(setting.key)};
    auto keys = util::Prm::GetList(std::string(setting.key.substr(0, star)));
    std::erase_if(keys, [&setting](std::string const &key) { return settings::Find(key) != &setting; });
    return keys;
}

/// Whether \a key is one of those that are asked for.
bool IsAsked(std::vector<std::string> const &asked, std::string const &key) {
    return asked.empty() || std::any_of(asked.begin(), asked.end(), [&key](std::string const &pattern) {
               return settings::Matches(pattern, key) || key.starts_with(pattern + '/');
           });
}

cppcms::json::value RefusedBecause(std::map<std::string, std::string> const &refused) {
    cppcms::json::value reasons = cppcms::json::object();
    for (auto const &[key, reason] : refused)
        reasons[key] = reason;
    return reasons;
}

history::ChangeSet SetOf(std::int64_t number) {
    if (auto set = history::Kept()->Get(number))
        return *set;
    throw Refused("unknown", "There is no change " + std::to_string(number) + " any more.");
}

cppcms::json::value Described(history::ChangeSet const &set) {
    cppcms::json::value described;
    described["number"] = set.number;
    described["time"] = set.time;
    described["user"] = set.requester.user;
    described["address"] = set.requester.address;
    described["page"] = set.requester.page;
    described["result"] = set.result;
    described["reason"] = set.reason;
    described["changes"] = Listed(set.changes);
    return described;
}

}  // namespace

cppcms::json::value JsonRpc::DeviceDescribe() {
    // Another firmware means another start of this process.
    static std::string const firmware =
        util::RunningVersion(util::ShellCommand("/usr/bin/ubi_get_volume_versions.sh", maxVersions));
    util::Prm::FlushReadCache();
    cppcms::json::value described;
    described["model"] = util::hardwarePlatform;
    described["firmware"] = firmware;
    described["serial"] = util::SystemAssemblySN();
    described["name"] = util::Prm::GetString(nameKey);
    described["boot"] = history::CurrentBoot();
    described["restart"] = util::IsRebootRequired();
    return described;
}

cppcms::json::value JsonRpc::DeviceRestart(CallQueue::Call const &call) {
    if (call.parameters[0].str() != history::CurrentBoot())
        return false;
    Turn const turn(call);  // what somebody saves is not to be cut off
    util::ForkReboot();
    return true;
}

cppcms::json::value JsonRpc::SettingsDescribe() {
    cppcms::json::value table = cppcms::json::array();
    for (auto const &setting : settings::catalogue)
        table.array().push_back(settings::Described(setting));
    return table;
}

cppcms::json::value JsonRpc::SettingsGet(CallQueue::Call const &call) {
    auto const asked = call.parameters[0].get_value<std::vector<std::string>>();
    util::Prm::FlushReadCache();
    cppcms::json::value values = cppcms::json::object();
    for (auto const &setting : settings::catalogue) {
        for (auto const &key : KeysOf(setting)) {
            if (auto const stored = IsAsked(asked, key) ? history::Stored(key) : std::nullopt)
                values[key] = Shown(key, stored);
        }
    }
    return values;
}

cppcms::json::value JsonRpc::SettingsDiff(CallQueue::Call const &call) {
    SettingsPatch const patch = ReadPatch(call.parameters[0].object());
    cppcms::json::value difference;
    difference["changes"] = Listed(patch.changes);
    difference["refused"] = RefusedBecause(patch.refused);
    return difference;
}

cppcms::json::value JsonRpc::SettingsSet(CallQueue::Call const &call) {
    return Make(call, "", [&call] {
        SettingsPatch patch = ReadPatch(call.parameters[0].object());
        if (patch.refused.empty())
            return std::move(patch.changes);
        cppcms::json::value error;
        error["code"] = "refused";
        error["message"] = "Nothing was stored";
        error["refused"] = RefusedBecause(patch.refused);
        throw Refused(error);
    });
}

cppcms::json::value JsonRpc::HistoryList(CallQueue::Call const &call) {
    auto const before = call.parameters[0].get_value<std::int64_t>();
    int const count = std::clamp(call.parameters[1].get_value<int>(), 1, maxSets);
    cppcms::json::value sets = cppcms::json::array();
    for (auto const &set :
         history::Kept()->Newest(before > 0 ? before : std::numeric_limits<std::int64_t>::max(), count))
        sets.array().push_back(Described(set));
    return sets;
}

cppcms::json::value JsonRpc::HistoryUndo(CallQueue::Call const &call) {
    auto const number = call.parameters[0].get_value<std::int64_t>();
    bool const confirmed = call.parameters[1].boolean();
    return Make(call, "Undo of " + std::to_string(number), [&] {
        util::Prm::FlushReadCache();
        history::Plan const plan = history::PlanToTakeBack(SetOf(number).changes);
        if (plan.conflicts.empty() || confirmed)
            return plan.writes;
        cppcms::json::value error;
        error["code"] = "conflict";
        error["message"] = "Settings have changed since: nothing was taken back";
        error["conflicts"] = plan.conflicts;
        throw Refused(error);
    });
}

}  // namespace webconfig::apps
