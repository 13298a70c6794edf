#pragma once
// The back office's shared connection as components see it: statements with bound values on
// the back office's one SQLite connection.
//
// An import log row (table Kitra2Log) that cannot be stored (the back office locked by another
// program, a full disk, a restaurant name longer than the column) is not lost: its text is kept
// in the log folder in a file whose name says it was not stored, and the program that runs the
// host reads the list of such files after the run to tell the user.
#include <string>
#include <vector>

#include "backoffice/Application.h"
#include "backoffice/Database.h"
#include "host/IHostConnection.h"

namespace kitra::backoffice {

// What the name of a kept log file ends with.
inline constexpr const char* kUnsavedLogSuffix = "-NAO-GUARDADO.txt";

struct UnsavedLogRow {
    std::string restaurant;
    std::string file;    // where the text was kept; empty when it could not be kept either
    std::string reason;  // why the row was not stored (and, if so, why it was not kept)
    std::string contents;  // the log's text
};

class HostConnection final : public host::IHostConnection {
public:
    HostConnection(Database& database, const Application& application)
        : database_(database), application_(application) {}
    long Execute(const host::SqlStatement& statement) override;
    ado::Recordset Query(const host::SqlStatement& statement) override;

    // The log rows that could not be stored since this connection was made.
    const std::vector<UnsavedLogRow>& UnsavedLogRows() const { return unsaved_; }

private:
    // When `statement` inserts a log row, keeps its text in the log folder and notes it.
    void KeepIfLogRow(const host::SqlStatement& statement, const std::string& reason);

    Database& database_;
    const Application& application_;
    std::vector<UnsavedLogRow> unsaved_;
};

}  // namespace kitra::backoffice
