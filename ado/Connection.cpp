#include "ado/Connection.h"

#include <cstdint>
#include <utility>

#include "ado/Odbc.h"
#include "core/Error.h"

namespace kitra::ado {

namespace {
// ADO's errors for using an object in the wrong state; their texts are the ones users know.
Error ObjectClosed() { return Error("Operation is not allowed when the object is closed.", 3704); }
Error ObjectOpen() { return Error("Operation is not allowed when the object is open.", 3705); }
}  // namespace

struct Connection::Handles {
    odbc::Handle environment;  // declared first: freed last
    odbc::Handle connection;
    bool connected = false;

    ~Handles() {
        if (connected) SQLDisconnect(connection.Get());
    }
};

Connection::Connection() = default;
Connection::Connection(std::string connectionString)
    : connectionString_(std::move(connectionString)) {}
Connection::~Connection() = default;
Connection::Connection(Connection&&) noexcept = default;
Connection& Connection::operator=(Connection&&) noexcept = default;

void Connection::SetConnectionString(std::string connectionString) {
    if (handles_) throw ObjectOpen();
    connectionString_ = std::move(connectionString);
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
    if (connectionTimeout_ > 0) {
        SQLSetConnectAttr(handles->connection.Get(), SQL_ATTR_LOGIN_TIMEOUT,
                          reinterpret_cast<SQLPOINTER>(static_cast<std::intptr_t>(connectionTimeout_)),
                          0);
    }
    // The wide call makes the driver talk UTF-8 (utf8mb4) with the server, so texts in any
    // script arrive intact.
    odbc::WideString text = odbc::ToWide(connectionString_);
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
    handles_.reset();
}

void Connection::RequireOpen() const {
    if (!handles_) throw ObjectClosed();
}

odbc::ResultRows Connection::ReadAll(const std::string& statement) {
    RequireOpen();
    return odbc::ExecuteAndReadAll(handles_->connection.Get(), statement);
}

long Connection::Execute(const std::string& statement) {
    RequireOpen();
    return odbc::ExecuteAndReadAll(handles_->connection.Get(), statement).affectedRows;
}

}  // namespace kitra::ado
