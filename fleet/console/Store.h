#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/console/Registry.h"
#include "sqlite/Sqlite.h"

namespace fleet::console {

/// What has become of a change. The numbers are in the file.
enum class State {
    Waiting = 0,  ///< its turn has not come, or its device is not online
    Sent = 1,     ///< it is with the device, or on its way there, and there is no answer
    Trial = 2,    ///< stored, and goes back unless the device keeps it
    Done = 3,
    Kept = 4,
    Returned = 5,
    Refused = 6,
    Failed = 7,
    Silent = 8,     ///< nothing was heard in time
    Withdrawn = 9,  ///< it was never sent
};
inline constexpr int states = 10;
char const *NameOf(State state);
std::optional<State> StateOf(std::string_view name);
inline bool IsFinal(State state) {
    return state >= State::Done;
}

enum class RolloutState { Running = 0, Paused = 1, Stopped = 2, Done = 3, TakenBack = 4, Ended = 5 };
char const *NameOf(RolloutState state);

/// A change of one device: somebody's, or a member of a rollout.
struct ChangeRow {
    std::int64_t number = 0;  ///< the part of its id that is not the store's
    std::string device;
    std::string who;
    std::int64_t time = 0;  ///< when it was asked for; then when its turn came, was sent, has ended
    std::string patch;      ///< JSON; empty: the rollout's
    std::string based_on;
    bool restart = false;
    std::int64_t rollout = 0;  ///< 0 for none
    std::int64_t wave = 0;
    State state = State::Waiting;
    std::int64_t expires = 0;  ///< 0 as long as its turn has not come
    std::string before;        ///< JSON: what the device had when it was sent
    std::string code;
    std::string message;
    std::string refused;  ///< JSON: the reasons by key, or empty
};

struct RolloutRow {
    std::int64_t number = 0;
    std::string title;
    std::string who;
    std::string why;
    std::int64_t time = 0;
    RolloutState state = RolloutState::Running;
    std::string reason;  ///< why it has stopped
    std::string patch;   ///< JSON
    bool restart = false;
    std::int64_t canaries = 1;
    std::int64_t wave = 10;
    std::int64_t limit = 5;  ///< per cent
    std::int64_t patience = 600;
    std::int64_t settle = 30;
    std::int64_t wave_now = -1;
    std::int64_t waves = 0;
    std::string selection;        ///< JSON
    std::int64_t takes_back = 0;  ///< the rollout that this one takes back
    std::int64_t forgiven = 0;    ///< failures that somebody has seen, and gone on
    std::int64_t forgivenOf = 0;  ///< how many had been asked then
};

/// A change that something may still become of.
struct OpenChange {
    std::int64_t number = 0;
    std::string device;
    State state = State::Waiting;
    std::int64_t expires = 0;
    std::int64_t rollout = 0;
};

struct LogLine {
    std::int64_t time = 0;
    std::string who;
    std::string text;
};

/// How many members of a rollout are in which state.
using Counts = std::array<std::int64_t, states>;

/// The tables of the store, by one connection. All operations throw sqlite::Error.
class Tables {
  public:
    explicit Tables(std::string const &path);
    ~Tables();
    Tables(Tables const &) = delete;
    Tables &operator=(Tables const &) = delete;

    sqlite::Connection const &Database() const;

    std::optional<ChangeRow> Change(std::int64_t number) const;
    /// Those whose turn has come, newest first; of a device, of a rollout, or of all (empty, 0).
    std::vector<ChangeRow> Changes(std::string const &device, std::int64_t rollout, std::int64_t offset,
                                   std::int64_t limit) const;
    std::int64_t CountChanges(std::string const &device, std::int64_t rollout) const;
    /// Of a rollout in their order; of one state, or of all.
    std::vector<ChangeRow> Members(std::int64_t rollout, std::optional<State> state, std::int64_t offset,
                                   std::int64_t limit) const;
    std::vector<ChangeRow> Wave(std::int64_t rollout, std::int64_t wave) const;
    /// What has not ended, and what has been given up since \a since.
    std::vector<OpenChange> Open(std::int64_t since) const;
    std::optional<RolloutRow> Rollout(std::int64_t number) const;
    std::optional<RolloutRow> TakingBack(std::int64_t number) const;
    std::vector<RolloutRow> Rollouts(std::int64_t offset, std::int64_t limit) const;
    /// Those that run, and those that may go on.
    std::vector<RolloutRow> Unfinished() const;
    std::int64_t CountRollouts() const;
    Counts CountMembers(std::int64_t rollout) const;
    std::int64_t CountAsked(std::int64_t rollout) const;
    std::int64_t CountUnfinished(std::int64_t rollout, std::int64_t wave) const;
    std::vector<LogLine> Log(std::int64_t rollout) const;
    Registry::Tags AllTags() const;
    std::string Note(std::string const &device) const;
    std::string Value(std::string const &name) const;

    // To be called in a transaction.
    std::int64_t Add(ChangeRow const &change);
    void Update(ChangeRow const &change);
    std::int64_t Add(RolloutRow const &rollout);
    void Update(RolloutRow const &rollout);
    void AddLog(std::int64_t rollout, LogLine const &line);
    /// The members of a wave that have told nothing get their turn, or another end of it.
    void BeginWave(std::int64_t rollout, std::int64_t wave, std::int64_t now, std::int64_t expires);
    void Withdraw(std::int64_t rollout, std::int64_t now);
    /// Drops rollouts that have ended and were begun before \a before, with their members, and single changes
    /// that have ended before it: \a most changes at once. Returns whether that was all.
    bool DropEnded(std::int64_t before, std::int64_t most);
    /// The value of this name is another one then.
    static constexpr char tagsName[] = "tags";
    void SetTags(std::string const &device, std::vector<std::string> const &tags);
    void SetNote(std::string const &device, std::string const &note);
    void SetValue(std::string const &name, std::string const &value);

  private:
    struct Statements;
    std::unique_ptr<Statements> const _statements;
};

/// Tags, notes, changes and rollouts, in one SQLite file for its owner only: for several threads, and several
/// processes. What a Writing has committed is on the disk.
class Store {
  public:
    explicit Store(std::string const &path);
    virtual ~Store() = default;
    Store(Store const &) = delete;
    Store &operator=(Store const &) = delete;

    /// What the ids of this store's changes begin with, and no other's.
    std::string const &Id() const { return _id; }
    std::string IdOf(std::int64_t change) const { return _id + '-' + std::to_string(change); }
    /// The number in an id; 0 where it is not one of this store.
    std::int64_t NumberIn(std::string_view id) const;

    class Reading {
      public:
        explicit Reading(Store &store) : _lock(store._readGuard), _tables(store._read) {}
        Tables const *operator->() const { return &_tables; }

      private:
        std::lock_guard<std::mutex> const _lock;
        Tables const &_tables;
    };
    /// All or nothing.
    class Writing {
      public:
        explicit Writing(Store &store)
            : _store(store), _lock(store._writeGuard), _transaction(store._write.Database()) {}
        Tables *operator->() { return &_store._write; }
        void Commit() { _store._Commit(_transaction); }

      private:
        Store &_store;
        std::lock_guard<std::mutex> const _lock;
        sqlite::Transaction _transaction;
    };

    /// What each commit changes, also one of another process.
    std::optional<sqlite::Connection::Mark> CommitMark();

  protected:
    virtual void _Commit(sqlite::Transaction &transaction) { transaction.Commit(); }

  private:
    std::mutex _writeGuard;
    Tables _write;
    std::mutex _readGuard;  // what pages read waits for no write
    Tables _read;
    std::string _id;
};

}  // namespace fleet::console
