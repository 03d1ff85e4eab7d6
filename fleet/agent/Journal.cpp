#include "fleet/agent/Journal.h"

#include "sqlite/Sqlite.h"

namespace fleet::agent {

namespace {

using sqlite::Connection;
using sqlite::Query;
using sqlite::Statement;
using sqlite::Transaction;

constexpr std::chrono::seconds busyTimeout{2};
constexpr int schemaVersion = 2;

/// So many are known when they come again.
constexpr std::int64_t mostKept = 300;

#define COLUMNS "number, id, step, message, before, made, tries, result, told, boot"

void Prepare(Connection const &connection) {
    sqlite::MakeTables(connection, schemaVersion,
                       "CREATE TABLE IF NOT EXISTS change("  // as version 1 has it
                       "  number INTEGER PRIMARY KEY AUTOINCREMENT,"
                       "  id TEXT NOT NULL UNIQUE, step INTEGER NOT NULL, message TEXT NOT NULL,"
                       "  before INTEGER NOT NULL, made INTEGER NOT NULL, tries INTEGER NOT NULL,"
                       "  result TEXT NOT NULL, told INTEGER NOT NULL);"
                       "CREATE INDEX IF NOT EXISTS open_change ON change(number) WHERE step < 3;"
                       "CREATE INDEX IF NOT EXISTS untold_change ON change(number) WHERE told = 0;"
                       "ALTER TABLE change ADD COLUMN boot TEXT NOT NULL DEFAULT '';"
                       "CREATE INDEX to_restart ON change(number) WHERE boot <> '';");
}

Entry EntryIn(Query const &query) {
    auto const text = [&query](int column) { return std::string(query.Bytes(column)); };
    return {.number = query.Number(0),
            .id = text(1),
            .step = static_cast<Step>(query.Number(2)),
            .message = text(3),
            .before = query.Number(4),
            .set = query.Number(5),
            .tries = static_cast<int>(query.Number(6)),
            .result = text(7),
            .told = query.Number(8) != 0,
            .boot = text(9)};
}

/// Binds the columns from the step on.
void BindState(Query &query, int position, Entry const &entry) {
    query.Bind(position, static_cast<std::int64_t>(entry.step))
        .Bind(position + 1, entry.message)
        .Bind(position + 2, entry.before)
        .Bind(position + 3, entry.set)
        .Bind(position + 4, entry.tries)
        .Bind(position + 5, entry.result)
        .Bind(position + 6, entry.told ? 1 : 0)
        .Bind(position + 7, entry.boot);
}

}  // namespace

struct Journal::Database {
    explicit Database(std::string const &path)
        : connection(sqlite::OpenDurable(path, busyTimeout, Prepare)) {}

    std::optional<Entry> First(Query &query) const {
        return query.Step() ? std::optional(EntryIn(query)) : std::nullopt;
    }

    Connection const connection;
    Statement const find{connection, "SELECT " COLUMNS " FROM change WHERE id = ?1"};
    Statement const add{connection,
                        "INSERT INTO change(id, step, message, before, made, tries, result, told, boot)"
                        " VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)"};
    Statement const forget{connection,
                           "DELETE FROM change WHERE number <= ?1 AND step = 3 AND told = 1 AND boot = ''"};
    Statement const update{connection,
                           "UPDATE change SET step = ?2, message = ?3, before = ?4, made = ?5, tries = ?6,"
                           " result = ?7, told = ?8, boot = ?9 WHERE number = ?1"};
    Statement const open{connection, "SELECT " COLUMNS " FROM change WHERE step < 3 ORDER BY number"};
    Statement const untold{connection,
                           "SELECT " COLUMNS " FROM change WHERE told = 0 ORDER BY number LIMIT 1"};
    Statement const toRestart{connection,
                              "SELECT " COLUMNS " FROM change WHERE boot <> '' ORDER BY number LIMIT 1"};
    Statement const mark{connection, "UPDATE change SET told = 1 WHERE number = ?1 AND result = ?2"};
    Statement const retell{connection, "UPDATE change SET told = 0 WHERE id = ?1 AND result <> ''"};
};

Journal::Journal(std::string const &path) : _database(std::make_unique<Database>(path)) {}
Journal::~Journal() = default;

std::optional<Entry> Journal::Find(std::string const &id) const {
    Query query(_database->find);
    query.Bind(1, id);
    return _database->First(query);
}

void Journal::Add(Entry const &entry) {
    Transaction transaction(_database->connection);
    Query add(_database->add);
    add.Bind(1, entry.id);
    BindState(add, 2, entry);
    add.Step();
    Query forget(_database->forget);
    forget.Bind(1, _database->connection.LastRow() - mostKept);
    forget.Step();
    transaction.Commit();
}

void Journal::Update(Entry const &entry) {
    Query query(_database->update);
    query.Bind(1, entry.number);
    BindState(query, 2, entry);
    query.Step();
}

std::vector<Entry> Journal::Open() const {
    std::vector<Entry> entries;
    for (Query query(_database->open); query.Step();)
        entries.push_back(EntryIn(query));
    return entries;
}

std::optional<Entry> Journal::Untold() const {
    Query query(_database->untold);
    return _database->First(query);
}

std::optional<Entry> Journal::ToRestart() const {
    Query query(_database->toRestart);
    return _database->First(query);
}

void Journal::MarkTold(std::int64_t number, std::string const &result) {
    Query query(_database->mark);
    query.Bind(1, number).Bind(2, result);
    query.Step();
}

void Journal::Retell(std::string const &id) {
    Query query(_database->retell);
    query.Bind(1, id);
    query.Step();
}

}  // namespace fleet::agent
