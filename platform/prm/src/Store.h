#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "parameters/Parameter.h"

namespace prm {

/// Result of an operation; the values are what cPrmLib returns.
enum class Status : int { Ok = 0, NotFound = 1, Invalid = 2, Unavailable = 3 };

/// Largest file that ReadFile() takes, in bytes.
constexpr std::size_t maxFileSize = std::size_t{4} << 20;
/// Fills \a content with the regular file at \a path. Invalid where it is none or too large.
Status ReadFile(std::string const &path, std::string &content);

/// The keys and values of the device in one SQLite file, safe between threads and processes.
///
/// Operations report failure by their status and never throw. The file is opened by the first operation
/// and again after a failure or when another file has taken its place. Short values that were read are kept
/// until something is written, by whichever process.
class Store {
  public:
    /// Receives the reason when the store cannot be used.
    using Report = std::function<void(std::string const &)>;

    Store(std::string path, Report report);
    ~Store();

    /// PRM_STORE, or /var/lib/prm/prm.db.
    static std::string DefaultPath();

    std::string const &Path() const { return path_; }

    Status Read(std::string_view key, Value &value);
    Status Write(std::string_view key, Value const &value);
    /// Writes all or, on a failure, none.
    Status Write(std::vector<Parameter> const &parameters);
    /// Removes the key alone.
    Status Remove(std::string_view key);
    /// Removes the key and all keys below it ("x" and "x/...").
    Status RemoveTree(std::string_view key);
    /// Fills \a keys with the next keys, in byte order, that begin with \a prefix and are not less than
    /// \a from: a handful, because many small queries are slow. NotFound, and none, at the end.
    Status Find(std::string_view prefix, std::string_view from, std::vector<std::string> &keys);
    /// The \a from for what comes after \a key.
    static std::string After(std::string const &key);
    /// Calls \a visit with each key that begins with \a prefix, in byte order; it may use the store.
    Status ForEach(std::string_view prefix, std::function<Status(std::string const &key)> const &visit);
    /// Forgets what was read, and gives back its memory.
    void ReleaseMemory();

  private:
    struct Database;

    Database &Open();
    template <typename Action>
    Status Guarded(Action action);
    /// The same for an action that only reads: a store that is not there yet has nothing, and is not made.
    template <typename Action>
    Status Looked(Action action);
    void Failed(std::string const &reason);

    std::string const path_;
    Report const report_;
    std::mutex mutex_;
    std::unique_ptr<Database> database_;
    std::string reported_;
    std::chrono::steady_clock::time_point reportedAt_;
};

}  // namespace prm
