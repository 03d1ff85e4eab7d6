#pragma once

#include <string>
#include <vector>

#include "WebApps/webconfig/history/ChangeLog.h"

/// Takes changes back: by ordinary writes, which become a set of their own.
namespace webconfig::history {

/// What has to be written to take changes back.
struct Plan {
    std::vector<Change> writes;          ///< from what the store has now to what it had before
    std::vector<std::string> conflicts;  ///< keys whose value is not the one that the changes have left
};

/// \a changes are of one set, or the sum of several. What has its old value already needs no write.
Plan PlanOf(std::vector<Change> const &changes);

/// How taking back went.
enum class TakenBack {
    All,
    NotInEffect,  ///< stored, but a command that puts it into effect has failed
    NotStored,    ///< a write failed: the ones before it are stored, and in effect
};

/// Writes what is planned and puts it into effect.
TakenBack TakeBack(Plan const &plan);

}  // namespace webconfig::history
