#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "WebApps/webconfig/data/Base.h"
#include "WebApps/webconfig/data/ChangedSetting.h"
#include "WebApps/webconfig/history/ChangeLog.h"
#include "WebApps/webconfig/history/Patch.h"
#include "WebApps/webconfig/history/Trial.h"

namespace webconfig::data {

/// A change set, as people read it.
struct HistoryEntry {
    std::string number;
    std::string time;  ///< UTC
    std::string who;   ///< user and address
    std::string page;  ///< its title
    std::string result;
    std::string reason;
    std::vector<ChangedSetting> changes;
};

/// What "Undo" or "Return" would overwrite, and asks about.
struct HistoryQuestion {
    std::string action;  ///< the pressed button's value, sent again with the answer
    std::string number;
    std::vector<ChangedSetting> conflicts;  ///< from what is stored now to what would be
};

struct History : public Base {
    std::vector<HistoryEntry> entries;  ///< newest first
    std::string older;  ///< the number that the next page is older than; empty on the last one
    std::string text;   ///< the filter
    std::string page;
    std::vector<std::pair<std::string, std::string>> pages;  ///< address and title of all that write
    std::vector<HistoryQuestion> question;                   ///< one, where something is asked
};

/// As people read them. What is long is shown in part.
ChangedSetting Described(history::Change const &change);
std::vector<ChangedSetting> Described(std::vector<history::Change> const &changes);

/// What pages say of writes that went as \a applied; \a done where all went well.
Message ResultOf(history::Applied applied, std::string const &done);

/// What pages say of \a trial.
TrialNotice Told(std::optional<history::Trial> const &trial);

}  // namespace webconfig::data
