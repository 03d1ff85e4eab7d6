#include "WebApps/webconfig/history/Restore.h"

#include <set>
#include <string_view>
#include <utility>

#include "WebApps/webconfig/history/Patch.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::history {

RestorePlan PlanToRestore(std::vector<prm::Parameter> const &parameters) {
    RestorePlan plan;
    auto const add = [&plan](Change change) {
        (settings::Find(change.key) ? plan.known : plan.unknown).push_back(std::move(change));
    };
    std::set<std::string_view> kept;
    for (auto const &[key, value] : parameters) {
        kept.insert(key);
        auto now = Stored(key);
        Value after{value.text, static_cast<int>(value.type)};
        if (now && now->type == PRM_PAR_FILE && after.type == PRM_PAR_STRING)
            after.type = PRM_PAR_FILE;  // backups of the pages call it a text
        if (now != after)
            add({key, std::move(now), std::move(after)});
    }
    for (auto const &key : util::Prm::GetList("")) {
        if (!kept.contains(key))
            add({key, Stored(key), {}});
    }
    return plan;
}

}  // namespace webconfig::history
