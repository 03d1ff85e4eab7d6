#include "WebApps/webconfig/history/Patch.h"

#include <cstdlib>
#include <set>

#include "WebApps/webconfig/settings/Effects.h"
#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::history {

namespace {

/// The permission bits that files of the store are written back with; the store's interface does not tell
/// those that a file had.
constexpr unsigned fileMode = 0666;

bool WriteFile(std::string const &key, std::string const &content) {
    util::PrivateFolder const folder;
    std::string const path = folder / "content";
    return util::WritePrivately(path, content) && util::Prm::AddFile(key, path, fileMode);
}

/// Gives \a key a value, of the type that it says.
bool Write(std::string const &key, std::optional<Value> const &value) {
    if (!value)
        return util::Prm::Delete(key);
    switch (value->type) {
        case PRM_PAR_INTEGER:
            return util::Prm::Set(key, std::atoi(value->text.c_str()));
        case PRM_PAR_FLOAT:
            return util::Prm::Set(key, std::strtof(value->text.c_str(), nullptr));
        case PRM_PAR_FILE:
            return WriteFile(key, value->text);
        default:
            return util::Prm::Set(key, value->text);
    }
}

}  // namespace

std::optional<Value> Stored(std::string const &key) {
    std::string text;
    PRM_PAR_T type{};
    return util::Prm::Get(key, text, type) ? std::optional(Value{std::move(text), type}) : std::nullopt;
}

Applied Apply(std::vector<Change> const &changes) {
    bool stored = true;
    std::set<settings::Effect> effects;
    for (auto const &change : changes) {
        stored = Write(change.key, change.after);
        if (!stored)
            break;
        if (auto const *const setting = settings::Find(change.key))
            effects.insert(setting->effect);
    }
    bool const inEffect = settings::PutIntoEffect(effects);
    if (!stored)
        return Applied::NotStored;
    return inEffect ? Applied::All : Applied::NotInEffect;
}

Plan PlanToTakeBack(std::vector<Change> const &changes) {
    Plan plan;
    for (auto const &change : changes) {
        auto now = Stored(change.key);
        if (now == change.before)
            continue;
        if (now != change.after)
            plan.conflicts.push_back(change.key);
        plan.writes.push_back({change.key, std::move(now), change.before});
    }
    return plan;
}

}  // namespace webconfig::history
