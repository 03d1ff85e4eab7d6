#pragma once

#include <sqlite3.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sqlite {

/// A failure of the database, with its reason.
class Error : public std::runtime_error {
  public:
    Error(int code, std::string const &reason) : std::runtime_error(reason), code_(code) {}
    /// Whether another process was in the way.
    bool IsBusy() const { return (code_ & 0xff) == SQLITE_BUSY; }

  private:
    int code_;
};

/// A prepared statement, kept for reuse and run through a Query.
class Statement {
  public:
    Statement(sqlite3 *database, char const *sql);

  private:
    friend class Query;
    struct Finalize {
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

/// One run of a statement: bind, step, read; the statement is free again at the end of the run.
/// Bound texts must outlive the run. All operations throw Error.
class Query {
  public:
    explicit Query(Statement const &statement) : statement_(statement.statement_.get()) {}
    ~Query();
    Query(Query const &) = delete;
    Query &operator=(Query const &) = delete;

    Query &Bind(int position, std::string_view text);
    Query &BindBytes(int position, std::string_view bytes);
    Query &Bind(int position, std::int64_t number);
    Query &BindNull(int position);

    /// Moves to the next row; false when there is none.
    bool Step();

    std::int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }
    bool IsNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
    /// Valid until the next Step().
    std::string_view Bytes(int column) const;

  private:
    void Check(int code) const;

    sqlite3_stmt *statement_;
};

/// An open database file.
class Connection {
  public:
    /// Opens, or creates readable by its owner only, the file at \a path. One that is write-protected can be
    /// read.
    Connection(std::string const &path, int busyTimeoutMs);

    operator sqlite3 *() const { return handle_.get(); }
    /// Runs statements that take no arguments and give no result.
    void Execute(char const *sql) const;
    /// Number of rows the last statement changed.
    int Changes() const { return sqlite3_changes(handle_.get()); }
    /// The number that the last inserted row got.
    std::int64_t LastRow() const { return sqlite3_last_insert_rowid(handle_.get()); }
    /// Whether the file is no longer the one at the path it was opened by.
    bool IsReplaced() const;
    /// Whether the file was write-protected when it was opened.
    bool IsReadOnly() const { return sqlite3_db_readonly(handle_.get(), "main") == 1; }
    void ReleaseMemory() const { sqlite3_db_release_memory(handle_.get()); }

    /// What each commit changes, whoever makes it.
    using Mark = std::array<unsigned char, 48>;
    /// The present one, which costs no system call: what was read since it was the same is still so. None
    /// where the file has no write-ahead log.
    std::optional<Mark> CommitMark() const;

  private:
    friend Connection OpenDurable(std::string const &path, std::chrono::milliseconds timeout,
                                  void (*prepare)(Connection const &));
    void Open(std::string const &name, int flags);
    bool CanRead() const;

    struct Close {
        void operator()(sqlite3 *handle) const { sqlite3_close_v2(handle); }
    };
    std::unique_ptr<sqlite3, Close> handle_;
    bool hasLog_ = false;
};

/// A write transaction, rolled back unless committed.
class Transaction {
  public:
    explicit Transaction(Connection const &connection) : connection_(connection) {
        connection_.Execute("BEGIN IMMEDIATE");
    }
    ~Transaction();
    Transaction(Transaction const &) = delete;
    Transaction &operator=(Transaction const &) = delete;

    void Commit();

  private:
    Connection const &connection_;
    bool committed_ = false;
};

/// Runs \a sql, which makes the tables of a file, unless it has them in this \a version (from 1 up) already.
/// Refuses a file that a newer version of the program has written.
void MakeTables(Connection const &connection, int version, char const *sql);

/// Opens the file at \a path, and its folder where that is missing, for writes that survive a power cut, and
/// lets \a prepare make its tables. Readers and a writer work at once, and memory and wear of the flash stay
/// small. Waits \a timeout for other processes, here and later.
Connection OpenDurable(std::string const &path, std::chrono::milliseconds timeout,
                       void (*prepare)(Connection const &));

}  // namespace sqlite
