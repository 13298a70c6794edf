#include "backoffice/Database.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <utility>

#include <fmt/format.h>

#include "core/DateTime.h"
#include "core/Environment.h"
#include "core/Text.h"

namespace kitra::backoffice {
namespace {

std::string UpperCase(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper;
}

// How a value read from a column should be typed, from the column's declared type.
enum class DeclaredKind { Other, Date, Boolean };

DeclaredKind KindOf(const char* declaredType) {
    if (declaredType == nullptr) return DeclaredKind::Other;
    const std::string upper = UpperCase(declaredType);
    if (upper == "DATETIME" || upper == "DATE") return DeclaredKind::Date;
    if (upper == "BOOLEAN") return DeclaredKind::Boolean;
    return DeclaredKind::Other;
}

// The message of a failure caused by another program's lock, with SQLite's own words after it.
std::string LockedMessage(const std::filesystem::path& file, int waitedMilliseconds,
                          std::string_view detail) {
    return fmt::format(
        "A retaguarda '{}' está bloqueada por outro programa: esperou {} s que ele terminasse a "
        "escrita e desistiu. Feche ou deixe terminar esse programa e tente de novo. ({})",
        file.string(), waitedMilliseconds / 1000.0, detail);
}

// The message of a write that found no room on the back office's disk.
std::string FullMessage(const std::filesystem::path& file, std::string_view detail) {
    return fmt::format(
        "Não há espaço no disco da retaguarda '{}': a escrita não foi feita. Liberte espaço nesse "
        "disco e tente de novo. ({})",
        file.string(), detail);
}

bool IsDiskFull(int sqliteCode) { return (sqliteCode & 0xff) == SQLITE_FULL; }

std::int64_t SteadyMilliseconds() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace

int BusyTimeoutMilliseconds() {
    return static_cast<int>(
        WholeNumberFromEnvironment("KITRA_HOST_BUSY_TIMEOUT_MS", kBusyTimeoutMilliseconds, 0, INT_MAX));
}

bool IsLockedByAnother(int sqliteCode) {
    const int primary = sqliteCode & 0xff;
    return primary == SQLITE_BUSY || primary == SQLITE_LOCKED;
}

// ---------------------------------------------------------------- ConnectionUse

ConnectionUse::ConnectionUse(const Database& database, bool commitDueGroup) : database_(database) {
    database_.use_.lock();
    taken_ = true;
    if (database_.useDepth_++ != 0 || !commitDueGroup) return;
    // The run is back at the connection with a group that is due: the lock goes before
    // anything else is done. A record held for a refund that may follow is left to its refund
    // (or to the watch); a commit that fails is kept as the reason the next write fails.
    Database& connection = const_cast<Database&>(database_);
    if (connection.held_.active || !connection.GroupDue()) return;
    try {
        connection.CommitOpenGroup(0);
    } catch (...) {
    }
}

void ConnectionUse::End() {
    if (!taken_) return;
    taken_ = false;
    if (--database_.useDepth_ == 0) database_.lastUse_ = SteadyMilliseconds();
    database_.use_.unlock();
}

// ---------------------------------------------------------------- Statement

namespace {

// Whether the statement changes the schema (CREATE, DROP, ALTER): what was read before may then
// no longer be there, with no row changed.
bool ChangesSchema(sqlite3_stmt* statement) {
    if (sqlite3_stmt_readonly(statement)) return false;
    const char* text = sqlite3_sql(statement);
    while (text != nullptr && std::isspace(static_cast<unsigned char>(*text))) ++text;
    if (text == nullptr) return false;
    for (const char* keyword : {"CREATE", "DROP", "ALTER"}) {
        const std::size_t size = std::strlen(keyword);
        if (sqlite3_strnicmp(text, keyword, static_cast<int>(size)) == 0 &&
            !std::isalnum(static_cast<unsigned char>(text[size])) && text[size] != '_')
            return true;
    }
    return false;
}

}  // namespace

Statement::Statement(const Database& database, std::string_view sql)
    : database_(database), use_(database) {
    kept_ = database_.TakePrepared(sql);
    if (kept_ != nullptr) {
        statement_ = kept_->statement;
        changesSchema_ = ChangesSchema(statement_);
        return;
    }
    sql_ = sql;
    const char* tail = nullptr;
    const int rc = sqlite3_prepare_v2(database_.Handle(), sql_.data(),
                                      static_cast<int>(sql_.size()), &statement_, &tail);
    if (rc != SQLITE_OK) throw database_.Failure(rc, "preparar a instrução");
    if (statement_ == nullptr) throw Error("A instrução SQL está vazia.");
    // One statement per call: anything after the first (other than blanks and ";") would be
    // silently ignored by SQLite, so it is refused instead.
    for (const char* p = tail; p != nullptr && *p != '\0'; ++p) {
        if (!std::isspace(static_cast<unsigned char>(*p)) && *p != ';') {
            sqlite3_finalize(statement_);
            statement_ = nullptr;
            throw Error("Só é aceite uma instrução SQL de cada vez.");
        }
    }
    changesSchema_ = ChangesSchema(statement_);
}

Statement::~Statement() {
    if (kept_ != nullptr) {
        if (clean_) {
            kept_->inUse = false;
            return;
        }
        database_.GiveBack(*kept_);
    } else if (statement_ != nullptr) {
        database_.GiveBack(std::move(sql_), statement_);
    }
}

Statement& Statement::Bind(const std::vector<Variant>& values) {
    const int expected = sqlite3_bind_parameter_count(statement_);
    if (expected != static_cast<int>(values.size())) {
        throw Error(fmt::format("A instrução espera {} valores e recebeu {}.", expected,
                                values.size()));
    }
    for (std::size_t i = 0; i < values.size(); ++i) Bind(static_cast<int>(i), values[i]);
    return *this;
}

Statement& Statement::Bind(int position, const Variant& value) {
    clean_ = false;
    const int index = position + 1;
    int rc = SQLITE_OK;
    switch (value.GetType()) {
        case Variant::Type::Empty:
        case Variant::Type::Null:
            rc = sqlite3_bind_null(statement_, index);
            break;
        case Variant::Type::Integer:
        case Variant::Type::Long:
            rc = sqlite3_bind_int(statement_, index, value.ToInt32());
            break;
        case Variant::Type::Boolean:
            rc = sqlite3_bind_int(statement_, index, value.ToBool() ? 1 : 0);
            break;
        case Variant::Type::Double:
            rc = sqlite3_bind_double(statement_, index, value.ToDouble());
            break;
        case Variant::Type::Date: {
            const std::string text = FormatIsoDateTime(value.ToDate());
            rc = sqlite3_bind_text(statement_, index, text.data(), static_cast<int>(text.size()),
                                   SQLITE_TRANSIENT);
            break;
        }
        case Variant::Type::String: {
            const std::string& text = *value.AsString();
            rc = sqlite3_bind_text(statement_, index, text.data(), static_cast<int>(text.size()),
                                   SQLITE_TRANSIENT);
            break;
        }
    }
    if (rc != SQLITE_OK) throw database_.Failure(rc, "associar um valor à instrução");
    return *this;
}

void Statement::ExpectValues(int count) const {
    const int expected = sqlite3_bind_parameter_count(statement_);
    if (expected != count)
        throw Error(fmt::format("A instrução espera {} valores e recebeu {}.", expected, count));
}

void Statement::CheckBound(int rc) {
    clean_ = false;
    if (rc != SQLITE_OK) throw database_.Failure(rc, "associar um valor à instrução");
}

void Statement::BindValue(int position, std::int32_t value, Copy) {
    CheckBound(sqlite3_bind_int(statement_, position + 1, value));
}

void Statement::BindValue(int position, std::int64_t value, Copy) {
    CheckBound(sqlite3_bind_int64(statement_, position + 1, value));
}

void Statement::BindValue(int position, double value, Copy) {
    CheckBound(sqlite3_bind_double(statement_, position + 1, value));
}

void Statement::BindValue(int position, bool value, Copy) {
    CheckBound(sqlite3_bind_int(statement_, position + 1, value ? 1 : 0));
}

void Statement::BindValue(int position, const char* value, Copy copy) {
    CheckBound(sqlite3_bind_text(statement_, position + 1, value, -1,
                                 copy == Copy::Yes ? SQLITE_TRANSIENT : SQLITE_STATIC));
}

void Statement::BindValue(int position, const std::string& value, Copy copy) {
    CheckBound(sqlite3_bind_text(statement_, position + 1, value.data(),
                                 static_cast<int>(value.size()),
                                 copy == Copy::Yes ? SQLITE_TRANSIENT : SQLITE_STATIC));
}

void Statement::BindValue(int position, const DateTime& value, Copy) {
    const std::string text = FormatIsoDateTime(value);
    CheckBound(sqlite3_bind_text(statement_, position + 1, text.data(),
                                 static_cast<int>(text.size()), SQLITE_TRANSIENT));
}

void Statement::RunAndUnbind() {
    try {
        Run();
    } catch (...) {
        sqlite3_clear_bindings(statement_);
        throw;
    }
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    clean_ = true;
}

bool Statement::Step() {
    clean_ = false;
    const int rc = sqlite3_step(statement_);
    if (changesSchema_) database_.EndReads();
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    // Leave the statement ready for another run and report the real cause.
    const Error failure = database_.Failure(rc, "executar a instrução");
    sqlite3_reset(statement_);
    throw failure;
}

void Statement::Run() {
    while (Step()) {
    }
}

void Statement::Reset() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    clean_ = true;
}

int Statement::ColumnCount() const { return sqlite3_column_count(statement_); }

std::string Statement::ColumnName(int column) const {
    const char* name = sqlite3_column_name(statement_, column);
    return name != nullptr ? name : "";
}

bool Statement::ColumnIsNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::string Statement::ColumnText(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (text == nullptr) return {};
    return std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

Variant Statement::Column(int column) const {
    const DeclaredKind kind = KindOf(sqlite3_column_decltype(statement_, column));
    switch (sqlite3_column_type(statement_, column)) {
        case SQLITE_NULL:
            return Variant::Null();
        case SQLITE_INTEGER: {
            const sqlite3_int64 value = sqlite3_column_int64(statement_, column);
            if (kind == DeclaredKind::Boolean) return Variant(value != 0);
            if (value >= INT32_MIN && value <= INT32_MAX)
                return Variant(static_cast<std::int32_t>(value));
            return Variant(static_cast<double>(value));
        }
        case SQLITE_FLOAT: {
            const double value = sqlite3_column_double(statement_, column);
            if (kind == DeclaredKind::Boolean) return Variant(value != 0);
            return Variant(value);
        }
        default: {
            std::string text = ColumnText(column);
            if (kind == DeclaredKind::Date) {
                if (auto date = ParseIsoDateTime(text)) return Variant(*date);
            }
            return Variant(std::move(text));
        }
    }
}

ado::Recordset Statement::ReadAll() {
    std::vector<std::string> columns;
    for (int c = 0; c < ColumnCount(); ++c) columns.push_back(ColumnName(c));
    std::vector<ado::ResultColumn> values(columns.size());
    while (Step()) {
        for (int c = 0; c < ColumnCount(); ++c) values[static_cast<std::size_t>(c)].Append(Column(c));
    }
    for (ado::ResultColumn& column : values) column.Trim();
    return ado::Recordset::FromColumns(std::move(columns), std::move(values));
}

// ---------------------------------------------------------------- Database

bool ConfigureSqlite() {
    // SQLite counts every allocation for its memory statistics, under a lock, unless told not
    // to before it starts; nothing here reads them. Where another part of the process started
    // SQLite already, both calls are refused: the statistics stay on, and the journals are
    // kept in memory the other way (see Database::Database).
    static const bool configured = [] {
        sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
        return sqlite3_config(SQLITE_CONFIG_STMTJRNL_SPILL, kJournalInMemoryBytes) == SQLITE_OK;
    }();
    return configured;
}

Database::Database(const std::filesystem::path& file, OpenMode mode) : file_(file) {
    std::error_code ignored;
    const bool exists = std::filesystem::exists(file_, ignored);
    if (mode == OpenMode::Existing && !exists)
        throw Error(fmt::format("A base de dados '{}' não existe.", file_.string()));
    if (mode == OpenMode::CreateNew && exists)
        throw Error(fmt::format("A base de dados '{}' já existe.", file_.string()));

    const bool journalsSpill = ConfigureSqlite();
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX |
                      (mode == OpenMode::CreateNew ? SQLITE_OPEN_CREATE : 0);
    // SQLite takes the name in UTF-8 on every platform.
    const std::u8string name = file_.u8string();
    const int rc = sqlite3_open_v2(reinterpret_cast<const char*>(name.c_str()), &db_, flags, nullptr);
    if (rc != SQLITE_OK) {
        const std::string message = db_ != nullptr ? sqlite3_errmsg(db_) : sqlite3_errstr(rc);
        sqlite3_close(db_);
        db_ = nullptr;
        throw Error(fmt::format("Não foi possível abrir a base de dados '{}': {}", file_.string(),
                                message),
                    rc);
    }
    sqlite3_extended_result_codes(db_, 1);
    // What tells kept look-ups (KeptReads) that what they read may have changed.
    sqlite3_update_hook(db_, &Database::OnRowChanged, this);
    sqlite3_commit_hook(db_, &Database::OnCommit, this);
    sqlite3_rollback_hook(db_, &Database::OnRollback, this);
    sqlite3_set_authorizer(db_, &Database::OnAuthorize, this);
    busyTimeoutMilliseconds_ = BusyTimeoutMilliseconds();
    sqlite3_busy_timeout(db_, busyTimeoutMilliseconds_);
    try {
        // WAL is a property of the file; switching needs a moment of exclusive access, so it is
        // done only when the file is not in WAL yet (in practice: when it is created).
        bool inWal = false;
        {
            Statement mode(*this, "PRAGMA journal_mode");
            inWal = mode.Step() && UpperCase(mode.ColumnText(0)) == "WAL";
        }
        if (!inWal) {
            Statement wal(*this, "PRAGMA journal_mode=WAL");
            if (!wal.Step() || UpperCase(wal.ColumnText(0)) != "WAL")
                throw Error("Não foi possível pôr a base de dados em modo WAL.");
        }
        // NORMAL in WAL: a commit survives a crash of the program; a power cut may lose the
        // last commits but never leaves the file inconsistent (see docs/backoffice-schema.md).
        Exec("PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=ON;");
        FitCacheToFile();
        // Temporary data in files, the compaction's copy of the whole back office among them;
        // the journals that let a record's savepoint or a statement be undone stay in memory up
        // to kJournalInMemoryBytes each (ConfigureSqlite), in one piece. Where that could not be
        // set, all temporary data is kept in memory, since a journal in a temporary file costs
        // a write per page (11 GB in an import of 90,000 documents); the compaction then moves
        // to a file for its copy (DatabaseCompaction).
        Exec(journalsSpill ? "PRAGMA temp_store=FILE;" : "PRAGMA temp_store=MEMORY;");
        // The WAL is copied into the file every 50,000 pages (200 MB) instead of every 1,000:
        // the pages a run writes again and again (the same index pages, group after group) are
        // copied once per checkpoint instead of after every group. The compaction truncates the
        // WAL at the end of a run.
        Exec("PRAGMA wal_autocheckpoint=50000;");
    } catch (...) {
        for (auto& [sql, kept] : prepared_) sqlite3_finalize(kept.statement);
        prepared_.clear();
        byAddress_.clear();
        sqlite3_close(db_);
        db_ = nullptr;
        throw;
    }
}

Database::~Database() {
    StopWatch();
    try {
        ReleaseHeld();
    } catch (...) {
        // Lost with the group below, if one is open; the next run imports it again.
    }
    try {
        group_.active = false;
        CommitGroup();
    } catch (...) {
        // What the group held is lost; the next run imports it again.
    }
    for (auto& [sql, kept] : prepared_) sqlite3_finalize(kept.statement);
    sqlite3_close_v2(db_);
}

namespace {
// More distinct texts than the back office's services use; the bound only matters for texts
// that carry values.
constexpr std::size_t kMostPreparedKept = 512;
// Addresses of texts remembered (TakePrepared): more than the places that issue statements.
constexpr std::size_t kMostAddressesKept = 4096;
}  // namespace

KeptStatement* Database::TakePrepared(std::string_view sql) const {
    // A statement's text is nearly always the same literal, at the same address, each time: the
    // keeping is looked up by address first, and the text compared in full, which is cheaper
    // than hashing it. A text at an address seen before with other words in it (a string made
    // at run time) is found by its words.
    if (byAddress_.size() >= kMostAddressesKept) byAddress_.clear();
    KeptText& atAddress = byAddress_[sql.data()];
    if (atAddress.kept == nullptr || *atAddress.text != sql) {
        auto found = prepared_.find(sql);
        if (found == prepared_.end()) {
            byAddress_.erase(sql.data());
            return nullptr;
        }
        atAddress = KeptText{&found->first, &found->second};
    }
    if (atAddress.kept->inUse) return nullptr;
    atAddress.kept->inUse = true;
    return atAddress.kept;
}

void Database::GiveBack(KeptStatement& kept) const noexcept {
    // Reset lets go of what a read left open; a statement that failed reports it again here,
    // which has been reported already.
    sqlite3_reset(kept.statement);
    sqlite3_clear_bindings(kept.statement);
    kept.inUse = false;
}

void Database::GiveBack(std::string&& sql, sqlite3_stmt* statement) const noexcept {
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    try {
        if (prepared_.size() < kMostPreparedKept &&
            prepared_.emplace(std::move(sql), KeptStatement{statement, false}).second) {
            return;
        }
    } catch (...) {
        // No room to keep it: it is simply finalised.
    }
    sqlite3_finalize(statement);
}

void Database::Exec(std::string_view sql) {
    const ConnectionUse use(*this);
    const std::string text(sql);
    char* message = nullptr;
    const int rc = sqlite3_exec(db_, text.c_str(), nullptr, nullptr, &message);
    // Savepoints rolled back to, schema changes: fixed SQL may change what was read without a
    // row of its own.
    EndReads();
    if (rc != SQLITE_OK) {
        const std::string detail = message != nullptr ? message : sqlite3_errstr(rc);
        sqlite3_free(message);
        if (IsLockedByAnother(rc)) throw Error(LockedMessage(file_, busyTimeoutMilliseconds_, detail), rc);
        if (IsDiskFull(rc)) throw Error(FullMessage(file_, detail), rc);
        throw Error(fmt::format("Erro na base de dados da retaguarda: {}", detail), rc);
    }
}

Database::WatchedTables Database::WatchTables(const std::vector<std::string_view>& tables) const {
    const ConnectionUse use(*this, false);
    WatchedTables set = 0;
    for (const std::string_view table : tables) {
        // SQLite's names are the same in any letter case.
        auto known = std::find_if(watched_.begin(), watched_.end(),
                                  [&](const std::string& name) { return EqualsNoCase(name, table); });
        if (known == watched_.end()) {
            if (watched_.size() == 64) throw Error("Demasiadas tabelas vigiadas.");
            watched_.emplace_back(table);
            tableChanged_.push_back(lastStamp_);
            known = watched_.end() - 1;
        }
        set |= WatchedTables{1} << (known - watched_.begin());
    }
    seenTables_.clear();
    // Statements prepared before are prepared again, so that a DELETE of a table watched from
    // now on goes row by row as well (OnAuthorize).
    sqlite3_set_authorizer(db_, &Database::OnAuthorize, const_cast<Database*>(this));
    return set;
}

std::uint64_t Database::ReadStamp(WatchedTables tables) const {
    const ConnectionUse use(*this, false);
    if (sqlite3_txn_state(db_, "main") != SQLITE_TXN_WRITE) return 0;
    std::uint64_t stamp = readsEnded_;
    for (std::size_t i = 0; tables != 0; ++i, tables >>= 1) {
        if ((tables & 1) != 0) stamp = std::max(stamp, tableChanged_[i]);
    }
    return stamp;
}

void Database::OnRowChanged(void* database, int, const char*, const char* table, long long) {
    const auto& self = *static_cast<const Database*>(database);
    // Called for every row written: the tables seen so far are known by where SQLite keeps
    // their names, checked against the name itself (a table made anew may take the place of
    // another's).
    for (const SeenTable& seen : self.seenTables_) {
        if (seen.name == table && seen.text == table) {
            if (seen.slot >= 0) self.tableChanged_[static_cast<std::size_t>(seen.slot)] = ++self.lastStamp_;
            return;
        }
    }
    const auto watched = std::find_if(self.watched_.begin(), self.watched_.end(),
                                      [&](const std::string& name) { return EqualsNoCase(name, table); });
    const int slot = watched == self.watched_.end() ? -1 : static_cast<int>(watched - self.watched_.begin());
    if (self.seenTables_.size() >= 64) self.seenTables_.clear();
    self.seenTables_.push_back({table, table, slot});
    if (slot >= 0) self.tableChanged_[static_cast<std::size_t>(slot)] = ++self.lastStamp_;
}

int Database::OnCommit(void* database) {
    static_cast<const Database*>(database)->EndReads();
    return 0;  // the commit goes on
}

void Database::OnRollback(void* database) { static_cast<const Database*>(database)->EndReads(); }

int Database::OnAuthorize(void* database, int action, const char* table, const char*, const char*,
                          const char*) {
    const auto& self = *static_cast<const Database*>(database);
    const int previous = std::exchange(self.lastAuthorized_, action);
    // A DELETE without WHERE empties a table at once, without a row change each; told to
    // "ignore" it, SQLite deletes row by row instead, and OnRowChanged sees the table change.
    // The same question right after a DROP is the dropping of the table itself, which
    // "ignore" would skip.
    if (action != SQLITE_DELETE || table == nullptr) return SQLITE_OK;
    if (previous == SQLITE_DROP_TABLE || previous == SQLITE_DROP_TEMP_TABLE ||
        previous == SQLITE_DROP_VIEW || previous == SQLITE_DROP_TEMP_VIEW)
        return SQLITE_OK;
    return std::any_of(self.watched_.begin(), self.watched_.end(),
                       [&](const std::string& name) { return EqualsNoCase(name, table); })
               ? SQLITE_IGNORE
               : SQLITE_OK;
}

void Database::Run(std::string_view sql) {
    Statement statement(*this, sql);
    while (statement.Step()) {
    }
}

void Database::EnsureWritable() {
    const ConnectionUse use(*this);
    ReleaseHeld();
    Exec("BEGIN IMMEDIATE");
    Exec("ROLLBACK");
}

long Database::Changes() const {
    const ConnectionUse use(*this, false);
    return sqlite3_changes(db_);
}

std::int64_t Database::LastInsertKey() const {
    const ConnectionUse use(*this, false);
    return sqlite3_last_insert_rowid(db_);
}

int Database::UserVersion() const {
    Statement version(*this, "PRAGMA user_version");
    return version.Step() ? version.Column(0).ToInt32() : 0;
}

Error Database::Failure(int code, std::string_view doing) const {
    const ConnectionUse use(*this, false);
    const char* message = db_ != nullptr ? sqlite3_errmsg(db_) : sqlite3_errstr(code);
    if (IsLockedByAnother(code)) return Error(LockedMessage(file_, busyTimeoutMilliseconds_, message), code);
    if (IsDiskFull(code)) return Error(FullMessage(file_, message), code);
    return Error(fmt::format("Erro na base de dados da retaguarda ao {}: {}", doing, message),
                 code);
}

// ---------------------------------------------------------------- group commit

void Database::SetBusyWait(int milliseconds, std::function<void(int, int)> waiting) {
    const ConnectionUse use(*this, false);
    busyTimeoutMilliseconds_ = std::max(milliseconds, 0);
    busyWaiting_ = std::move(waiting);
    sqlite3_busy_handler(db_, &Database::OnBusy, this);
}

int Database::OnBusy(void* self, int count) {
    Database& database = *static_cast<Database*>(self);
    const std::int64_t now = SteadyMilliseconds();
    if (count == 0) {
        database.busySince_ = now;
        database.busyToldSeconds_ = 0;
    }
    const std::int64_t waited = now - database.busySince_;
    if (waited >= database.busyTimeoutMilliseconds_) return 0;
    const int seconds = static_cast<int>(waited / 1000);
    if (database.busyWaiting_ && seconds >= database.busyToldSeconds_ + 10) {
        database.busyToldSeconds_ = seconds;
        database.busyWaiting_(seconds, database.busyTimeoutMilliseconds_ / 1000);
    }
    sqlite3_sleep(static_cast<int>(std::min<std::int64_t>(
        50, database.busyTimeoutMilliseconds_ - waited)));
    return 1;
}

void Database::BeginGroup(int records, int milliseconds) {
    StopWatch();
    {
        const ConnectionUse use(*this, false);
        CommitGroup();
        group_.active = true;
        group_.mostRecords = std::max(records, 1);
        group_.mostMilliseconds = std::max(milliseconds, 0);
    }
    // Records committed one by one, or a group due at every record's end, hold the lock for no
    // longer than the record itself: nothing to watch.
    if (SharesCommits() && group_.mostMilliseconds > 0) {
        watchStop_ = false;
        watch_ = std::thread([this] { WatchGroup(); });
    }
}

bool Database::GroupDue() const {
    return group_.open && SteadyMilliseconds() - group_.openedAt >= group_.mostMilliseconds;
}

void Database::WatchGroup() {
    // A tenth of a second between looks: the lock is let go that soon after the group is due.
    constexpr auto kLook = std::chrono::milliseconds(kIdleBeforeWatchMilliseconds);
    std::unique_lock<std::mutex> watching(watchMutex_);
    while (!watchWake_.wait_for(watching, kLook, [this] { return watchStop_; })) {
        // The run is using the connection: it commits a due group itself, at the end of its
        // record or at its next use.
        std::unique_lock<std::recursive_mutex> taken(use_, std::try_to_lock);
        if (!taken.owns_lock() || useDepth_ != 0) continue;
        if (!GroupDue() || SteadyMilliseconds() - lastUse_ < kIdleBeforeWatchMilliseconds) continue;
        const ConnectionUse use(*this, false);
        try {
            CommitGroup();
        } catch (...) {
            // A group that could not be committed is kept as the reason the run's next write
            // fails (RefuseAfterLostGroup); a held record that failed at its end was rolled back
            // and is imported again by the next run.
        }
    }
}

void Database::StopWatch() {
    if (!watch_.joinable()) return;
    {
        const std::lock_guard<std::mutex> stopping(watchMutex_);
        watchStop_ = true;
    }
    watchWake_.notify_all();
    watch_.join();
}

void Database::RefuseAfterLostGroup() const {
    if (!group_.lost.empty()) throw Error(group_.lost);
}

void Database::OpenGroup() {
    RefuseAfterLostGroup();
    if (group_.open) return;
    Exec("BEGIN IMMEDIATE");
    group_.open = true;
    group_.records = 0;
    group_.openedAt = SteadyMilliseconds();
}

void Database::RecordSaved() {
    ++group_.records;
    if (group_.records >= group_.mostRecords ||
        SteadyMilliseconds() - group_.openedAt >= group_.mostMilliseconds) {
        CommitOpenGroup(1);
    }
}

void Database::CommitGroup() {
    const ConnectionUse use(*this, false);
    ReleaseHeld();
    CommitOpenGroup(0);
}

void Database::ReleaseHeld() {
    const ConnectionUse use(*this, false);
    if (!held_.active) return;
    const bool savepoint = held_.savepoint;
    const std::function<void()> atEnd = std::move(held_.atEnd);
    held_ = Held{};
    try {
        if (atEnd) atEnd();
        Run(savepoint ? "RELEASE record" : "COMMIT");
    } catch (...) {
        try {
            Exec(savepoint ? "ROLLBACK TO record; RELEASE record" : "ROLLBACK");
        } catch (...) {
            // Rolled back already by SQLite, or it will be when the connection closes.
        }
        throw;
    }
    if (savepoint) RecordSaved();
}

void Database::CommitOpenGroup(int callersRecords) {
    RefuseAfterLostGroup();
    if (!group_.open) return;
    const int records = group_.records;
    group_.open = false;
    try {
        Exec("COMMIT");
    } catch (const Error& error) {
        if (sqlite3_get_autocommit(db_) == 0) {
            try {
                Exec("ROLLBACK");
            } catch (...) {
                // Rolled back already by SQLite, or it will be when the connection closes.
            }
        }
        // Only the caller's own record lost: it fails as it would have without a group.
        if (records <= callersRecords) throw;
        group_.lost = fmt::format(
            "A retaguarda não guardou os últimos {} registos gravados, nem nada do que se "
            "seguiu: {}",
            records, error.Description());
        throw Error(group_.lost, error.Number());
    }
    // A first import grows the file from nothing; the cache follows it, group by group. The
    // group is committed whatever happens here: a cache left at its size only costs time.
    try {
        FitCacheToFile();
    } catch (const Error&) {
    }
}

void Database::FitCacheToFile() {
    // A run inserts at random places into indexes that grow with the data (lines and stock
    // movements by item, documents and account entries by customer), and reads customers and
    // items at random. Those pages are about a tenth of the file; a cache that holds them keeps
    // each insert from reading its page from the file again. At least 32 MB (what a few years
    // of one restaurant need), at most 96 MB (a million documents, a file of about 1.2 GB),
    // taken only as pages are read.
    constexpr std::int64_t kLeastKib = 32 * 1024;
    constexpr std::int64_t kMostKib = 96 * 1024;
    std::int64_t fileKib = 0;
    {
        Statement pages(*this,
                        "SELECT page_count * page_size / 1024 "
                        "FROM pragma_page_count(), pragma_page_size()");
        if (pages.Step()) fileKib = static_cast<std::int64_t>(pages.Column(0).ToDouble());
    }
    const std::int64_t kib = std::clamp(fileKib / 12, kLeastKib, kMostKib);
    if (kib == cacheKib_) return;
    Exec(fmt::format("PRAGMA cache_size=-{}", kib));
    cacheKib_ = kib;
}

void Database::EndGroup() {
    StopWatch();
    const ConnectionUse use(*this, false);
    group_.active = false;
    CommitGroup();
}

GroupedCommits::~GroupedCommits() {
    try {
        database_.EndGroup();
    } catch (...) {
        // Kept in the connection: its next write fails with the same message.
    }
}

// ---------------------------------------------------------------- Transaction

Transaction::Transaction(Database& database, TransactionKind kind)
    : database_(database), use_(database) {
    Begin(kind);
}

Transaction::Transaction(Database& database, std::int64_t heldTag)
    : database_(database), use_(database) {
    if (database_.HoldsRecord(heldTag)) {
        savepoint_ = database_.held_.savepoint;
        database_.held_ = Database::Held{};
        continued_ = true;
        return;
    }
    Begin(TransactionKind::Record);
}

void Transaction::Begin(TransactionKind kind) {
    database_.ReleaseHeld();
    if (kind == TransactionKind::Record && database_.Grouping()) {
        database_.OpenGroup();
        // Run, not Exec: the savepoint and its release come once per record, and a prepared
        // statement kept by the connection is not compiled again each time.
        database_.Run("SAVEPOINT record");
        savepoint_ = true;
        return;
    }
    // A write of its own: what the group holds is committed before it.
    database_.CommitGroup();
    database_.Exec("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (open_) {
        try {
            database_.Exec(savepoint_ ? "ROLLBACK TO record; RELEASE record" : "ROLLBACK");
        } catch (...) {
            // Nothing more can be done from a destructor; SQLite rolls back on close anyway.
        }
    }
}

void Transaction::Hold(std::int64_t tag, std::function<void()> atEnd) {
    if (!open_) return;
    database_.ReleaseHeld();  // never two: a transaction is open only while nothing is held
    database_.held_ = Database::Held{true, savepoint_, tag, std::move(atEnd)};
    open_ = false;
    use_.End();
}

void Transaction::Commit() {
    if (savepoint_) {
        database_.Run("RELEASE record");
        open_ = false;
        database_.RecordSaved();
        use_.End();
        return;
    }
    database_.Exec("COMMIT");
    open_ = false;
    use_.End();
}

// ---------------------------------------------------------------- identifiers

bool IsPlainIdentifier(std::string_view name) {
    if (name.empty() || name.size() > 128) return false;
    const auto isLetter = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    if (!isLetter(name.front())) return false;
    for (char c : name) {
        if (!isLetter(c) && !(c >= '0' && c <= '9')) return false;
    }
    return true;
}

std::string QuoteIdentifier(std::string_view name) {
    if (!IsPlainIdentifier(name))
        throw Error(fmt::format("'{}' não é um nome válido de tabela ou coluna.", name));
    return fmt::format("\"{}\"", name);
}

}  // namespace kitra::backoffice
