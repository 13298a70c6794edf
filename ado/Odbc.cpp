#include "ado/Odbc.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <utility>

#include "core/Text.h"

namespace kitra::ado::odbc {

// ---- handles -------------------------------------------------------------------------------

Handle::Handle(SQLSMALLINT type, SQLHANDLE parent) : type_(type) {
    SQLRETURN rc = SQLAllocHandle(type, parent, &handle_);
    if (!SQL_SUCCEEDED(rc)) {
        handle_ = SQL_NULL_HANDLE;
        if (parent != SQL_NULL_HANDLE) {
            const SQLSMALLINT parentType =
                type == SQL_HANDLE_DBC ? SQL_HANDLE_ENV : SQL_HANDLE_DBC;
            throw DiagnosticError(parentType, parent, "allocating an ODBC handle");
        }
        throw Error("The ODBC driver manager could not allocate its environment.");
    }
}

Handle::Handle(Handle&& other) noexcept
    : type_(other.type_), handle_(std::exchange(other.handle_, nullptr)) {}

Handle& Handle::operator=(Handle&& other) noexcept {
    if (this != &other) {
        Reset();
        type_ = other.type_;
        handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
}

void Handle::Reset() {
    if (handle_ != SQL_NULL_HANDLE) {
        SQLFreeHandle(type_, handle_);
        handle_ = SQL_NULL_HANDLE;
    }
}

// ---- UTF-8 / UTF-16 ------------------------------------------------------------------------

namespace {
constexpr char32_t kReplacement = 0xFFFD;
}  // namespace

WideString ToWide(std::string_view utf8) {
    WideString out;
    out.reserve(utf8.size());
    for (const char32_t cp : DecodeUtf8(utf8)) {
        if (cp >= 0x10000) {
            const char32_t v = cp - 0x10000;
            out += static_cast<SQLWCHAR>(0xD800 + (v >> 10));
            out += static_cast<SQLWCHAR>(0xDC00 + (v & 0x3FF));
        } else {
            out += static_cast<SQLWCHAR>(cp);
        }
    }
    return out;
}

std::string FromWide(const SQLWCHAR* text, std::size_t length) {
    std::string out;
    out.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        const char32_t unit = text[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < length && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            AppendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00));
            ++i;
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            AppendUtf8(out, kReplacement);
        } else {
            AppendUtf8(out, unit);
        }
    }
    return out;
}

// ---- diagnostics ---------------------------------------------------------------------------

namespace {

// The driver's first diagnostic record: its SQLSTATE and the error it describes.
Error FirstDiagnostic(SQLSMALLINT handleType, SQLHANDLE handle, std::string_view context,
                      std::string& sqlState) {
    SQLWCHAR state[6] = {};
    SQLINTEGER native = 0;
    std::vector<SQLWCHAR> message(1024);
    SQLSMALLINT length = 0;
    SQLRETURN rc = SQLGetDiagRecW(handleType, handle, 1, state, &native, message.data(),
                                  static_cast<SQLSMALLINT>(message.size()), &length);
    if (rc == SQL_SUCCESS_WITH_INFO && length >= static_cast<SQLSMALLINT>(message.size())) {
        message.resize(static_cast<std::size_t>(length) + 1);
        rc = SQLGetDiagRecW(handleType, handle, 1, state, &native, message.data(),
                            static_cast<SQLSMALLINT>(message.size()), &length);
    }
    if (!SQL_SUCCEEDED(rc) || length <= 0) {
        sqlState.clear();
        return Error("The ODBC driver failed without a message (" + std::string(context) + ").");
    }
    sqlState = FromWide(state, 5);
    const std::size_t used = std::min<std::size_t>(static_cast<std::size_t>(length),
                                                   message.size() - 1);
    return Error(FromWide(message.data(), used), native);
}

}  // namespace

Error DiagnosticError(SQLSMALLINT handleType, SQLHANDLE handle, std::string_view context) {
    std::string sqlState;
    return FirstDiagnostic(handleType, handle, context, sqlState);
}

void Check(SQLRETURN rc, const Handle& handle, std::string_view context) {
    if (SQL_SUCCEEDED(rc)) return;
    std::string sqlState;
    Error error = FirstDiagnostic(handle.Type(), handle.Get(), context, sqlState);
    if (sqlState.rfind("08", 0) == 0) throw LinkFailure(error.Description(), error.Number());
    throw error;
}

// ---- values --------------------------------------------------------------------------------

ColumnKind KindOfSqlType(SQLSMALLINT sqlType) {
    switch (sqlType) {
        case SQL_TINYINT:
        case SQL_SMALLINT:
        case SQL_INTEGER:
        case SQL_BIGINT:
            return ColumnKind::Integer;
        case SQL_DECIMAL:
        case SQL_NUMERIC:
        case SQL_FLOAT:
        case SQL_REAL:
        case SQL_DOUBLE:
            return ColumnKind::Decimal;
        case SQL_BIT:
            return ColumnKind::Bit;
        case SQL_TYPE_DATE:
        case SQL_TYPE_TIMESTAMP:
        case SQL_DATETIME:
        case SQL_TIMESTAMP:
            return ColumnKind::Date;
        case SQL_TYPE_TIME:
        case SQL_TIME:
            return ColumnKind::Time;
        case SQL_BINARY:
        case SQL_VARBINARY:
        case SQL_LONGVARBINARY:
            return ColumnKind::Binary;
        default:
            return ColumnKind::Text;
    }
}

namespace {

// Reads exactly `digits` decimal digits at text[pos].
bool ReadDigits(std::string_view text, std::size_t pos, std::size_t digits, int& value) {
    if (pos + digits > text.size()) return false;
    value = 0;
    for (std::size_t k = pos; k < pos + digits; ++k) {
        if (text[k] < '0' || text[k] > '9') return false;
        value = value * 10 + (text[k] - '0');
    }
    return true;
}

// "hh:mm:ss" with an optional fraction, which a date of the host does not keep.
bool ReadTime(std::string_view text, std::size_t pos, DateTime& out) {
    if (text.size() < pos + 8 || text[pos + 2] != ':' || text[pos + 5] != ':') return false;
    if (!ReadDigits(text, pos, 2, out.hour) || !ReadDigits(text, pos + 3, 2, out.minute) ||
        !ReadDigits(text, pos + 6, 2, out.second)) {
        return false;
    }
    std::size_t end = pos + 8;
    if (end < text.size()) {
        if (text[end] != '.') return false;
        for (++end; end < text.size(); ++end) {
            if (text[end] < '0' || text[end] > '9') return false;
        }
    }
    return out.hour < 24 && out.minute < 60 && out.second < 60;
}

// "yyyy-mm-dd" or "yyyy-mm-dd hh:mm:ss[.ffffff]", as the server writes DATE and DATETIME.
bool ReadDate(std::string_view text, DateTime& out) {
    if (text.size() < 10 || text[4] != '-' || text[7] != '-') return false;
    if (!ReadDigits(text, 0, 4, out.year) || !ReadDigits(text, 5, 2, out.month) ||
        !ReadDigits(text, 8, 2, out.day)) {
        return false;
    }
    out.hour = out.minute = out.second = 0;
    if (text.size() == 10) return true;
    return text[10] == ' ' && ReadTime(text, 11, out);
}

Variant NumberFromText(const std::string& text) {
    const char* first = text.data();
    const char* last = text.data() + text.size();
    std::int64_t whole = 0;
    auto [end, ec] = std::from_chars(first, last, whole);
    if (ec == std::errc() && end == last) {
        if (whole >= std::numeric_limits<std::int32_t>::min() &&
            whole <= std::numeric_limits<std::int32_t>::max()) {
            return Variant(static_cast<std::int32_t>(whole));
        }
        return Variant(static_cast<double>(whole));
    }
    double real = 0;
    auto [realEnd, realEc] = std::from_chars(first, last, real);
    if (realEc == std::errc() && realEnd == last) return Variant(real);
    return Variant(text);
}

}  // namespace

Variant ValueFromText(ColumnKind kind, std::string text) {
    switch (kind) {
        case ColumnKind::Integer:
            return NumberFromText(text);
        case ColumnKind::Decimal: {
            double real = 0;
            auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), real);
            if (ec == std::errc() && end == text.data() + text.size()) return Variant(real);
            return Variant(std::move(text));
        }
        case ColumnKind::Bit:
            return Variant(text != "0");
        case ColumnKind::Date: {
            // A date the host cannot hold (the zero date, a zero month or day, a year before
            // 100) stays the text the database shows: it is neither null nor silently a
            // different date, and reading it as a date fails loudly where it is used.
            DateTime date;
            if (ReadDate(text, date) && date.IsValid()) return Variant(date);
            return Variant(std::move(text));
        }
        case ColumnKind::Time: {
            // A time of day is a date on the host's zero day, as ADO gives it.
            DateTime time;
            if (ReadTime(text, 0, time)) return Variant(time);
            return Variant(std::move(text));
        }
        case ColumnKind::Text:
        case ColumnKind::Binary:
            break;
    }
    return Variant(std::move(text));
}

// ---- reading a result ----------------------------------------------------------------------

namespace {

struct Column {
    std::string name;
    ColumnKind kind;
};

constexpr std::size_t kChunk = 4096;

// Reads one cell in the given C type, in as many chunks as it takes; false for SQL NULL.
// A character split between two chunks is joined again, since the value is only converted when
// it is whole.
template <typename Unit>
bool ReadCell(const Handle& statement, SQLUSMALLINT column, SQLSMALLINT cType,
              std::vector<Unit>& buffer, std::basic_string<Unit>& value) {
    const bool terminated = cType != SQL_C_BINARY;
    const std::size_t room = buffer.size() - (terminated ? 1 : 0);
    value.clear();
    for (;;) {
        SQLLEN indicator = 0;
        const SQLRETURN rc =
            SQLGetData(statement.Get(), column, cType, buffer.data(),
                       static_cast<SQLLEN>(buffer.size() * sizeof(Unit)), &indicator);
        if (rc == SQL_NO_DATA) return true;
        Check(rc, statement, "reading a value");
        if (indicator == SQL_NULL_DATA) return false;
        const bool more = rc == SQL_SUCCESS_WITH_INFO &&
                          (indicator == SQL_NO_TOTAL ||
                           static_cast<std::size_t>(indicator) / sizeof(Unit) > room);
        if (more) {
            value.append(buffer.data(), room);
            continue;
        }
        value.append(buffer.data(), static_cast<std::size_t>(indicator) / sizeof(Unit));
        return true;
    }
}

std::vector<Column> DescribeColumns(const Handle& statement, SQLSMALLINT count) {
    std::vector<Column> columns;
    columns.reserve(static_cast<std::size_t>(count));
    std::vector<SQLWCHAR> name(256);
    for (SQLUSMALLINT i = 1; i <= static_cast<SQLUSMALLINT>(count); ++i) {
        SQLSMALLINT nameLength = 0, sqlType = 0, digits = 0, nullable = 0;
        SQLULEN size = 0;
        Check(SQLDescribeColW(statement.Get(), i, name.data(),
                              static_cast<SQLSMALLINT>(name.size()), &nameLength, &sqlType,
                              &size, &digits, &nullable),
              statement, "describing the result");
        if (static_cast<std::size_t>(nameLength) >= name.size()) {
            name.resize(static_cast<std::size_t>(nameLength) + 1);
            Check(SQLDescribeColW(statement.Get(), i, name.data(),
                                  static_cast<SQLSMALLINT>(name.size()), &nameLength, &sqlType,
                                  &size, &digits, &nullable),
                  statement, "describing the result");
        }
        columns.push_back({FromWide(name.data(), static_cast<std::size_t>(nameLength)),
                           KindOfSqlType(sqlType)});
    }
    return columns;
}

}  // namespace

ResultRows ExecuteAndReadAll(SQLHDBC connection, const std::string& statementText) {
    Handle statement(SQL_HANDLE_STMT, connection);
    WideString wide = ToWide(statementText);
    SQLRETURN rc =
        SQLExecDirectW(statement.Get(), wide.data(), static_cast<SQLINTEGER>(wide.size()));
    ResultRows result;
    if (rc == SQL_NO_DATA) {  // a searched UPDATE or DELETE that touched no row
        result.affectedRows = 0;
        return result;
    }
    Check(rc, statement, "running the statement");

    SQLSMALLINT count = 0;
    Check(SQLNumResultCols(statement.Get(), &count), statement, "describing the result");
    if (count == 0) {
        SQLLEN affected = -1;
        if (SQL_SUCCEEDED(SQLRowCount(statement.Get(), &affected))) {
            result.affectedRows = static_cast<long>(affected);
        }
        return result;
    }

    const std::vector<Column> columns = DescribeColumns(statement, count);
    for (const Column& column : columns) result.columns.push_back(column.name);
    result.values.resize(columns.size());

    // The driver holds the whole result already, so it knows the count up front: the columns
    // take their room once rather than growing by copies.
    SQLLEN expected = 0;
    if (SQL_SUCCEEDED(SQLRowCount(statement.Get(), &expected)) && expected > 0) {
        for (ResultColumn& column : result.values) column.Reserve(static_cast<std::size_t>(expected));
    }

    std::vector<char> byteBuffer(kChunk);
    std::string byteValue;
    while ((rc = SQLFetch(statement.Get())) != SQL_NO_DATA) {
        Check(rc, statement, "fetching a row");
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const auto number = static_cast<SQLUSMALLINT>(i + 1);
            const ColumnKind kind = columns[i].kind;
            ResultColumn& column = result.values[i];
            // Texts are read as the bytes the server sends, which are UTF-8 (utf8mb4) on a
            // connection opened with the wide call: byte for byte, a NUL included. Read as wide
            // characters, the driver cuts a text at its first NUL. Numbers and dates are read in
            // the database's own text form and converted here, which keeps them exact and
            // independent of the process's locale.
            const bool text = kind == ColumnKind::Binary || kind == ColumnKind::Text;
            if (!ReadCell(statement, number, text ? SQL_C_BINARY : SQL_C_CHAR, byteBuffer,
                          byteValue)) {
                column.AppendNull();
            } else if (text) {
                column.AppendText(byteValue);
            } else {
                column.Append(ValueFromText(kind, byteValue));
            }
        }
    }
    // The driver keeps its copy of the whole result until the statement goes: let it go before
    // the columns give back their unused room, which copies them once more.
    statement.Reset();
    for (ResultColumn& column : result.values) column.Trim();
    return result;
}

}  // namespace kitra::ado::odbc
