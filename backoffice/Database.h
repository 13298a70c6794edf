#pragma once
// The back office's SQLite database: one connection to its file, prepared statements that bind
// values as parameters, and write transactions. Every connection is set up the same way: WAL
// journal (readers never wait for the writer), synchronous=NORMAL, foreign keys on, and a busy
// timeout so that a second program on the same back office waits instead of failing.
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <string_view>
#include <unordered_map>
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

// The connection taken by one of its users, the run's thread or the group's watch (see
// Database::BeginGroup), from its start to End() or its end; a use may nest in another of the
// same thread. The outermost use of the run's thread first commits a group that is due, unless
// a record is held.
class ConnectionUse {
public:
    explicit ConnectionUse(const Database& database, bool commitDueGroup = true);
    ~ConnectionUse() { End(); }
    ConnectionUse(const ConnectionUse&) = delete;
    ConnectionUse& operator=(const ConnectionUse&) = delete;
    // Lets the connection go now.
    void End();

private:
    const Database& database_;
    bool taken_ = false;
};

// A prepared statement the connection keeps for its text, and whether a Statement uses it now.
struct KeptStatement {
    sqlite3_stmt* statement = nullptr;
    bool inUse = false;
};

// One prepared statement. Values are bound by position (1-based in SQL, 0-based here).
// Preparing is most of what a short statement costs, so the connection keeps the statements it
// prepared: a Statement of a text used before takes the prepared one back, reset and unbound,
// and gives it back when it ends. Two Statements of the same text alive at once each have
// their own.
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
    // The same for values of their own types (whole numbers, reals, booleans, texts, dates),
    // bound directly: a save binds hundreds of thousands of values, and making each a general
    // value first, in a vector of its own, cost as much as SQLite's own binding.
    template <typename... Values>
    Statement& BindValues(const Values&... values) {
        ExpectValues(static_cast<int>(sizeof...(Values)));
        int position = 0;
        (BindValue(position++, values, Copy::Yes), ...);
        return *this;
    }
    // Binds the values as BindValues does, runs the statement to its end, resets it and unbinds
    // them, so it is ready for the next values. The texts are not copied: they outlive the run.
    template <typename... Values>
    void RunWith(const Values&... values) {
        ExpectValues(static_cast<int>(sizeof...(Values)));
        int position = 0;
        (BindValue(position++, values, Copy::No), ...);
        RunAndUnbind();
    }
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
    // Whether SQLite keeps its own copy of a bound text, or uses the caller's while it runs.
    enum class Copy { No, Yes };
    void ExpectValues(int count) const;
    void BindValue(int position, std::int32_t value, Copy);
    void BindValue(int position, std::int64_t value, Copy);
    void BindValue(int position, double value, Copy);
    void BindValue(int position, bool value, Copy);
    void BindValue(int position, const char* value, Copy copy);
    void BindValue(int position, const std::string& value, Copy copy);
    void BindValue(int position, const DateTime& value, Copy);
    void BindValue(int position, const Variant& value, Copy) { Bind(position, value); }
    // A bind refused by SQLite, in the user's terms.
    void CheckBound(int rc);
    void RunAndUnbind();

    const Database& database_;
    // The connection is this statement's from its start to its end.
    ConnectionUse use_;
    sqlite3_stmt* statement_ = nullptr;
    // The connection's kept statement this one is, or null when it was prepared for this use
    // alone (then `sql_` holds its text, for the keeping when it ends).
    KeptStatement* kept_ = nullptr;
    std::string sql_;
    // Reset and unbound since its last run (RunWith): given back as it is.
    bool clean_ = true;
    // Its runs end what kept look-ups stand for (see Database::ReadStamp).
    bool changesSchema_ = false;
};

// Settings of the SQLite library that hold for the whole process, made once before the first
// connection: every back-office connection and the bench's write floor open through them.
// False when SQLite was already started (by another part of the process) and kept its own.
bool ConfigureSqlite();
// A record's savepoint journal (the pages it changes, as they were) is kept in memory up to
// this size, in one allocation, and in a temporary file beyond it. Kept in memory in pieces of
// 1 KB instead (temp_store=MEMORY), it cost an allocation and a free per KB: a fifth of the
// back office's processor time in an import.
inline constexpr int kJournalInMemoryBytes = 1 << 20;

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
    // Runs one statement of fixed text through the connection's kept prepared statements: for
    // text run again and again, which Exec would compile every time.
    void Run(std::string_view sql);
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

    // Group commit, for a run that saves many records one after another: from BeginGroup on,
    // each record's transaction (TransactionKind::Record) is a savepoint inside one write
    // transaction, which is committed once it holds `records` records or is `milliseconds`
    // old, and by CommitGroup and EndGroup. A record is still all or nothing, and a record that
    // fails leaves the ones before it saved. Any other write commits the group first, so that
    // it stands on its own. When a group cannot be committed, what it held is lost: that
    // commit fails with a message saying so, and so does every later write of the connection,
    // so that nothing written after it (an import's dates, say) claims what was not stored.
    //
    // The open group holds the back office's write lock, which another program waits for. So a
    // group that is `milliseconds` old is committed without waiting for the next record: at
    // the end of the record being saved, at the connection's next use, or, while the run is
    // away from the back office (reading a restaurant, waiting for its server), by a watch of
    // the connection's own once the run has left it alone for kIdleBeforeWatchMilliseconds.
    void BeginGroup(int records, int milliseconds);
    void CommitGroup();
    void EndGroup();
    bool Grouping() const { return group_.active; }
    // Whether records share their commits: grouping, more than one record to a group.
    bool SharesCommits() const { return group_.active && group_.mostRecords > 1; }

    // How long a write of this connection waits for another program's lock from now on, and
    // what it calls, about every ten seconds, while it waits (seconds waited, most seconds it
    // will wait). A run has time to wait for a back-office job where a command has not.
    void SetBusyWait(int milliseconds, std::function<void(int, int)> waiting);

    // How long the run must have left the connection alone before the group's watch commits a
    // group that is due (a record held for a refund that may follow is ended with it): long
    // enough that the watch never steps in between the reads and the writes of one save.
    static constexpr int kIdleBeforeWatchMilliseconds = 100;

    // Tables whose look-ups are kept between uses (see KeptReads), as a set for ReadStamp.
    using WatchedTables = std::uint64_t;
    WatchedTables WatchTables(const std::vector<std::string_view>& tables) const;
    // A look-up of `tables` read at one stamp still holds while the stamp stays the same: within
    // one write transaction of this connection (no other program writes before it ends), until
    // the transaction commits or rolls back (to a savepoint too), the connection runs fixed SQL
    // (Exec), or it changes a row of one of the tables. 0 when no write transaction is open:
    // what is read then may change under the next read, and is not kept.
    std::uint64_t ReadStamp(WatchedTables tables) const;

    // Whether a record's transaction is held open under `tag` (see Transaction::Hold).
    bool HoldsRecord(std::int64_t tag) const { return held_.active && held_.tag == tag; }
    // Ends the held record, if any: runs what its holder asked to be done at its end, inside
    // it, and commits it (or, in a group, releases its savepoint). Every write of the
    // connection, and the group's commits, do this first.
    void ReleaseHeld();

private:
    friend class Statement;
    friend class Transaction;
    friend class ConnectionUse;
    // Whether the open group is as old as a group may be.
    bool GroupDue() const;
    // The watch's loop: commits a due group while the run leaves the connection alone.
    void WatchGroup();
    void StopWatch();
    // Opens the group's write transaction when none is open (a record is about to be saved).
    void OpenGroup();
    // A record of the group was saved: commits when the group is due.
    void RecordSaved();
    // Commits the open group, if any. When the commit fails and the group held more than the
    // `callersRecords` records of the caller itself, what it lost is kept as the reason to
    // refuse every later write.
    void CommitOpenGroup(int callersRecords);
    // Sizes SQLite's page cache from the file's size (between 32 and 96 MB).
    void FitCacheToFile();
    // Fails when an earlier group could not be committed.
    void RefuseAfterLostGroup() const;
    // The prepared statement kept for the text, marked in use; null when none is kept or the
    // kept one is in use already (a statement used again while it is still open).
    KeptStatement* TakePrepared(std::string_view sql) const;
    // A kept statement's use ended: reset, its values unbound, it waits for the next use.
    void GiveBack(KeptStatement& kept) const noexcept;
    // A statement prepared for one use: kept for its text (reset, its values unbound), or
    // finalised when one is kept already or the keeping is full. Never throws.
    void GiveBack(std::string&& sql, sqlite3_stmt* statement) const noexcept;

    std::filesystem::path file_;
    sqlite3* db_ = nullptr;
    int busyTimeoutMilliseconds_ = kBusyTimeoutMilliseconds;
    std::int64_t cacheKib_ = 0;  // the page cache's size as last set (FitCacheToFile)
    std::function<void(int, int)> busyWaiting_;
    // Who uses the connection now (see ConnectionUse): SQLite's connection is opened for one
    // thread at a time, and the group's state goes with it.
    mutable std::recursive_mutex use_;
    mutable int useDepth_ = 0;
    mutable std::int64_t lastUse_ = 0;  // steady clock, milliseconds: when the last use ended
    // The group's watch, from BeginGroup to EndGroup when records share commits.
    std::thread watch_;
    std::mutex watchMutex_;
    std::condition_variable watchWake_;
    bool watchStop_ = false;
    std::int64_t busySince_ = 0;      // steady clock, milliseconds: when the wait began
    int busyToldSeconds_ = 0;         // when the waiting was last told
    static int OnBusy(void* database, int count);
    // Prepared statements by their text, each used by one Statement at a time. Bounded: texts
    // that carry values (rare here) would otherwise pile up. A statement is looked up once per
    // use and stays where it is: a save issues dozens of statements, and taking each out of
    // the keeping and putting it back cost a node and a second look-up every time.
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>{}(text);
        }
    };
    mutable std::unordered_map<std::string, KeptStatement, TextHash, std::equal_to<>> prepared_;
    // Where the statement of a text was found when the text was last at an address (see
    // TakePrepared): the kept text and statement, whose nodes stay where they are. Emptied
    // when it grows beyond a bound (texts made at run time take new addresses).
    struct KeptText {
        const std::string* text = nullptr;
        KeptStatement* kept = nullptr;
    };
    mutable std::unordered_map<const char*, KeptText> byAddress_;

    // What ReadStamp is made of. Every event that may end what a kept look-up stands for takes
    // the next number: the end of a transaction or of a savepoint (`readsEnded_`), and a change
    // of a watched table's row by this connection (`tableChanged_`, one per watched table).
    mutable std::atomic<std::uint64_t> lastStamp_{1};
    mutable std::atomic<std::uint64_t> readsEnded_{1};
    mutable std::vector<std::string> watched_;
    mutable std::vector<std::uint64_t> tableChanged_;
    struct SeenTable {
        const char* name;  // where SQLite keeps the table's name
        std::string text;
        int slot;          // in watched_, or -1
    };
    mutable std::vector<SeenTable> seenTables_;  // the tables OnRowChanged saw rows of
    mutable int lastAuthorized_ = 0;              // the action OnAuthorize was last asked about
    void EndReads() const { readsEnded_ = ++lastStamp_; }
    static void OnRowChanged(void* database, int operation, const char* schema, const char* table,
                             long long row);
    static int OnCommit(void* database);
    static void OnRollback(void* database);
    static int OnAuthorize(void* database, int action, const char* table, const char*,
                           const char*, const char*);

    struct Group {
        bool active = false;  // between BeginGroup and EndGroup
        bool open = false;    // its write transaction is open
        int records = 0;      // records saved in the open transaction
        int mostRecords = 0;
        int mostMilliseconds = 0;
        std::int64_t openedAt = 0;  // steady clock, milliseconds
        std::string lost;           // why a group could not be committed, once one could not
    } group_;

    // A record whose end is put off until the connection's next write (Transaction::Hold).
    struct Held {
        bool active = false;
        bool savepoint = false;  // a savepoint of the group, else a transaction of its own
        std::int64_t tag = 0;
        std::function<void()> atEnd;
    } held_;
};

// Whether a write transaction saves one record of a run (grouped while the connection groups
// commits) or stands on its own (settings, logs, schema: committed at once, after the group).
enum class TransactionKind { Standalone, Record };

// A write transaction: BEGIN IMMEDIATE takes the write lock at once, so the busy timeout
// covers the whole transaction; a transaction that is not committed is rolled back. A record's
// transaction while the connection groups commits is a savepoint of the group instead.
//
// A record that another may have to join (a document the source refunds is saved, then voided:
// one record for the source) is held instead of committed: it stays open until the
// connection's next write, which ends it first, or until a record of the same tag continues it,
// so that the two are saved together or not at all, also when the process dies between them.
class Transaction {
public:
    explicit Transaction(Database& database, TransactionKind kind = TransactionKind::Standalone);
    // Continues the record held under `tag` when the connection holds it (Continued() tells),
    // else starts a record's transaction as above.
    Transaction(Database& database, std::int64_t heldTag);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();
    // Leaves the record open, held under `tag`; `atEnd` runs inside it when it ends without
    // being continued (it must write with Statements only, never a Transaction of its own).
    void Hold(std::int64_t tag, std::function<void()> atEnd = {});
    bool Continued() const { return continued_; }

private:
    void Begin(TransactionKind kind);

    Database& database_;
    // The connection is the transaction's from its start to its end; a held record lets it go.
    ConnectionUse use_;
    bool open_ = true;
    bool savepoint_ = false;
    bool continued_ = false;
};

// Groups the connection's record commits for as long as it lives (see Database::BeginGroup).
// End() commits and reports a failure; a group left without End() is committed as well, and a
// failure then can only be logged by the connection's next write.
class GroupedCommits {
public:
    GroupedCommits(Database& database, int records, int milliseconds) : database_(database) {
        database_.BeginGroup(records, milliseconds);
    }
    ~GroupedCommits();
    GroupedCommits(const GroupedCommits&) = delete;
    GroupedCommits& operator=(const GroupedCommits&) = delete;
    void End() { database_.EndGroup(); }

private:
    Database& database_;
};

// Double-quoted identifier; the name must be a plain identifier (see IsPlainIdentifier).
std::string QuoteIdentifier(std::string_view name);
// A letter or "_", then letters, digits or "_"; at most 128 characters.
bool IsPlainIdentifier(std::string_view name);

}  // namespace kitra::backoffice
