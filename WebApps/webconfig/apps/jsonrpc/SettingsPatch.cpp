#include "WebApps/webconfig/apps/jsonrpc/SettingsPatch.h"

#include <algorithm>
#include <exception>
#include <set>

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/security/DefaultPassword.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/settings/Rules.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/PasswordHash.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/JsonRpc";

constexpr char const *webSha256Key = settings::Key("webman/digest256/admin");
constexpr char const *eapPasswordKey = settings::Key("net/wifi/client/eap/password");

/// The key of a network, and the setting that has its name.
constexpr std::pair<char const *, char const *> pskKeys[] = {
    {settings::Key("net/wifi/client/wpa_psk"), settings::Key("net/wifi/client/essid")},
    {settings::Key("net/wifi/ap/wpa_psk"), settings::Key("net/wifi/ap/essid")},
};

/// What keys are to have: nothing where they are to go.
using Wanted = std::map<std::string, std::optional<std::string>>;

bool IsSecret(std::string const &key) {
    auto const *const setting = settings::Find(key);
    return setting && setting->kind == settings::Kind::Secret;
}

/// The text of a member of a patch.
std::optional<std::string> TextOf(cppcms::json::value const &value) {
    switch (value.type()) {
        case cppcms::json::is_string:
            return value.str();
        case cppcms::json::is_boolean:
            return util::SwitchText(value.boolean());
        case cppcms::json::is_number:
            try {
                return std::to_string(value.get_value<long>());
            } catch (std::bad_cast const &) {
                return {};
            }
        default:
            return {};
    }
}

/// Reads one member of a patch into \a wanted; returns what is wrong with it.
std::string ReadMember(std::string const &key, cppcms::json::value const &value, Wanted &wanted) {
    auto const stored = history::Stored(key);
    if (value.is_null()) {
        if (stored)
            wanted[key] = std::nullopt;
        return stored ? settings::WrongRemoval(key) : "";
    }
    if (IsSecret(key) && value.type("set") == cppcms::json::is_boolean)
        return value["set"].boolean() == (stored && !stored->text.empty()) ? "" : "Not what the device has";
    auto text = TextOf(value);
    if (!text)
        return "Neither a text nor a whole number, true, false or null";
    if (stored && stored->text == *text)
        return {};
    std::string wrong = settings::WrongValue(key, *text);
    if (wrong.empty())
        wanted[key] = std::move(text);
    return wrong;
}

std::string After(Wanted const &wanted, std::string const &key) {
    auto const found = wanted.find(key);
    return found == wanted.end() ? util::Prm::GetString(key) : found->second.value_or("");
}

/// What is stored of a password for Wi-Fi; empty where it is no text.
std::string HashOf(std::string const &password) {
    try {
        return util::getNtPasswordHash(password);
    } catch (std::exception const &) {
        return {};
    }
}

/// Puts what is stored of passwords into their places; \a refused where that cannot be made.
void Derive(Wanted &wanted, std::map<std::string, std::string> &refused) {
    auto const replace = [&](std::string const &key, auto make) {
        auto const found = wanted.find(key);
        if (found == wanted.end() || found->second.value_or("").empty())
            return;
        found->second = make(*found->second);
        if (found->second->empty())
            refused[key] = "Nothing can be made of it that could be stored";
    };
    for (auto const &[pskKey, ssidKey] : pskKeys) {
        replace(pskKey, [&, ssidKey = ssidKey](std::string const &text) {
            return text.size() == settings::wifiKeyLength ? text : util::getPsk(After(wanted, ssidKey), text);
        });
    }
    replace(eapPasswordKey, HashOf);
    replace(security::webDigestKey, [&](std::string const &password) {
        std::string hash = util::WebPasswordHash(password);
        if (security::ThePolicy().digest_sha256 && !hash.empty())
            wanted[webSha256Key] = util::WebPasswordSha256(hash, password);
        return hash;
    });
}

/// With the type that pages give to a setting of its kind.
history::Value ValueOf(std::string const &key, std::string text) {
    bool const number = settings::Find(key)->kind == settings::Kind::Number;
    return {std::move(text), number ? PRM_PAR_INTEGER : PRM_PAR_STRING};
}

std::vector<history::Change> ChangesTo(Wanted const &wanted) {
    std::vector<history::Change> changes;
    for (auto const &[key, text] : wanted) {
        auto before = history::Stored(key);
        auto after = text ? std::optional(ValueOf(key, *text)) : std::nullopt;
        if (before != after)
            changes.push_back({key, std::move(before), std::move(after)});
    }
    // What fails between the two leaves no hash that counts, if this is the first.
    std::stable_partition(changes.begin(), changes.end(),
                          [](history::Change const &change) { return change.key == webSha256Key; });
    return changes;
}

void CheckTogether(Wanted const &wanted, SettingsPatch &patch) {
    std::set<std::string> changed;
    for (auto const &change : patch.changes)
        changed.insert(change.key);
    patch.refused.merge(settings::WrongTogether(changed, util::Prm::GetString,
                                                [&](std::string const &key) { return After(wanted, key); }));
}

cppcms::json::value Made(history::Recording const &recording, history::Applied applied) {
    cppcms::json::value made;
    made["changed"] = cppcms::json::array();
    for (auto const &change : recording.Changes())
        made["changed"].array().emplace_back(change.key);
    made["set"] = cppcms::json::null();
    if (recording.Number() != 0)
        made["set"] = recording.Number();
    made["in_effect"] = applied == history::Applied::All;
    made["restart"] = util::IsRebootRequired();
    made["trial"] = JsonRpc::TrialStatus();
    return made;
}

}  // namespace

SettingsPatch ReadPatch(cppcms::json::object const &patch) {
    util::Prm::FlushReadCache();
    SettingsPatch read;
    Wanted wanted;
    for (auto const &[key, value] : patch) {
        std::string wrong = settings::IsSetting(key.str()) ? ReadMember(key.str(), value, wanted)
                                                           : settings::WrongRemoval(key.str());
        if (!wrong.empty())
            read.refused[key.str()] = std::move(wrong);
    }
    Derive(wanted, read.refused);
    read.changes = ChangesTo(wanted);
    CheckTogether(wanted, read);
    return read;
}

Turn::Turn(CallQueue::Call const &call) : _asking(call.requester), _saving(call.service) {
    char const *const busy = util::IsFirmwareUpgradeRunning() ? "a firmware upgrade runs"
                             : _saving.Refused()              ? _saving.Refused()->reason
                                                              : nullptr;
    if (busy) {
        WEBCONFIG_LOG(warning, logTag) << "Refused a call: " << busy;
        throw Refused("busy", busy);
    }
}

cppcms::json::value Make(CallQueue::Call const &call, std::string const &reason,
                         std::function<std::vector<history::Change>()> const &plan) {
    Turn const turn(call);
    history::Recording recording([&call] { return call.requester; });
    recording.SetReason(reason);
    auto const changes = plan();
    auto const applied = changes.empty() ? history::Applied::All : history::Apply(changes);
    recording.Finish();
    if (applied == history::Applied::NotStored)
        throw Refused("failed", "A write has failed: the ones before it are stored");
    return Made(recording, applied);
}

cppcms::json::value Shown(std::string const &key, std::optional<history::Value> const &value) {
    if (!value)
        return cppcms::json::null();
    if (!IsSecret(key))
        return value->text;
    cppcms::json::value shown;
    shown["set"] = !value->text.empty();
    return shown;
}

cppcms::json::value Listed(std::vector<history::Change> const &changes) {
    cppcms::json::value described = cppcms::json::array();
    for (auto const &change : changes) {
        cppcms::json::value one;
        one["key"] = change.key;
        one["label"] = settings::LabelOf(change.key);
        one["before"] = Shown(change.key, change.before);
        one["after"] = Shown(change.key, change.after);
        described.array().push_back(one);
    }
    return described;
}

}  // namespace webconfig::apps
