#pragma once
// A client-side recordset: every row of a result read into memory when it opens, which is what
// gives RecordCount. The same type carries results of the restaurant database (ODBC) and of the
// host database. EOF/BOF are spelled Eof/Bof because EOF is a C library macro.
//
// The rows are held column by column in compact typed arrays (ResultColumn), and only the fields
// the current row is asked for are made into values: the largest result of a run (a restaurant's
// whole history of transaction headers) then costs tens of bytes per row, not hundreds.
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ado/ResultColumn.h"
#include "core/Variant.h"

namespace kitra::ado {

class Connection;

class Recordset {
public:
    Recordset() = default;
    Recordset(std::vector<std::string> columns, std::vector<std::vector<Variant>> rows);
    // Columns already held compactly, all of the same number of rows. A function of its own
    // rather than a constructor, so that the rows above can still be written in braces.
    static Recordset FromColumns(std::vector<std::string> columns, std::vector<ResultColumn> values);

    // Runs the statement on an open connection and reads every row (restaurant database).
    void Open(const std::string& statement, Connection& connection);
    void Close();
    bool IsOpen() const { return open_; }

    bool Eof() const;
    bool Bof() const;
    void MoveNext();
    void MoveFirst();
    long RecordCount() const { return static_cast<long>(rowCount_); }

    // The current row's field, by name (case-insensitive) or by position. Asking for a field
    // with no current row, or a name the result does not have, fails with the host's error.
    // The value stays as it is until the recordset moves.
    const Variant& Field(std::string_view name) const;
    const Variant& Field(std::size_t index) const;
    const Variant& operator[](std::string_view name) const { return Field(name); }

    const std::vector<std::string>& Columns() const { return columns_; }
    // Bytes the rows hold on the heap, for measuring.
    std::size_t HeapBytes() const;
    bool HasField(std::string_view name) const;

private:
    std::size_t IndexOf(std::string_view name) const;

    std::vector<std::string> columns_;
    // Names already looked up, as asked for, with their position: the importers ask for the
    // same few names on every row, so each is compared with the columns only once.
    mutable std::vector<std::pair<std::string, std::size_t>> lookedUp_;
    std::vector<ResultColumn> values_;  // one per column
    std::size_t rowCount_ = 0;
    // The current row's fields made into values so far: a field is made when first asked for
    // on a row, so the row's other fields cost nothing.
    mutable std::vector<Variant> current_;
    mutable std::vector<std::size_t> currentRowOf_;  // the row + 1 each field of current_ is of
    // Position 0..rowCount_; rowCount_ is EOF. BOF only before MoveFirst on empty results.
    std::size_t position_ = 0;
    bool open_ = false;
};

}  // namespace kitra::ado
