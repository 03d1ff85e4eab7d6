#include "sqlite/Sqlite.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

namespace sqlite {

namespace {

constexpr std::chrono::milliseconds retryInterval{10};

/// Write-ahead logging lets readers and a writer work at once, and with full synchronisation a committed
/// write survives a power cut. The sizes keep memory and flash wear small.
constexpr char durable[] =
    "PRAGMA journal_mode=WAL;"
    "PRAGMA synchronous=FULL;"
    "PRAGMA wal_autocheckpoint=64;"
    "PRAGMA journal_size_limit=262144;";

/// The library maps the index of the log in blocks of so many bytes.
constexpr int indexBlock = 32768;

/// The head of the log's index, which all processes share: its counter of commits, sizes, salt and sums. By
/// the same bytes the library tells whether the pages that it keeps still hold. Somebody may be writing it:
/// what is read in between is no head that was there before, nor one that stays. What is read from the file
/// afterwards is never older: the library begins with the same bytes, and no processor reads one twice in the
/// wrong order.
[[gnu::no_sanitize_thread]] Connection::Mark HeadOf(void const volatile *index) {
    auto const *const bytes = static_cast<unsigned char const volatile *>(index);
    Connection::Mark mark{};
    for (std::size_t i = 0; i < mark.size(); ++i)
        mark[i] = bytes[i];
    return mark;
}

bool WritesAhead(sqlite3 *database) {
    Statement const statement(database, "PRAGMA journal_mode");
    Query query(statement);
    return query.Step() && query.Bytes(0) == "wal";
}

[[noreturn]] void Throw(sqlite3 *database, int code) {
    throw Error(code, database ? sqlite3_errmsg(database) : sqlite3_errstr(code));
}

/// The library creates files readable by everyone, and the store holds passwords. Only a file that this
/// call creates is opened and closed here: closing another one would drop the library's locks on it.
void CreatePrivately(std::string const &path) {
    int const file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0)
        ::close(file);
}

bool HoldsAnything(std::string const &path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && info.st_size > 0;
}

/// \a path as a part of an URI.
std::string UriPath(std::string const &path) {
    std::string result;
    for (char const c : path)
        result += c == '%' ? "%25" : c == '?' ? "%3f" : c == '#' ? "%23" : std::string(1, c);
    return result;
}

}  // namespace

Statement::Statement(sqlite3 *database, char const *sql) {
    sqlite3_stmt *statement = nullptr;
    int const code = sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (code != SQLITE_OK)
        Throw(database, code);
    statement_.reset(statement);
}

Query::~Query() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

Query &Query::Bind(int position, std::string_view text) {
    Check(sqlite3_bind_text(statement_, position, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
    return *this;
}

Query &Query::BindBytes(int position, std::string_view bytes) {
    // A null pointer would bind NULL instead of no bytes.
    char const *const data = bytes.empty() ? "" : bytes.data();
    Check(sqlite3_bind_blob(statement_, position, data, static_cast<int>(bytes.size()), SQLITE_STATIC));
    return *this;
}

Query &Query::Bind(int position, std::int64_t number) {
    Check(sqlite3_bind_int64(statement_, position, number));
    return *this;
}

Query &Query::BindNull(int position) {
    Check(sqlite3_bind_null(statement_, position));
    return *this;
}

bool Query::Step() {
    int const code = sqlite3_step(statement_);
    if (code != SQLITE_ROW && code != SQLITE_DONE)
        Throw(sqlite3_db_handle(statement_), code);
    return code == SQLITE_ROW;
}

std::string_view Query::Bytes(int column) const {
    auto const *const data = static_cast<char const *>(sqlite3_column_blob(statement_, column));
    return {data, data ? static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)) : 0};
}

void Query::Check(int code) const {
    if (code != SQLITE_OK)
        Throw(sqlite3_db_handle(statement_), code);
}

Connection::Connection(std::string const &path, int busyTimeoutMs) {
    CreatePrivately(path);
    Open(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    // Where the library cannot make the file that it shares with other processes, on a read-only file system,
    // nobody else writes: the file may be read as one that never changes.
    if (IsReadOnly() && !CanRead() && !HoldsAnything(path + "-wal"))
        Open("file:" + UriPath(path) + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    // What the library takes for speed on a desk is better spent elsewhere on a small device.
    sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_LOOKASIDE, nullptr, 0, 0);
    sqlite3_busy_timeout(handle_.get(), busyTimeoutMs);
}

void Connection::Open(std::string const &name, int flags) {
    sqlite3 *handle = nullptr;
    // Calls are serialised by the owner, so the library need not do it again.
    flags |= SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    int const code = sqlite3_open_v2(name.c_str(), &handle, flags, nullptr);
    handle_.reset(handle);
    if (code != SQLITE_OK)
        Throw(handle, code);
}

bool Connection::CanRead() const {
    return sqlite3_exec(handle_.get(), "PRAGMA schema_version", nullptr, nullptr, nullptr) == SQLITE_OK;
}

void Connection::Execute(char const *sql) const {
    int const code = sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        Throw(handle_.get(), code);
}

bool Connection::IsReplaced() const {
    int moved = 0;
    sqlite3_file_control(handle_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
}

std::optional<Connection::Mark> Connection::CommitMark() const {
    sqlite3_file *file = nullptr;
    void volatile *index = nullptr;
    if (!hasLog_ ||
        sqlite3_file_control(handle_.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        file->pMethods->xShmMap(file, 0, indexBlock, 0, &index) != SQLITE_OK || !index)
        return {};
    return HeadOf(index);
}

Transaction::~Transaction() {
    if (!committed_)
        sqlite3_exec(connection_, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::Commit() {
    connection_.Execute("COMMIT");
    committed_ = true;
}

void MakeTables(Connection const &connection, int version, char const *sql) {
    int found = 0;  // as in a file that is new
    {
        Statement const statement(connection, "PRAGMA user_version");
        Query query(statement);
        if (query.Step())
            found = static_cast<int>(query.Number(0));
    }
    if (found > version)
        throw Error(SQLITE_ERROR, "the file was written by a newer version");
    if (found == version)
        return;
    Transaction transaction(connection);
    connection.Execute(sql);
    connection.Execute(("PRAGMA user_version=" + std::to_string(version)).c_str());
    transaction.Commit();
}

Connection OpenDurable(std::string const &path, std::chrono::milliseconds timeout,
                       void (*prepare)(Connection const &)) {
    std::error_code ignored;  // opening the file tells the reason
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    auto const deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        try {
            Connection connection(path, static_cast<int>(timeout.count()));
            connection.Execute("PRAGMA cache_size=-128;");
            if (!connection.IsReadOnly())
                connection.Execute(durable);
            prepare(connection);
            connection.hasLog_ = !connection.IsReadOnly() && WritesAhead(connection);
            return connection;
        } catch (Error const &error) {
            // To switch a file that another process is opening to write-ahead logging fails at once.
            if (!error.IsBusy() || std::chrono::steady_clock::now() >= deadline)
                throw;
        }
        std::this_thread::sleep_for(retryInterval);
    }
}

}  // namespace sqlite
