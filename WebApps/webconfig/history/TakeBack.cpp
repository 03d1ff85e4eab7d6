#include "WebApps/webconfig/history/TakeBack.h"

#include <cstdlib>
#include <set>

#include "WebApps/webconfig/settings/Effects.h"
#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::history {

namespace {

std::optional<Value> Stored(std::string const &key) {
    std::string text;
    PRM_PAR_T type{};
    return util::Prm::Get(key, text, type) ? std::optional(Value{text, type}) : std::nullopt;
}

/// Gives \a key its value back, of the type that it had.
bool Write(std::string const &key, std::optional<Value> const &value) {
    if (!value)
        return util::Prm::Delete(key);
    if (value->type == PRM_PAR_INTEGER)
        return util::Prm::Set(key, std::atoi(value->text.c_str()));
    if (value->type == PRM_PAR_FLOAT)
        return util::Prm::Set(key, std::strtof(value->text.c_str(), nullptr));
    return util::Prm::Set(key, value->text);
}

}  // namespace

Plan PlanOf(std::vector<Change> const &changes) {
    Plan plan;
    for (auto const &change : changes) {
        auto const now = Stored(change.key);
        if (now == change.before)
            continue;
        plan.writes.push_back({change.key, now, change.before});
        if (now != change.after)
            plan.conflicts.push_back(change.key);
    }
    return plan;
}

TakenBack TakeBack(Plan const &plan) {
    bool stored = true;
    std::set<settings::Effect> effects;
    for (auto const &write : plan.writes) {
        stored = Write(write.key, write.after);
        if (!stored)
            break;
        if (auto const *const setting = settings::Find(write.key))
            effects.insert(setting->effect);
    }
    bool const inEffect = settings::PutIntoEffect(effects);
    if (!stored)
        return TakenBack::NotStored;
    return inEffect ? TakenBack::All : TakenBack::NotInEffect;
}

}  // namespace webconfig::history
