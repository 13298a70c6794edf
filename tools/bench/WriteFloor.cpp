// The write floor: the rows an import left in the back office, written again into an empty
// file of the same schema (tables and indexes, the same journal settings) in one transaction,
// with one prepared INSERT per table. The rows are read into memory first, so only the
// writing is timed: it is what storing that many rows of that width costs at the least.
#include "tools/bench/Bench.h"

#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "backoffice/Database.h"

namespace kitra::bench {
namespace {

using Value = std::variant<std::monostate, sqlite3_int64, double, std::string, std::vector<unsigned char>>;

struct Table {
    std::string name;
    std::vector<std::vector<Value>> rows;
};

class Db {
public:
    Db(const std::string& file, int flags) {
        // The library set up as the back office sets it up, so that the floor pays no cost the
        // import is spared.
        backoffice::ConfigureSqlite();
        if (sqlite3_open_v2(file.c_str(), &db_, flags, nullptr) != SQLITE_OK) {
            const std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
            sqlite3_close(db_);
            throw std::runtime_error("cannot open " + file + ": " + message);
        }
    }
    ~Db() { sqlite3_close(db_); }
    Db(const Db&) = delete;
    Db& operator=(const Db&) = delete;

    void Exec(const std::string& sql) {
        char* message = nullptr;
        if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
            const std::string text = message ? message : "unknown error";
            sqlite3_free(message);
            throw std::runtime_error(text + " (" + sql.substr(0, 80) + ")");
        }
    }
    sqlite3_stmt* Prepare(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string(sqlite3_errmsg(db_)) + " (" + sql + ")");
        return statement;
    }
    sqlite3* Handle() const { return db_; }

private:
    sqlite3* db_ = nullptr;
};

std::string Quoted(const std::string& name) {
    std::string out = "\"";
    for (char c : name) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
}

Value ReadValue(sqlite3_stmt* statement, int column, std::uint64_t& bytes) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER: bytes += 8; return sqlite3_column_int64(statement, column);
        case SQLITE_FLOAT: bytes += 8; return sqlite3_column_double(statement, column);
        case SQLITE_TEXT: {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
            const int size = sqlite3_column_bytes(statement, column);
            bytes += static_cast<std::uint64_t>(size);
            return std::string(text, static_cast<std::size_t>(size));
        }
        case SQLITE_BLOB: {
            const auto* data = static_cast<const unsigned char*>(sqlite3_column_blob(statement, column));
            const int size = sqlite3_column_bytes(statement, column);
            bytes += static_cast<std::uint64_t>(size);
            return std::vector<unsigned char>(data, data + size);
        }
        default: return std::monostate{};
    }
}

void BindValue(sqlite3_stmt* statement, int index, const Value& value) {
    if (const auto* whole = std::get_if<sqlite3_int64>(&value)) sqlite3_bind_int64(statement, index, *whole);
    else if (const auto* real = std::get_if<double>(&value)) sqlite3_bind_double(statement, index, *real);
    else if (const auto* text = std::get_if<std::string>(&value))
        sqlite3_bind_text(statement, index, text->data(), static_cast<int>(text->size()), SQLITE_STATIC);
    else if (const auto* blob = std::get_if<std::vector<unsigned char>>(&value))
        sqlite3_bind_blob(statement, index, blob->data(), static_cast<int>(blob->size()), SQLITE_STATIC);
    else sqlite3_bind_null(statement, index);
}

}  // namespace

WriteResult MeasureWriteFloor(const std::string& backOfficeFile, const std::string& scratchFile) {
    WriteResult result;
    std::vector<std::string> schema;
    std::vector<Table> tables;
    {
        Db source(backOfficeFile, SQLITE_OPEN_READONLY);
        sqlite3_stmt* objects = source.Prepare(
            "SELECT type, name, sql FROM sqlite_master WHERE sql IS NOT NULL AND type IN "
            "('table','index') AND name NOT LIKE 'sqlite_%' ORDER BY type = 'index', rowid");
        while (sqlite3_step(objects) == SQLITE_ROW) {
            const std::string type = reinterpret_cast<const char*>(sqlite3_column_text(objects, 0));
            const std::string name = reinterpret_cast<const char*>(sqlite3_column_text(objects, 1));
            schema.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(objects, 2)));
            if (type == "table") tables.push_back({name, {}});
        }
        sqlite3_finalize(objects);
        for (Table& table : tables) {
            sqlite3_stmt* rows = source.Prepare("SELECT * FROM " + Quoted(table.name));
            const int columns = sqlite3_column_count(rows);
            while (sqlite3_step(rows) == SQLITE_ROW) {
                std::vector<Value> row;
                row.reserve(static_cast<std::size_t>(columns));
                for (int c = 0; c < columns; ++c) row.push_back(ReadValue(rows, c, result.bytes));
                table.rows.push_back(std::move(row));
                ++result.rows;
            }
            sqlite3_finalize(rows);
        }
    }

    std::filesystem::remove(scratchFile);
    std::filesystem::remove(scratchFile + "-wal");
    std::filesystem::remove(scratchFile + "-shm");
    {
        Db target(scratchFile, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        target.Exec("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=OFF;");
        for (const std::string& sql : schema) target.Exec(sql);

        const auto started = std::chrono::steady_clock::now();
        const double cpuBefore = OwnCpuSeconds();
        target.Exec("BEGIN IMMEDIATE");
        for (const Table& table : tables) {
            if (table.rows.empty()) continue;
            std::string sql = "INSERT INTO " + Quoted(table.name) + " VALUES (";
            for (std::size_t c = 0; c < table.rows.front().size(); ++c) sql += c ? ",?" : "?";
            sql += ")";
            sqlite3_stmt* insert = target.Prepare(sql);
            for (const std::vector<Value>& row : table.rows) {
                for (std::size_t c = 0; c < row.size(); ++c) BindValue(insert, static_cast<int>(c + 1), row[c]);
                if (sqlite3_step(insert) != SQLITE_DONE) {
                    const std::string message = sqlite3_errmsg(target.Handle());
                    sqlite3_finalize(insert);
                    throw std::runtime_error("writing " + table.name + ": " + message);
                }
                sqlite3_reset(insert);
            }
            sqlite3_finalize(insert);
        }
        target.Exec("COMMIT");
        result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
        result.cpuSeconds = OwnCpuSeconds() - cpuBefore;
    }
    std::filesystem::remove(scratchFile);
    std::filesystem::remove(scratchFile + "-wal");
    std::filesystem::remove(scratchFile + "-shm");
    return result;
}

}  // namespace kitra::bench
