#include "ado/Connection.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "ado/Odbc.h"
#include "ado/ReadAhead.h"
#include "core/Environment.h"
#include "core/Error.h"
#include "core/Text.h"

namespace kitra::ado {

namespace {
// ADO's errors for using an object in the wrong state; their texts are the ones users know.
Error ObjectClosed() { return Error("Operation is not allowed when the object is closed.", 3704); }
Error ObjectOpen() { return Error("Operation is not allowed when the object is open.", 3705); }

// The keys a connection string sets, in upper case. Values in braces may hold ";" and "=".
std::vector<std::string> KeysOf(const std::string& connectionString) {
    std::vector<std::string> keys;
    std::string key;
    bool inKey = true;
    bool inBraces = false;
    for (const char c : connectionString) {
        if (inBraces) {
            if (c == '}') inBraces = false;
        } else if (c == '{') {
            inBraces = true;
        } else if (c == ';') {
            if (!Trim(key).empty()) keys.push_back(FoldCase(Trim(key)));
            key.clear();
            inKey = true;
        } else if (c == '=' && inKey) {
            inKey = false;
        } else if (inKey) {
            key += c;
        }
    }
    if (!Trim(key).empty()) keys.push_back(FoldCase(Trim(key)));
    return keys;
}

Error NegativeTimeout() {
    return Error("Arguments are of the wrong type, are out of acceptable range, or are in "
                 "conflict with one another.",
                 3001);
}

// A time-out's starting value: `standard` (ADO's), unless the environment variable holds a
// whole number of seconds (0 or more, a day at the most).
long TimeoutFromEnvironment(const char* variable, long standard) {
    return WholeNumberFromEnvironment(variable, standard, 0, 86400);
}

}  // namespace

// MariaDB Connector/ODBC 3.1 keeps to neither SQL_ATTR_LOGIN_TIMEOUT nor SQL_ATTR_QUERY_TIMEOUT
// (measured: a silent server holds SQLDriverConnect for good with the first, and the second is
// refused with "Option value changed to default (no timeout)"). What it keeps to are its own
// options: CONN_TIMEOUT bounds the TCP connect and the wait for the server's greeting, and
// READ_TIMEOUT and WRITE_TIMEOUT bound every wait on the socket once connected.
std::string DriverConnectionString(const std::string& connectionString, long connectionTimeout,
                                   long commandTimeout) {
    const std::vector<std::string> keys = KeysOf(connectionString);
    const auto sets = [&](const char* key) {
        for (const std::string& k : keys) {
            if (k == key) return true;
        }
        return false;
    };
    std::string text = connectionString;
    const auto add = [&](const char* key, long seconds) {
        if (seconds <= 0 || sets(key)) return;
        if (!text.empty() && text.back() != ';') text += ';';
        text += key;
        text += '=';
        text += std::to_string(seconds);
    };
    add("CONN_TIMEOUT", connectionTimeout);
    add("READ_TIMEOUT", commandTimeout);
    add("WRITE_TIMEOUT", commandTimeout);
    return text;
}

struct Connection::Handles {
    odbc::Handle environment;  // declared first: freed last
    odbc::Handle connection;
    bool connected = false;

    ~Handles() {
        if (connected) SQLDisconnect(connection.Get());
    }
};

Connection::Connection()
    : connectionTimeout_(TimeoutFromEnvironment("KITRA_CONNECTION_TIMEOUT", 15)),
      commandTimeout_(TimeoutFromEnvironment("KITRA_COMMAND_TIMEOUT", 30)) {}
Connection::Connection(std::string connectionString) : Connection() {
    connectionString_ = std::move(connectionString);
}
Connection::~Connection() { readAhead_.reset(); }
Connection::Connection(Connection&&) noexcept = default;
Connection& Connection::operator=(Connection&&) noexcept = default;

void Connection::SetConnectionString(std::string connectionString) {
    if (handles_) throw ObjectOpen();
    connectionString_ = std::move(connectionString);
}

void Connection::SetConnectionTimeout(long seconds) {
    if (seconds < 0) throw NegativeTimeout();
    if (handles_) throw ObjectOpen();  // as in ADO: it only matters before opening
    connectionTimeout_ = seconds;
}

void Connection::SetCommandTimeout(long seconds) {
    if (seconds < 0) throw NegativeTimeout();
    commandTimeout_ = seconds;
}

long Connection::State() const { return handles_ ? StateOpen : StateClosed; }

void Connection::Open(const std::string& connectionString) {
    if (handles_) throw ObjectOpen();
    if (!connectionString.empty()) connectionString_ = connectionString;

    auto handles = std::make_unique<Handles>();
    handles->environment = odbc::Handle(SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    odbc::Check(SQLSetEnvAttr(handles->environment.Get(), SQL_ATTR_ODBC_VERSION,
                              reinterpret_cast<SQLPOINTER>(static_cast<std::intptr_t>(SQL_OV_ODBC3)),
                              0),
                handles->environment, "setting the ODBC version");
    handles->connection = odbc::Handle(SQL_HANDLE_DBC, handles->environment.Get());
    // Set for drivers that keep to it; the MariaDB driver needs its own options (below).
    if (connectionTimeout_ > 0) {
        SQLSetConnectAttr(handles->connection.Get(), SQL_ATTR_LOGIN_TIMEOUT,
                          reinterpret_cast<SQLPOINTER>(static_cast<std::intptr_t>(connectionTimeout_)),
                          0);
    }
    // The wide call makes the driver talk UTF-8 (utf8mb4) with the server, so texts in any
    // script arrive intact.
    odbc::WideString text = odbc::ToWide(
        DriverConnectionString(connectionString_, connectionTimeout_, commandTimeout_));
    const SQLRETURN rc =
        SQLDriverConnectW(handles->connection.Get(), nullptr, text.data(),
                          static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr,
                          SQL_DRIVER_NOPROMPT);
    odbc::Check(rc, handles->connection, "opening the connection");
    handles->connected = true;
    handles_ = std::move(handles);
}

void Connection::Close() {
    if (!handles_) throw ObjectClosed();
    readAhead_.reset();
    handles_.reset();
}

void Connection::ReadAhead(std::vector<std::string> statements, std::size_t furtherConnections,
                           std::size_t window) {
    auto held = std::make_shared<std::vector<std::string>>(std::move(statements));
    const std::size_t count = held->size();
    ReadAhead(count, [held](std::size_t i) { return (*held)[i]; }, furtherConnections, window);
}

void Connection::ReadAhead(std::size_t count, std::function<std::string(std::size_t)> statementAt,
                           std::size_t furtherConnections, std::size_t window) {
    RequireOpen();
    readAhead_.reset();
    if (furtherConnections == 0 || count == 0) return;
    furtherConnections = std::min(furtherConnections, count);
    readAhead_ = std::make_unique<ReadAheadRunner>(
        ReadAheadRunner::Link{connectionString_, connectionTimeout_, commandTimeout_}, count,
        std::move(statementAt), furtherConnections, window);
}

void Connection::StopReadAhead() { readAhead_.reset(); }

void Connection::RequireOpen() const {
    if (!handles_) throw ObjectClosed();
}

template <class Call>
auto Connection::OnLink(Call&& call) -> decltype(call()) {
    RequireOpen();
    try {
        return call();
    } catch (const odbc::LinkFailure&) {
        LoseLink();
        throw;
    }
}

void Connection::LoseLink() {
    // Nothing more can go over this link; closed, the connection can be opened again.
    readAhead_.reset();
    handles_.reset();
}

odbc::ResultRows Connection::ReadAll(const std::string& statement) {
    RequireOpen();
    if (readAhead_) {
        if (std::optional<ReadAheadRunner::Outcome> outcome = readAhead_->Take(statement)) {
            if (outcome->error) {
                // The server is out of reach for this connection as much as for the one that
                // ran the statement.
                if (outcome->linkLost) LoseLink();
                std::rethrow_exception(outcome->error);
            }
            return std::move(outcome->rows);
        }
    }
    return OnLink([&] { return odbc::ExecuteAndReadAll(handles_->connection.Get(), statement); });
}

long Connection::Execute(const std::string& statement) {
    return OnLink(
        [&] { return odbc::ExecuteAndReadAll(handles_->connection.Get(), statement).affectedRows; });
}

}  // namespace kitra::ado
