#pragma once

#include <vector>

#include "WebApps/webconfig/history/ChangeLog.h"
#include "parameters/Parameter.h"

namespace webconfig::history {

/// What makes the store as it was in a backup.
struct RestorePlan {
    std::vector<Change> known;    ///< of settings of the table
    std::vector<Change> unknown;  ///< of what other programs keep, or another version or model
};

/// \a parameters are all of a backup. What else the store has, it has not had then: it is deleted.
RestorePlan PlanToRestore(std::vector<prm::Parameter> const &parameters);

}  // namespace webconfig::history
