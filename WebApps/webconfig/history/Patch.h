#pragma once

#include <string>
#include <vector>

#include "WebApps/webconfig/history/ChangeLog.h"

/// Writes to many settings at once, by whoever is no form: taking changes back, restoring a backup, a machine
/// that asks for them. They are ordinary writes to the store, so they become a set of the history, on trial
/// like any other.
namespace webconfig::history {

/// What the store has under \a key.
std::optional<Value> Stored(std::string const &key);

/// How writing went.
enum class Applied {
    All,
    NotInEffect,  ///< stored, but a command that puts it into effect has failed
    NotStored,    ///< a write failed: the ones before it are stored, and in effect
};

/// Gives each key of \a changes the value that it is to have after them, and puts all into effect.
Applied Apply(std::vector<Change> const &changes);

/// What has to be written to take changes back.
struct Plan {
    std::vector<Change> writes;          ///< from what the store has now to what it had before
    std::vector<std::string> conflicts;  ///< keys whose value is not the one that the changes have left
};

/// \a changes are of one set, or the sum of several. What has its old value already needs no write.
Plan PlanToTakeBack(std::vector<Change> const &changes);

}  // namespace webconfig::history
