#include "WebApps/webconfig/history/ChangeLog.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <utility>

#include "sqlite/Sqlite.h"

namespace webconfig::history {

namespace {

using sqlite::Connection;
using sqlite::Query;
using sqlite::Statement;
using sqlite::Transaction;

constexpr std::chrono::seconds busyTimeout{2};

/// Incremented when the tables change; a file of a newer version is refused.
constexpr int schemaVersion = 1;

void Prepare(Connection const &connection) {
    connection.Execute("PRAGMA foreign_keys=ON;");
    sqlite::MakeTables(connection, schemaVersion,
                       "CREATE TABLE IF NOT EXISTS change_set("
                       "  number INTEGER PRIMARY KEY AUTOINCREMENT,"
                       "  time INTEGER NOT NULL,"
                       "  user TEXT NOT NULL, address TEXT NOT NULL, page TEXT NOT NULL,"
                       "  result TEXT NOT NULL, reason TEXT NOT NULL);"
                       "CREATE TABLE IF NOT EXISTS change("
                       "  number INTEGER NOT NULL REFERENCES change_set ON DELETE CASCADE,"
                       "  key TEXT NOT NULL,"
                       "  before BLOB, before_type INTEGER, after BLOB, after_type INTEGER,"
                       "  PRIMARY KEY(number, key)) WITHOUT ROWID;");
}

void Bind(Query &query, int position, std::optional<Value> const &value) {
    if (value)
        query.BindBytes(position, value->text).Bind(position + 1, value->type);
    else
        query.BindNull(position).BindNull(position + 1);
}

std::optional<Value> ValueIn(Query const &query, int column) {
    if (query.IsNull(column))
        return {};
    return Value{std::string(query.Bytes(column)), static_cast<int>(query.Number(column + 1))};
}

Change ChangeIn(Query const &query) {
    return {std::string(query.Bytes(0)), ValueIn(query, 1), ValueIn(query, 3)};
}

std::vector<Change> All(Query &query) {
    std::vector<Change> changes;
    while (query.Step())
        changes.push_back(ChangeIn(query));
    return changes;
}

void Run(Query &query) {
    while (query.Step()) {
    }
}

}  // namespace

struct ChangeLog::Database {
    explicit Database(std::string const &path)
        : connection(sqlite::OpenDurable(path, busyTimeout, Prepare)) {}

    Connection const connection;
    Statement const begin{connection,
                          "INSERT INTO change_set(time, user, address, page, result, reason)"
                          " VALUES(?1, ?2, ?3, ?4, 'unfinished', ?5)"};
    Statement const forget{connection, "DELETE FROM change_set WHERE number <= ?1"};
    Statement const add{connection,
                        "INSERT INTO change VALUES(?1, ?2, ?3, ?4, ?5, ?6) ON CONFLICT(number, key)"
                        " DO UPDATE SET after = excluded.after, after_type = excluded.after_type"};
    Statement const remove{connection, "DELETE FROM change WHERE number = ?1 AND key = ?2"};
    Statement const removeSame{connection, "DELETE FROM change WHERE number = ?1 AND before IS after"};
    Statement const finish{connection, "UPDATE change_set SET result = ?2 WHERE number = ?1"};
    Statement const drop{connection, "DELETE FROM change_set WHERE number = ?1"};
    Statement const sets{connection,
                         "SELECT number, time, user, address, page, result, reason FROM change_set"
                         " WHERE number < ?1 ORDER BY number DESC LIMIT ?2"};
    Statement const changes{connection,
                            "SELECT key, before, before_type, after, after_type FROM change"
                            " WHERE number = ?1 ORDER BY key"};
    Statement const since{connection,
                          "SELECT first.key, first.before, first.before_type, last.after, last.after_type"
                          " FROM (SELECT key, min(number) AS low, max(number) AS high FROM change"
                          "  WHERE number >= ?1 GROUP BY key) AS span"
                          " JOIN change AS first ON first.number = low AND first.key = span.key"
                          " JOIN change AS last ON last.number = high AND last.key = span.key"
                          " ORDER BY first.key"};
};

struct ChangeLog::State {
    std::mutex guard;
    std::unique_ptr<Database> database;
};

/// The file, open, while this object lives.
struct ChangeLog::Locked {
    std::unique_lock<std::mutex> lock;
    Database &database;

    Database *operator->() const { return &database; }
};

ChangeLog::ChangeLog(std::string path, int keep)
    : _path(std::move(path)), _keep(keep), _state(std::make_unique<State>()) {}

ChangeLog::~ChangeLog() = default;

ChangeLog::Locked ChangeLog::_Lock() {
    std::unique_lock lock(_state->guard);
    auto &database = _state->database;
    if (database && database->connection.IsReplaced())
        database.reset();
    if (!database)
        database = std::make_unique<Database>(_path);
    return {std::move(lock), *database};
}

std::int64_t ChangeLog::Begin(util::Requester const &requester, std::string const &reason,
                              Change const &first, std::optional<std::int64_t> needed) {
    auto const database = _Lock();
    Transaction transaction(database->connection);
    Query begin(database->begin);
    begin.Bind(1, static_cast<std::int64_t>(std::time(nullptr)))
        .Bind(2, requester.user)
        .Bind(3, requester.address)
        .Bind(4, requester.page)
        .Bind(5, reason);
    Run(begin);
    std::int64_t const number = database->connection.LastRow();
    Query add(database->add);
    add.Bind(1, number).Bind(2, first.key);
    Bind(add, 3, first.before);
    Bind(add, 5, first.after);
    Run(add);
    Query forget(database->forget);
    forget.Bind(1, std::min(number - _keep, needed.value_or(number) - 1));
    Run(forget);
    transaction.Commit();
    return number;
}

void ChangeLog::Add(std::int64_t set, Change const &change) {
    auto const database = _Lock();
    Query add(database->add);
    add.Bind(1, set).Bind(2, change.key);
    Bind(add, 3, change.before);
    Bind(add, 5, change.after);
    Run(add);
}

std::vector<Change> ChangeLog::Finish(std::int64_t set, std::string const &result,
                                      std::vector<std::string> const &unchanged) {
    auto const database = _Lock();
    Transaction transaction(database->connection);
    for (auto const &key : unchanged) {
        Query remove(database->remove);
        remove.Bind(1, set).Bind(2, key);
        Run(remove);
    }
    Query removeSame(database->removeSame);
    removeSame.Bind(1, set);
    Run(removeSame);
    Query read(database->changes);
    read.Bind(1, set);
    std::vector<Change> changes = All(read);
    Query end(changes.empty() ? database->drop : database->finish);
    end.Bind(1, set);
    if (!changes.empty())
        end.Bind(2, result);
    Run(end);
    transaction.Commit();
    return changes;
}

std::vector<ChangeSet> ChangeLog::Newest(std::int64_t before, int count) {
    auto const database = _Lock();
    std::vector<ChangeSet> sets;
    Query query(database->sets);
    query.Bind(1, before).Bind(2, count);
    while (query.Step()) {
        auto const text = [&query](int column) { return std::string(query.Bytes(column)); };
        sets.push_back({query.Number(0), query.Number(1), {text(2), text(3), text(4)}, text(5), text(6), {}});
        Query changes(database->changes);
        changes.Bind(1, sets.back().number);
        sets.back().changes = All(changes);
    }
    return sets;
}

std::optional<ChangeSet> ChangeLog::Get(std::int64_t number) {
    if (number < 1 || number == std::numeric_limits<std::int64_t>::max())
        return {};
    auto sets = Newest(number + 1, 1);
    if (sets.empty() || sets.front().number != number)
        return {};
    return std::move(sets.front());
}

std::vector<Change> ChangeLog::Since(std::int64_t number) {
    auto const database = _Lock();
    Query query(database->since);
    query.Bind(1, number);
    return All(query);
}

}  // namespace webconfig::history
