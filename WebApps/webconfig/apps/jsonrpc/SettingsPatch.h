#pragma once

#include <cppcms/json.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "WebApps/webconfig/apps/SaveTurn.h"
#include "WebApps/webconfig/apps/jsonrpc/CallQueue.h"
#include "WebApps/webconfig/history/Patch.h"
#include "WebApps/webconfig/security/Audit.h"

/// What machines want of settings, against what the device has.
namespace webconfig::apps {

/// What a patch, an object of keys and values, comes to. Nothing is to be written where something is
/// refused.
struct SettingsPatch {
    std::vector<history::Change> changes;        ///< what the store does not have already
    std::map<std::string, std::string> refused;  ///< keys, with what is wrong
};

SettingsPatch ReadPatch(cppcms::json::object const &patch);

/// What a call that changes the device has to have, as long as the object lives: the requester's name for
/// the audit, and the turn of whoever saves.
class Turn {
  public:
    /// Throws Refused, while an upgrade runs, too.
    explicit Turn(CallQueue::Call const &call);

  private:
    security::Asking const _asking;
    Saving const _saving;
};

/// Makes the changes that \a plan gives for the requester of \a call, as one set of the history that has
/// \a reason, in its turn. Returns what has become of them; throws Refused.
cppcms::json::value Make(CallQueue::Call const &call, std::string const &reason,
                         std::function<std::vector<history::Change>()> const &plan);

/// Changes as an array of their keys, labels and values.
cppcms::json::value Listed(std::vector<history::Change> const &changes);

/// A value as machines get it: null for none; of a secret only that there is one.
cppcms::json::value Shown(std::string const &key, std::optional<history::Value> const &value);

}  // namespace webconfig::apps
