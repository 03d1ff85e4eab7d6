#include "fleet/console/Store.h"

#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <iterator>
#include <system_error>

#include "WebApps/webconfig/util/Digest.h"

namespace fleet::console {

namespace {

using sqlite::Connection;
using sqlite::Query;
using sqlite::Statement;

constexpr std::chrono::seconds busyTimeout{5};
constexpr int schemaVersion = 1;
/// Steps of a rollout change many rows at once, and this is no small box.
constexpr char cache[] = "PRAGMA cache_size=-4096";  // KiB
constexpr std::size_t idBytes = 4;
constexpr char idName[] = "id";

// By State, and by RolloutState.
constexpr char const *stateNames[] = {"waiting",  "sent",    "trial",  "done",   "kept",
                                      "returned", "refused", "failed", "silent", "withdrawn"};
constexpr char const *rolloutStateNames[] = {"running", "paused", "stopped", "done", "taken_back", "ended"};
static_assert(std::size(stateNames) == states);

constexpr char tables[] =
    "CREATE TABLE value(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE tag(device TEXT NOT NULL, tag TEXT NOT NULL, PRIMARY KEY(device, tag)) WITHOUT ROWID;"
    "CREATE TABLE note(device TEXT PRIMARY KEY, note TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE change("
    "  number INTEGER PRIMARY KEY AUTOINCREMENT,"
    "  device TEXT NOT NULL, who TEXT NOT NULL, time INTEGER NOT NULL, patch TEXT NOT NULL,"
    "  based_on TEXT NOT NULL, restart INTEGER NOT NULL, rollout INTEGER NOT NULL, wave INTEGER NOT NULL,"
    "  state INTEGER NOT NULL, expires INTEGER NOT NULL, before TEXT NOT NULL, code TEXT NOT NULL,"
    "  message TEXT NOT NULL, refused TEXT NOT NULL);"
    "CREATE INDEX change_of_device ON change(device, number) WHERE expires > 0;"
    "CREATE INDEX change_of_rollout ON change(rollout, wave, state, expires);"
    "CREATE INDEX open_change ON change(number) WHERE state < 3 AND expires > 0;"
    "CREATE INDEX silent_change ON change(expires) WHERE state = 8;"
    "CREATE TABLE rollout("
    "  number INTEGER PRIMARY KEY AUTOINCREMENT,"
    "  title TEXT NOT NULL, who TEXT NOT NULL, why TEXT NOT NULL, time INTEGER NOT NULL,"
    "  state INTEGER NOT NULL, reason TEXT NOT NULL, patch TEXT NOT NULL, restart INTEGER NOT NULL,"
    "  canaries INTEGER NOT NULL, wave INTEGER NOT NULL, failing INTEGER NOT NULL, patience INTEGER NOT NULL,"
    "  settle INTEGER NOT NULL, wave_now INTEGER NOT NULL, waves INTEGER NOT NULL, selection TEXT NOT NULL,"
    "  takes_back INTEGER NOT NULL, forgiven INTEGER NOT NULL, forgiven_of INTEGER NOT NULL);"
    "CREATE INDEX unfinished_rollout ON rollout(number) WHERE state < 3;"
    "CREATE INDEX taking_back ON rollout(takes_back) WHERE takes_back > 0;"
    "CREATE TABLE log(rollout INTEGER NOT NULL, time INTEGER NOT NULL, who TEXT NOT NULL, text TEXT NOT "
    "NULL);"
    "CREATE INDEX log_of_rollout ON log(rollout);";

#define CHANGE                                                                                           \
    "number, device, who, time, patch, based_on, restart, rollout, wave, state, expires, before, code, " \
    "message, refused"
#define ROLLOUT                                                                                         \
    "number, title, who, why, time, state, reason, patch, restart, canaries, wave, failing, patience, " \
    "settle, wave_now, waves, selection, takes_back, forgiven, forgiven_of"

void Prepare(Connection const &connection) {
    sqlite::MakeTables(connection, schemaVersion, tables);
}

/// Reads the columns of a row from left to right.
class Columns {
  public:
    explicit Columns(Query const &query) : _query(query) {}
    template <typename T>
    Columns &operator>>(T &value) {
        if constexpr (std::is_same_v<T, std::string>)
            value = _query.Bytes(_next++);
        else
            value = static_cast<T>(_query.Number(_next++));
        return *this;
    }

  private:
    Query const &_query;
    int _next = 0;
};

ChangeRow ChangeIn(Query const &query) {
    ChangeRow row;
    Columns(query) >> row.number >> row.device >> row.who >> row.time >> row.patch >> row.based_on >>
        row.restart >> row.rollout >> row.wave >> row.state >> row.expires >> row.before >> row.code >>
        row.message >> row.refused;
    return row;
}

RolloutRow RolloutIn(Query const &query) {
    RolloutRow row;
    Columns(query) >> row.number >> row.title >> row.who >> row.why >> row.time >> row.state >> row.reason >>
        row.patch >> row.restart >> row.canaries >> row.wave >> row.limit >> row.patience >> row.settle >>
        row.wave_now >> row.waves >> row.selection >> row.takes_back >> row.forgiven >> row.forgivenOf;
    return row;
}

template <typename T>
std::int64_t AsNumber(T value) {
    return static_cast<std::int64_t>(value);
}

template <typename Read>
auto AllOf(Query &query, Read read) {
    std::vector<decltype(read(query))> rows;
    while (query.Step())
        rows.push_back(read(query));
    return rows;
}

template <typename Read>
auto FirstOf(Query &query, Read read) {
    return query.Step() ? std::optional(read(query)) : std::nullopt;
}

std::int64_t NumberOf(Query &query) {
    return query.Step() ? query.Number(0) : 0;
}

std::string MakeId() {
    std::array<char, idBytes> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw std::system_error(errno, std::system_category(), "getrandom");
    return webconfig::util::Hex({bytes.data(), bytes.size()});
}

}  // namespace

char const *NameOf(State state) {
    return stateNames[static_cast<int>(state)];
}

std::optional<State> StateOf(std::string_view name) {
    auto const *const found = std::find(std::begin(stateNames), std::end(stateNames), name);
    if (found == std::end(stateNames))
        return {};
    return static_cast<State>(found - std::begin(stateNames));
}

char const *NameOf(RolloutState state) {
    return rolloutStateNames[static_cast<int>(state)];
}

struct Tables::Statements {
    explicit Statements(std::string const &path)
        : connection(sqlite::OpenDurable(path, busyTimeout, Prepare)) {
        connection.Execute(cache);
    }

    Connection const connection;
    Statement const change{connection, "SELECT " CHANGE " FROM change WHERE number = ?1"};
    Statement const changes{connection, "SELECT " CHANGE
                                        " FROM change WHERE expires > 0 ORDER BY number DESC"
                                        " LIMIT ?2 OFFSET ?1"};
    Statement const changesOfDevice{connection,
                                    "SELECT " CHANGE
                                    " FROM change WHERE expires > 0 AND device = ?3"
                                    " AND (?4 = 0 OR rollout = ?4) ORDER BY number DESC LIMIT ?2 OFFSET ?1"};
    Statement const changesOfRollout{connection, "SELECT " CHANGE
                                                 " FROM change WHERE expires > 0 AND rollout = ?3"
                                                 " ORDER BY number DESC LIMIT ?2 OFFSET ?1"};
    Statement const countChanges{connection, "SELECT count(*) FROM change WHERE expires > 0"};
    Statement const countChangesOfDevice{
        connection,
        "SELECT count(*) FROM change WHERE expires > 0 AND device = ?1 AND (?2 = 0 OR rollout = ?2)"};
    Statement const countAsked{connection, "SELECT count(*) FROM change WHERE rollout = ?1 AND expires > 0"};
    Statement const members{connection, "SELECT " CHANGE
                                        " FROM change WHERE rollout = ?1 AND (?2 < 0 OR state = ?2)"
                                        " ORDER BY number LIMIT ?4 OFFSET ?3"};
    Statement const wave{connection, "SELECT " CHANGE " FROM change WHERE rollout = ?1 AND wave = ?2"};
    Statement const open{connection,
                         "SELECT number, device, state, expires, rollout FROM change"
                         " WHERE state < 3 AND expires > 0 UNION ALL"
                         " SELECT number, device, state, expires, rollout FROM change"
                         " WHERE state = 8 AND expires > ?1"};
    Statement const rollout{connection, "SELECT " ROLLOUT " FROM rollout WHERE number = ?1"};
    Statement const takingBack{connection,
                               "SELECT " ROLLOUT " FROM rollout WHERE takes_back = ?1 AND takes_back > 0"};
    Statement const rollouts{connection,
                             "SELECT " ROLLOUT " FROM rollout ORDER BY number DESC LIMIT ?2 OFFSET ?1"};
    Statement const unfinished{connection, "SELECT " ROLLOUT " FROM rollout WHERE state < 3 ORDER BY number"};
    Statement const countRollouts{connection, "SELECT count(*) FROM rollout"};
    Statement const countMembers{connection,
                                 "SELECT state, count(*) FROM change WHERE rollout = ?1 GROUP BY state"};
    Statement const countUnfinished{
        connection, "SELECT count(*) FROM change WHERE rollout = ?1 AND wave = ?2 AND state < 3"};
    Statement const log{connection, "SELECT time, who, text FROM log WHERE rollout = ?1 ORDER BY rowid"};
    Statement const tags{connection, "SELECT device, tag FROM tag"};
    Statement const note{connection, "SELECT note FROM note WHERE device = ?1"};
    Statement const value{connection, "SELECT value FROM value WHERE name = ?1"};

    Statement const addChange{connection, "INSERT INTO change(" CHANGE
                                          ") VALUES(NULL, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13,"
                                          " ?14, ?15)"};
    Statement const updateChange{connection,
                                 "UPDATE change SET time = ?2, state = ?3, expires = ?4, before = ?5,"
                                 " code = ?6, message = ?7, refused = ?8 WHERE number = ?1"};
    Statement const addRollout{connection, "INSERT INTO rollout(" ROLLOUT
                                           ") VALUES(NULL, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12,"
                                           " ?13, ?14, ?15, ?16, ?17, ?18, ?19, ?20)"};
    Statement const updateRollout{connection,
                                  "UPDATE rollout SET state = ?2, reason = ?3, wave_now = ?4, waves = ?5,"
                                  " forgiven = ?6, forgiven_of = ?7 WHERE number = ?1"};
    Statement const addLog{connection, "INSERT INTO log(rollout, time, who, text) VALUES(?1, ?2, ?3, ?4)"};
    Statement const beginWave{connection,
                              "UPDATE change SET time = ?3, expires = ?4"
                              " WHERE rollout = ?1 AND wave = ?2 AND state < 2"};
    Statement const withdraw{connection,
                             "UPDATE change SET state = 9, time = ?2 WHERE rollout = ?1 AND state = 0"};
    Statement const dropRollouts{connection, "DELETE FROM rollout WHERE state >= 3 AND time < ?1"};
    Statement const dropLogs{connection, "DELETE FROM log WHERE rollout NOT IN (SELECT number FROM rollout)"};
    Statement const dropChanges{connection,
                                "DELETE FROM change WHERE number IN (SELECT number FROM change"
                                " WHERE CASE rollout WHEN 0 THEN state >= 3 AND time < ?1"
                                " ELSE rollout NOT IN (SELECT number FROM rollout) END LIMIT ?2)"};
    Statement const dropTags{connection, "DELETE FROM tag WHERE device = ?1"};
    Statement const addTag{connection, "INSERT OR IGNORE INTO tag(device, tag) VALUES(?1, ?2)"};
    Statement const setNote{connection, "INSERT OR REPLACE INTO note(device, note) VALUES(?1, ?2)"};
    Statement const countValue{connection,
                               "INSERT INTO value(name, value) VALUES(?1, '1')"
                               " ON CONFLICT(name) DO UPDATE SET value = value + 1"};
    Statement const setValue{connection, "INSERT OR REPLACE INTO value(name, value) VALUES(?1, ?2)"};
};

Tables::Tables(std::string const &path) : _statements(std::make_unique<Statements>(path)) {}
Tables::~Tables() = default;

sqlite::Connection const &Tables::Database() const {
    return _statements->connection;
}

std::optional<ChangeRow> Tables::Change(std::int64_t number) const {
    Query query(_statements->change);
    query.Bind(1, number);
    return FirstOf(query, ChangeIn);
}

std::vector<ChangeRow> Tables::Changes(std::string const &device, std::int64_t rollout, std::int64_t offset,
                                       std::int64_t limit) const {
    Query query(!device.empty() ? _statements->changesOfDevice
                : rollout != 0  ? _statements->changesOfRollout
                                : _statements->changes);
    query.Bind(1, offset).Bind(2, limit);
    if (!device.empty())
        query.Bind(3, device).Bind(4, rollout);
    else if (rollout != 0)
        query.Bind(3, rollout);
    return AllOf(query, ChangeIn);
}

std::int64_t Tables::CountChanges(std::string const &device, std::int64_t rollout) const {
    if (device.empty() && rollout != 0)
        return CountAsked(rollout);
    Query query(device.empty() ? _statements->countChanges : _statements->countChangesOfDevice);
    if (!device.empty())
        query.Bind(1, device).Bind(2, rollout);
    return NumberOf(query);
}

std::vector<ChangeRow> Tables::Members(std::int64_t rollout, std::optional<State> state, std::int64_t offset,
                                       std::int64_t limit) const {
    Query query(_statements->members);
    query.Bind(1, rollout).Bind(2, state ? AsNumber(*state) : -1).Bind(3, offset).Bind(4, limit);
    return AllOf(query, ChangeIn);
}

std::vector<ChangeRow> Tables::Wave(std::int64_t rollout, std::int64_t wave) const {
    Query query(_statements->wave);
    query.Bind(1, rollout).Bind(2, wave);
    return AllOf(query, ChangeIn);
}

std::vector<OpenChange> Tables::Open(std::int64_t since) const {
    Query query(_statements->open);
    query.Bind(1, since);
    return AllOf(query, [](Query const &found) {
        OpenChange open;
        Columns(found) >> open.number >> open.device >> open.state >> open.expires >> open.rollout;
        return open;
    });
}

std::optional<RolloutRow> Tables::Rollout(std::int64_t number) const {
    Query query(_statements->rollout);
    query.Bind(1, number);
    return FirstOf(query, RolloutIn);
}

std::optional<RolloutRow> Tables::TakingBack(std::int64_t number) const {
    Query query(_statements->takingBack);
    query.Bind(1, number);
    return FirstOf(query, RolloutIn);
}

std::vector<RolloutRow> Tables::Rollouts(std::int64_t offset, std::int64_t limit) const {
    Query query(_statements->rollouts);
    query.Bind(1, offset).Bind(2, limit);
    return AllOf(query, RolloutIn);
}

std::vector<RolloutRow> Tables::Unfinished() const {
    Query query(_statements->unfinished);
    return AllOf(query, RolloutIn);
}

std::int64_t Tables::CountRollouts() const {
    Query query(_statements->countRollouts);
    return NumberOf(query);
}

Counts Tables::CountMembers(std::int64_t rollout) const {
    Counts counts{};
    Query query(_statements->countMembers);
    query.Bind(1, rollout);
    while (query.Step()) {
        if (auto const state = static_cast<std::size_t>(query.Number(0)); state < counts.size())
            counts[state] = query.Number(1);
    }
    return counts;
}

std::int64_t Tables::CountAsked(std::int64_t rollout) const {
    Query query(_statements->countAsked);
    query.Bind(1, rollout);
    return NumberOf(query);
}

std::int64_t Tables::CountUnfinished(std::int64_t rollout, std::int64_t wave) const {
    Query query(_statements->countUnfinished);
    query.Bind(1, rollout).Bind(2, wave);
    return NumberOf(query);
}

std::vector<LogLine> Tables::Log(std::int64_t rollout) const {
    Query query(_statements->log);
    query.Bind(1, rollout);
    return AllOf(query, [](Query const &found) {
        LogLine line;
        Columns(found) >> line.time >> line.who >> line.text;
        return line;
    });
}

Registry::Tags Tables::AllTags() const {
    Registry::Tags tags;
    for (Query query(_statements->tags); query.Step();)
        tags[std::string(query.Bytes(0))].emplace_back(query.Bytes(1));
    return tags;
}

std::string Tables::Note(std::string const &device) const {
    Query query(_statements->note);
    query.Bind(1, device);
    return query.Step() ? std::string(query.Bytes(0)) : "";
}

std::string Tables::Value(std::string const &name) const {
    Query query(_statements->value);
    query.Bind(1, name);
    return query.Step() ? std::string(query.Bytes(0)) : "";
}

std::int64_t Tables::Add(ChangeRow const &change) {
    Query query(_statements->addChange);
    query.Bind(2, change.device)
        .Bind(3, change.who)
        .Bind(4, change.time)
        .Bind(5, change.patch)
        .Bind(6, change.based_on)
        .Bind(7, AsNumber(change.restart))
        .Bind(8, change.rollout)
        .Bind(9, change.wave)
        .Bind(10, AsNumber(change.state))
        .Bind(11, change.expires)
        .Bind(12, change.before)
        .Bind(13, change.code)
        .Bind(14, change.message)
        .Bind(15, change.refused);
    query.Step();
    return _statements->connection.LastRow();
}

void Tables::Update(ChangeRow const &change) {
    Query query(_statements->updateChange);
    query.Bind(1, change.number)
        .Bind(2, change.time)
        .Bind(3, AsNumber(change.state))
        .Bind(4, change.expires)
        .Bind(5, change.before)
        .Bind(6, change.code)
        .Bind(7, change.message)
        .Bind(8, change.refused);
    query.Step();
}

std::int64_t Tables::Add(RolloutRow const &rollout) {
    Query query(_statements->addRollout);
    query.Bind(2, rollout.title)
        .Bind(3, rollout.who)
        .Bind(4, rollout.why)
        .Bind(5, rollout.time)
        .Bind(6, AsNumber(rollout.state))
        .Bind(7, rollout.reason)
        .Bind(8, rollout.patch)
        .Bind(9, AsNumber(rollout.restart))
        .Bind(10, rollout.canaries)
        .Bind(11, rollout.wave)
        .Bind(12, rollout.limit)
        .Bind(13, rollout.patience)
        .Bind(14, rollout.settle)
        .Bind(15, rollout.wave_now)
        .Bind(16, rollout.waves)
        .Bind(17, rollout.selection)
        .Bind(18, rollout.takes_back)
        .Bind(19, rollout.forgiven)
        .Bind(20, rollout.forgivenOf);
    query.Step();
    return _statements->connection.LastRow();
}

void Tables::Update(RolloutRow const &rollout) {
    Query query(_statements->updateRollout);
    query.Bind(1, rollout.number)
        .Bind(2, AsNumber(rollout.state))
        .Bind(3, rollout.reason)
        .Bind(4, rollout.wave_now)
        .Bind(5, rollout.waves)
        .Bind(6, rollout.forgiven)
        .Bind(7, rollout.forgivenOf);
    query.Step();
}

void Tables::AddLog(std::int64_t rollout, LogLine const &line) {
    Query query(_statements->addLog);
    query.Bind(1, rollout).Bind(2, line.time).Bind(3, line.who).Bind(4, line.text);
    query.Step();
}

void Tables::BeginWave(std::int64_t rollout, std::int64_t wave, std::int64_t now, std::int64_t expires) {
    Query query(_statements->beginWave);
    query.Bind(1, rollout).Bind(2, wave).Bind(3, now).Bind(4, expires);
    query.Step();
}

bool Tables::DropEnded(std::int64_t before, std::int64_t most) {
    Query(_statements->dropRollouts).Bind(1, before).Step();
    Query(_statements->dropLogs).Step();
    Query(_statements->dropChanges).Bind(1, before).Bind(2, most).Step();
    return Database().Changes() < most;
}

void Tables::Withdraw(std::int64_t rollout, std::int64_t now) {
    Query query(_statements->withdraw);
    query.Bind(1, rollout).Bind(2, now);
    query.Step();
}

void Tables::SetTags(std::string const &device, std::vector<std::string> const &tags) {
    Query drop(_statements->dropTags);
    drop.Bind(1, device);
    drop.Step();
    for (auto const &tag : tags) {
        Query add(_statements->addTag);
        add.Bind(1, device).Bind(2, tag);
        add.Step();
    }
    Query count(_statements->countValue);
    count.Bind(1, tagsName);
    count.Step();
}

void Tables::SetNote(std::string const &device, std::string const &note) {
    Query query(_statements->setNote);
    query.Bind(1, device).Bind(2, note);
    query.Step();
}

void Tables::SetValue(std::string const &name, std::string const &value) {
    Query query(_statements->setValue);
    query.Bind(1, name).Bind(2, value);
    query.Step();
}

Store::Store(std::string const &path) : _write(path), _read(path) {
    sqlite::Transaction transaction(_write.Database());
    _id = _write.Value(idName);
    if (!_id.empty())
        return;
    _id = MakeId();
    _write.SetValue(idName, _id);
    transaction.Commit();
}

std::int64_t Store::NumberIn(std::string_view id) const {
    std::int64_t number = 0;
    if (!id.starts_with(_id + '-'))
        return 0;
    id.remove_prefix(_id.size() + 1);
    auto const [end, error] = std::from_chars(id.data(), id.data() + id.size(), number);
    return error == std::errc() && end == id.data() + id.size() && number > 0 ? number : 0;
}

std::optional<sqlite::Connection::Mark> Store::CommitMark() {
    std::lock_guard const lock(_writeGuard);
    return _write.Database().CommitMark();
}

}  // namespace fleet::console
