#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace fleet::agent {

/// How far a change is. The numbers are in the file.
enum class Step {
    Taken = 0,     ///< it is on the disk, so that the broker may forget it
    Applying = 1,  ///< the service has been asked, or is about to be
    OnTrial = 2,   ///< it goes back unless it is kept
    Ended = 3,
};

/// A change that has come, and what has become of it.
struct Entry {
    std::int64_t number = 0;  ///< in the order in which they came
    std::string id;
    Step step = Step::Taken;
    std::string message;      ///< as it came; empty once it has ended, for it may hold secrets
    std::int64_t before = 0;  ///< the newest set of the device's history when it was begun
    std::int64_t set = 0;     ///< of the history, that it has made; 0 for none
    int tries = 0;            ///< how often the service was asked for it
    std::string result;       ///< a message; empty as long as there is nothing to tell
    bool told = true;         ///< whether the broker has the result
    std::string boot;         ///< the start of the device that is to be followed by another one; or empty
};

/// The changes that have come, in one SQLite file for its owner only. What a call has written is on the disk
/// when it returns. All operations throw sqlite::Error.
class Journal {
  public:
    explicit Journal(std::string const &path);
    ~Journal();
    Journal(Journal const &) = delete;
    Journal &operator=(Journal const &) = delete;

    std::optional<Entry> Find(std::string const &id) const;
    /// Adds a change that has come, and forgets the oldest ones that have ended and are told.
    void Add(Entry const &entry);
    void Update(Entry const &entry);
    /// Those that have not ended, in their order.
    std::vector<Entry> Open() const;
    /// The first whose result the broker does not have.
    std::optional<Entry> Untold() const;
    /// The first that wants a restart.
    std::optional<Entry> ToRestart() const;
    /// The broker has \a result of a change, which may have another one by now.
    void MarkTold(std::int64_t number, std::string const &result);
    /// The result is to be told again.
    void Retell(std::string const &id);

  private:
    struct Database;
    std::unique_ptr<Database> const _database;
};

}  // namespace fleet::agent
