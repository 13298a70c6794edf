#pragma once
// The ODBC plumbing under Connection and Recordset: owned handles, the driver's diagnostics as
// the system's Error, UTF-8 <-> UTF-16 for the wide ODBC calls, and reading a whole result.
// Internal to ado/: nothing above this layer includes ODBC headers.
#if defined(_WIN32)
#include <windows.h>  // the system's ODBC headers are written on its types
#endif
#include <sql.h>
#include <sqlext.h>

#include <string>
#include <string_view>
#include <vector>

#include "ado/ResultColumn.h"
#include "core/Error.h"
#include "core/Variant.h"

namespace kitra::ado::odbc {

// One ODBC handle, freed with its owner.
class Handle {
public:
    Handle() = default;
    Handle(SQLSMALLINT type, SQLHANDLE parent);  // allocates; throws Error on failure
    ~Handle() { Reset(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    Handle(Handle&& other) noexcept;
    Handle& operator=(Handle&& other) noexcept;

    SQLHANDLE Get() const { return handle_; }
    SQLSMALLINT Type() const { return type_; }
    explicit operator bool() const { return handle_ != SQL_NULL_HANDLE; }
    void Reset();

private:
    SQLSMALLINT type_ = 0;
    SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

using WideString = std::basic_string<SQLWCHAR>;

// UTF-8 to the driver's UTF-16 and back. Bytes that are not UTF-8 (and lone surrogates) become
// U+FFFD rather than failing: a text is never lost for one bad character.
WideString ToWide(std::string_view utf8);
std::string FromWide(const SQLWCHAR* text, std::size_t length);

// The driver's first diagnostic record on the handle as the system's error: the description is
// the driver's message ("[ma-3.1.15]Access denied for user ..."), the number its native error
// code (1045, 1049, 2002, 1064, ...). `context` is used when the driver left no record.
Error DiagnosticError(SQLSMALLINT handleType, SQLHANDLE handle, std::string_view context);

// The driver's error when the link to the server is gone (SQLSTATE class 08: lost during a
// statement, a read or write that timed out, a server that went away). The connection that
// raised it is of no further use.
class LinkFailure : public Error {
public:
    using Error::Error;
};

// Fails with the handle's diagnostics unless the return code is a success; a LinkFailure when
// the driver says the link to the server is gone.
void Check(SQLRETURN rc, const Handle& handle, std::string_view context);

// Every row of the statement's result, read into memory column by column. A statement that
// returns no result set (INSERT, CREATE, ...) gives no columns and no rows.
struct ResultRows {
    std::vector<std::string> columns;
    std::vector<ResultColumn> values;  // one per column
    long affectedRows = -1;  // for statements without a result set; -1 when unknown
};
ResultRows ExecuteAndReadAll(SQLHDBC connection, const std::string& statement);

// How a database value in its text form becomes a Variant, by the column's SQL type. Exposed
// for tests of the rules themselves.
enum class ColumnKind { Integer, Decimal, Bit, Date, Time, Text, Binary };
ColumnKind KindOfSqlType(SQLSMALLINT sqlType);
Variant ValueFromText(ColumnKind kind, std::string text);

}  // namespace kitra::ado::odbc
