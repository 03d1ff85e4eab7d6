#pragma once

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "WebApps/webconfig/util/Requester.h"

/// What was changed on the device, when, and by whom.
namespace webconfig::history {

/// A value of the parameter store. Nothing, where one is optional, is a key that the store does not have.
struct Value {
    std::string text;
    int type = 2;  ///< as in PRM_PAR_T

    bool operator==(Value const &other) const { return text == other.text; }
};

struct Change {
    std::string key;
    std::optional<Value> before;
    std::optional<Value> after;
};

/// All changes of one request.
struct ChangeSet {
    std::int64_t number = 0;  ///< counts up, never used again
    std::time_t time = 0;     ///< UTC
    util::Requester requester;
    std::string
        result;  ///< "saved", "failed" where a write failed, "unfinished" where the process ended within
    std::string reason;  ///< of a set that no form has written, such as "Undo of 12"
    std::vector<Change> changes;
};

/// The change sets in one SQLite file, which is for its owner only because it holds secrets. A change is on
/// the disk before the store is changed, so that whatever happens in between, the file knows at least as
/// much. All operations throw sqlite::Error, and work again once its reason is gone. Safe between threads.
class ChangeLog {
  public:
    /// Keeps the last \a keep sets.
    ChangeLog(std::string path, int keep);
    ~ChangeLog();
    ChangeLog(ChangeLog const &) = delete;
    ChangeLog &operator=(ChangeLog const &) = delete;

    /// Begins a set with its first change, and forgets the oldest ones, but none from \a needed on. Returns
    /// its number.
    std::int64_t Begin(util::Requester const &requester, std::string const &reason, Change const &first,
                       std::optional<std::int64_t> needed = {});
    /// Adds a change. Of a key that was changed before in this set the first value before stays.
    void Add(std::int64_t set, Change const &change);
    /// Ends the set. Keys of \a unchanged kept their values after all; so did those that have their old value
    /// back. Returns what has changed: nothing, where the set is gone because nothing has.
    std::vector<Change> Finish(std::int64_t set, std::string const &result,
                               std::vector<std::string> const &unchanged);

    /// The newest sets with a lower number than \a before, at most \a count, newest first.
    std::vector<ChangeSet> Newest(std::int64_t before, int count);
    std::optional<ChangeSet> Get(std::int64_t number);
    /// What all sets from \a number on have changed: each key with its value before the first of them, and
    /// after the last.
    std::vector<Change> Since(std::int64_t number);

  private:
    struct Database;
    struct Locked;
    Locked _Lock();

    std::string const _path;
    int const _keep;
    struct State;
    std::unique_ptr<State> _state;
};

}  // namespace webconfig::history
