#include "backoffice/HostConnection.h"

#include <filesystem>
#include <fstream>

#include "backoffice/PrivateFiles.h"
#include "core/DateTime.h"
#include "core/Paths.h"

namespace kitra::backoffice {
namespace {

constexpr std::string_view kLogInsert = "INSERT INTO \"Kitra2Log\" (";

// The columns of an INSERT made by the statement builder: INSERT INTO "T" ("A","B") VALUES ...
std::vector<std::string> InsertedColumns(const std::string& text) {
    std::vector<std::string> columns;
    const std::size_t end = text.find(')', kLogInsert.size());
    std::string list = text.substr(kLogInsert.size(), end - kLogInsert.size());
    for (std::size_t start = 0; start <= list.size();) {
        std::size_t comma = list.find(',', start);
        if (comma == std::string::npos) comma = list.size();
        std::string column = list.substr(start, comma - start);
        if (column.size() >= 2 && column.front() == '"') column = column.substr(1, column.size() - 2);
        columns.push_back(column);
        start = comma + 1;
    }
    return columns;
}

// A file name made of the restaurant's name: a separator or a NUL would make it another path.
std::string FileNamePart(std::string text) {
    for (char& c : text) {
        if (c == '/' || c == '\\' || c == '\0') c = '_';
    }
    return text;
}

}  // namespace

long HostConnection::Execute(const host::SqlStatement& statement) {
    try {
        // A statement of the connector's own (its log rows above all) stands on its own: the
        // records grouped before it are committed first, and a group that could not be is
        // reported here, where the log row is kept in a file instead.
        database_.CommitGroup();
        Statement prepared(database_, statement.text);
        prepared.Bind(statement.parameters).Run();
        return database_.Changes();
    } catch (const Error& error) {
        KeepIfLogRow(statement, error.Description());
        throw;
    }
}

ado::Recordset HostConnection::Query(const host::SqlStatement& statement) {
    Statement prepared(database_, statement.text);
    prepared.Bind(statement.parameters);
    return prepared.ReadAll();
}

void HostConnection::KeepIfLogRow(const host::SqlStatement& statement, const std::string& reason) {
    if (!statement.text.starts_with(kLogInsert)) return;
    const std::vector<std::string> columns = InsertedColumns(statement.text);
    UnsavedLogRow row;
    row.reason = reason;
    std::string contents;
    DateTime moment;
    for (std::size_t i = 0; i < columns.size() && i < statement.parameters.size(); ++i) {
        const Variant& value = statement.parameters[i];
        if (value.IsNull() || value.IsEmpty()) continue;
        if (columns[i] == "RestaurantID") row.restaurant = value.ToText();
        if (columns[i] == "Contents") contents = value.ToText();
        if (columns[i] == "ImportDate") {
            try {
                moment = value.ToDate();
            } catch (const std::exception&) {
                // The name still says which restaurant; the stamp is then the zero moment.
            }
        }
    }
    try {
        // Runs in one second name their logs alike: each kept text gets a name of its own
        // ("-2", "-3", ... before the suffix), never another's.
        const std::filesystem::path folder = PathFromUtf8(application_.LogFolder());
        const std::string stem =
            FileNamePart(row.restaurant) + FormatDatePattern(moment, "yyyymmdd_hhnnss");
        std::filesystem::path file = folder / PathFromUtf8(stem + kUnsavedLogSuffix);
        std::error_code ignored;
        for (int n = 2; std::filesystem::exists(file, ignored); ++n)
            file = folder / PathFromUtf8(stem + "-" + std::to_string(n) + kUnsavedLogSuffix);
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << contents;
        out.close();
        if (!out) throw Error("Não foi possível escrever o ficheiro '" + Utf8FromPath(file) + "'.");
        MakePrivateFile(file);
        row.file = Utf8FromPath(file);
    } catch (const std::exception& error) {
        row.reason += " O texto do log também não pôde ser guardado na pasta de registos: " +
                      DescriptionOf(error);
    }
    row.contents = std::move(contents);
    unsaved_.push_back(std::move(row));
}

}  // namespace kitra::backoffice
