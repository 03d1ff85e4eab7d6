#include "Store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>

#include "sqlite/Sqlite.h"

namespace prm {

namespace {

using namespace std::chrono_literals;
using sqlite::Connection;
using sqlite::Query;
using sqlite::Statement;
using sqlite::Transaction;

constexpr auto busyTimeout = 5s;
constexpr auto reportInterval = 1min;
constexpr int mostOpenings = 3;  // of one operation, while others replace the file

/// What is kept of what was read: as much as pages and polls ask for again and again.
constexpr std::size_t mostKnown = 64;
constexpr std::size_t longestKnown = 256;

/// Incremented when the table changes; a file of a newer version is refused.
constexpr int schemaVersion = 1;

void Prepare(Connection const &connection) {
    sqlite::MakeTables(connection, schemaVersion,
                       "CREATE TABLE IF NOT EXISTS parameter("
                       "  key TEXT PRIMARY KEY NOT NULL,"
                       "  type INTEGER NOT NULL,"
                       "  value BLOB NOT NULL,"
                       "  mode INTEGER NOT NULL DEFAULT 0);");
}

/// Whether a store could be there, and is not.
bool IsMissing(std::filesystem::path const &path) {
    std::error_code unseen;
    return symlink_status(path, unseen).type() == std::filesystem::file_type::not_found &&
           is_directory(path.parent_path(), unseen);
}

}  // namespace

Status ReadFile(std::string const &path, std::string &content) {
    // Without O_NONBLOCK a named pipe would hang the caller.
    int const file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return Status::Invalid;
    struct stat info {};
    bool complete = ::fstat(file, &info) == 0 && S_ISREG(info.st_mode);
    std::string read;
    std::array<char, 16384> chunk{};
    while (complete) {
        ssize_t const count = ::read(file, chunk.data(), chunk.size());
        if (count == 0)
            break;
        complete = count > 0 && read.size() + static_cast<std::size_t>(count) <= maxFileSize;
        if (complete)
            read.append(chunk.data(), static_cast<std::size_t>(count));
    }
    ::close(file);
    if (!complete)
        return Status::Invalid;
    content = std::move(read);
    return Status::Ok;
}

struct Store::Database {
    explicit Database(std::string const &path)
        : connection(sqlite::OpenDurable(path, busyTimeout, Prepare)) {}

    Connection const connection;
    Statement const read{connection, "SELECT value, type, mode FROM parameter WHERE key = ?1"};
    Statement const write{connection,
                          "REPLACE INTO parameter(key, value, type, mode) VALUES(?1, ?2, ?3, ?4)"};
    Statement const remove{connection, "DELETE FROM parameter WHERE key = ?1"};
    // '0' is the character after '/'.
    Statement const removeTree{
        connection, "DELETE FROM parameter WHERE key = ?1 OR (key > ?1 || '/' AND key < ?1 || '0')"};
    Statement const find{connection, "SELECT key FROM parameter WHERE key >= ?1 ORDER BY key LIMIT 256"};

    /// Keeps what it has found until somebody commits anything: a look at memory that all processes share
    /// tells.
    Status Read(std::string_view key, Value &value) {
        auto const mark = connection.CommitMark();
        if (mark != mark_ || !mark)
            known_.clear();
        mark_ = mark;
        if (auto const found = known_.find(key); found != known_.end()) {
            if (found->second)
                value = *found->second;
            return found->second ? Status::Ok : Status::NotFound;
        }
        Query query(read);
        bool const exists = query.Bind(1, key).Step();
        if (exists)
            value = {.text = std::string(query.Bytes(0)),
                     .type = static_cast<Type>(query.Number(1)),
                     .mode = static_cast<unsigned>(query.Number(2))};
        std::size_t const size = key.size() + (exists ? value.text.size() : 0);
        if (mark && known_.size() < mostKnown && size <= longestKnown)
            known_.emplace(key, exists ? std::optional(value) : std::nullopt);
        return exists ? Status::Ok : Status::NotFound;
    }

    void Forget() {
        known_.clear();
        connection.ReleaseMemory();
    }

    void Write(std::string_view key, Value const &value) const {
        Query(write)
            .Bind(1, key)
            .BindBytes(2, value.text)
            .Bind(3, static_cast<int>(value.type))
            .Bind(4, static_cast<int>(value.mode))
            .Step();
    }

    Status Remove(Statement const &statement, std::string_view key) const {
        Query(statement).Bind(1, key).Step();
        return connection.Changes() > 0 ? Status::Ok : Status::NotFound;
    }

  private:
    std::optional<sqlite::Connection::Mark> mark_;                    // what is known was read since
    std::map<std::string, std::optional<Value>, std::less<>> known_;  // nothing: there is no such key
};

Store::Store(std::string path, Report report) : path_(std::move(path)), report_(std::move(report)) {}

Store::~Store() = default;

std::string Store::DefaultPath() {
    char const *const path = std::getenv("PRM_STORE");
    return path && *path ? path : "/var/lib/prm/prm.db";
}

Store::Database &Store::Open() {
    // The log is opened by its path, too: where another file took the place meanwhile, it is that one's.
    for (int left = mostOpenings; left > 0 && (!database_ || database_->connection.IsReplaced()); --left) {
        database_.reset();
        database_ = std::make_unique<Database>(path_);
    }
    return *database_;
}

template <typename Action>
Status Store::Guarded(Action action) {
    std::lock_guard const lock(mutex_);
    try {
        Status const status = action(Open());
        if (database_->connection.IsReadOnly())
            database_.reset();  // it may be otherwise the next time
        return status;
    } catch (std::exception const &error) {
        database_.reset();
        Failed(error.what());
        return Status::Unavailable;
    }
}

template <typename Action>
Status Store::Looked(Action action) {
    if (std::lock_guard const lock(mutex_); !database_ && IsMissing(path_))
        return Status::NotFound;
    return Guarded(action);
}

void Store::Failed(std::string const &reason) {
    auto const now = std::chrono::steady_clock::now();
    if (reason == reported_ && now - reportedAt_ < reportInterval)
        return;
    reported_ = reason;
    reportedAt_ = now;
    report_("parameter store " + path_ + " cannot be used: " + reason);
}

Status Store::Read(std::string_view key, Value &value) {
    key = NormalKey(key);
    if (key.empty())
        return Status::Invalid;
    return Looked([&](Database &database) { return database.Read(key, value); });
}

Status Store::Write(std::string_view key, Value const &value) {
    key = NormalKey(key);
    if (key.empty())
        return Status::Invalid;
    return Guarded([&](Database &database) {
        database.Write(key, value);
        return Status::Ok;
    });
}

Status Store::Write(std::vector<Parameter> const &parameters) {
    for (auto const &parameter : parameters) {
        if (NormalKey(parameter.key).empty())
            return Status::Invalid;
    }
    return Guarded([&](Database &database) {
        Transaction transaction(database.connection);
        for (auto const &parameter : parameters)
            database.Write(NormalKey(parameter.key), parameter.value);
        transaction.Commit();
        return Status::Ok;
    });
}

Status Store::Remove(std::string_view key) {
    key = NormalKey(key);
    if (key.empty())
        return Status::Invalid;
    return Guarded([&](Database &database) { return database.Remove(database.remove, key); });
}

Status Store::RemoveTree(std::string_view key) {
    key = NormalKey(key);
    if (!key.empty())
        key = key.substr(0, key.find_last_not_of('/') + 1);
    if (key.empty())
        return Status::Invalid;
    return Guarded([&](Database &database) { return database.Remove(database.removeTree, key); });
}

Status Store::Find(std::string_view prefix, std::string_view from, std::vector<std::string> &keys) {
    prefix.remove_prefix(std::min(prefix.find_first_not_of('/'), prefix.size()));
    keys.clear();
    return Looked([&](Database &database) {
        Query query(database.find);
        query.Bind(1, std::max(prefix, from));
        while (query.Step() && query.Bytes(0).starts_with(prefix))
            keys.emplace_back(query.Bytes(0));
        return keys.empty() ? Status::NotFound : Status::Ok;
    });
}

std::string Store::After(std::string const &key) {
    return key + '\0';  // the smallest text that is greater
}

Status Store::ForEach(std::string_view prefix, std::function<Status(std::string const &)> const &visit) {
    std::vector<std::string> keys;
    std::string from;
    for (;;) {
        Status status = Find(prefix, from, keys);
        for (auto key = keys.begin(); status == Status::Ok && key != keys.end(); ++key)
            status = visit(*key);
        if (status != Status::Ok)
            return status == Status::NotFound ? Status::Ok : status;
        from = After(keys.back());
    }
}

void Store::ReleaseMemory() {
    std::lock_guard const lock(mutex_);
    if (database_)
        database_->Forget();
}

}  // namespace prm
