#pragma once
// The back office's SQLite database: one connection to its file, prepared statements that bind
// values as parameters, and write transactions. Every connection is set up the same way: WAL
// journal (readers never wait for the writer), synchronous=NORMAL, foreign keys on, and a busy
// timeout so that a second program on the same back office waits instead of failing.
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "ado/Recordset.h"
#include "core/Error.h"
#include "core/Variant.h"

struct sqlite3;
struct sqlite3_stmt;

namespace kitra::backoffice {

// How long a connection waits for another program's write lock before it gives up: 30 s. A
// back-office user's ordinary transaction (saving a document, a change of prices, a compaction
// of a shop's file) holds the lock for well under a second, so 30 s covers it with a wide margin
// while a lock that is never let go still ends in a clear message instead of a hang.
inline constexpr int kBusyTimeoutMilliseconds = 30000;

// The busy timeout in force: $KITRA_HOST_BUSY_TIMEOUT_MS when it holds a whole number of
// milliseconds (for tests and for sites with unusually long back-office jobs), else the above.
int BusyTimeoutMilliseconds();

// Whether an SQLite result code says another connection holds the lock that was needed.
bool IsLockedByAnother(int sqliteCode);

class Database;

// One prepared statement. Values are bound by position (1-based in SQL, 0-based here).
class Statement {
public:
    Statement(const Database& database, std::string_view sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    // Binds the values to the placeholders in order; a dates goes in as "yyyy-mm-dd hh:mm:ss",
    // a boolean as 0 or 1, Empty and Null as NULL.
    Statement& Bind(const std::vector<Variant>& values);
    Statement& Bind(int position, const Variant& value);
    // Runs to the next row: true when there is one, false when the statement is done.
    bool Step();
    // Runs to the end, discarding any rows.
    void Run();
    void Reset();

    int ColumnCount() const;
    std::string ColumnName(int column) const;
    // The current row's value. Columns declared DATETIME come back as dates, BOOLEAN as
    // booleans, integers as 32-bit integers when they fit.
    Variant Column(int column) const;
    std::string ColumnText(int column) const;
    bool ColumnIsNull(int column) const;

    // Every remaining row, as a recordset.
    ado::Recordset ReadAll();

private:
    const Database& database_;
    sqlite3_stmt* statement_ = nullptr;
    std::string sql_;
};

class Database {
public:
    enum class OpenMode {
        Existing,  // the file must exist
        CreateNew  // the file must not exist; it is created
    };

    Database(const std::filesystem::path& file, OpenMode mode);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    const std::filesystem::path& File() const { return file_; }
    sqlite3* Handle() const { return db_; }

    // Runs fixed SQL text (one or more statements) that carries no values.
    void Exec(std::string_view sql);
    long Changes() const;
    // The key of the row the last INSERT on this connection added.
    std::int64_t LastInsertKey() const;

    // Waits for the write lock as any write would (the busy timeout), and lets it go at once: a
    // back office that another program keeps locked is reported before work starts whose every
    // write would otherwise fail on its own.
    void EnsureWritable();

    // The schema version kept in the file (PRAGMA user_version); the upgrade scripts set it.
    int UserVersion() const;

    // An Error that carries SQLite's own message for the last failure on this connection; when
    // the failure is another program's lock or a full disk, the message says so in the user's
    // terms.
    Error Failure(int code, std::string_view doing) const;

private:
    std::filesystem::path file_;
    sqlite3* db_ = nullptr;
    int busyTimeoutMilliseconds_ = kBusyTimeoutMilliseconds;
};

// A write transaction: BEGIN IMMEDIATE takes the write lock at once, so the busy timeout
// covers the whole transaction; a transaction that is not committed is rolled back.
class Transaction {
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();

private:
    Database& database_;
    bool open_ = true;
};

// Double-quoted identifier; the name must be a plain identifier (see IsPlainIdentifier).
std::string QuoteIdentifier(std::string_view name);
// A letter or "_", then letters, digits or "_"; at most 128 characters.
bool IsPlainIdentifier(std::string_view name);

}  // namespace kitra::backoffice
