#pragma once

#include <functional>
#include <string>
#include <vector>

#include "WebApps/webconfig/history/ChangeLog.h"

/// Keeps the history: it watches the gateway to the parameter store, so no page knows of it.
namespace webconfig::history {

/// From now on every request that changes settings becomes a set of the file; an empty name ends that.
void Keep(std::string const &file, int sets);

/// The file that is kept; null where none is.
ChangeLog *Kept();
bool IsKept();

/// What this thread writes while the object lives is one change set, begun by the first write that changes
/// something. A history that cannot be written stops nobody: that is logged.
class Recording {
  public:
    using WhoAsks = std::function<util::Requester()>;
    explicit Recording(WhoAsks whoAsks);
    ~Recording();
    Recording(Recording const &) = delete;
    Recording &operator=(Recording const &) = delete;

    /// That of the calling thread; null where it has none.
    static Recording *Current();

    /// Says why the set is written, where no form does.
    void SetReason(std::string reason);
    /// Ends the set. What follows would be another one.
    void Finish();

    /// The set that Finish() has ended, and what it has changed; 0 and nothing where nothing has.
    std::int64_t Number() const { return _finished; }
    std::vector<Change> const &Changes() const { return _changes; }
    /// Whether something could not be recorded.
    bool HasFailed() const { return _historyFailed; }

  private:
    friend class Watcher;
    void _Before(std::string const &key, std::optional<Value> const &after);
    void _After(std::string const &key, bool done);
    template <typename Write>
    void _Record(Write write);

    WhoAsks const _whoAsks;
    std::string _reason;
    std::int64_t _open = 0;
    std::int64_t _finished = 0;
    std::vector<std::string> _unchanged;
    std::vector<Change> _changes;
    bool _onTrial = false;
    bool _historyFailed = false;
};

}  // namespace webconfig::history
