#pragma once
// A connection to the restaurant database over ODBC, shaped like the ADO connection the
// importers are written against: a connection string, a cursor location, a state, Open and
// Close. Statements run through Recordset::Open (rows) or Execute (no rows).
//
// Failures raise kitra::Error. For the driver's failures (cannot connect, wrong password,
// unknown database, bad statement) the description is the driver's own message, e.g.
// "[ma-3.1.15]Access denied for user 'kitra'@'127.0.0.1' (using password: YES)", and the
// number is the driver's native error code (1045, 1049, 2002, 1064, 2013, ...).
//
// No call waits for the server without limit: opening gives up after ConnectionTimeout seconds
// and a statement after CommandTimeout seconds without an answer, whether the server is
// unreachable, silent or frozen. A new connection starts from ADO's defaults (15 s and 30 s),
// or from $KITRA_CONNECTION_TIMEOUT and $KITRA_COMMAND_TIMEOUT when they hold whole seconds:
// the fault suite keeps its runs short with them, and a site behind a slow link can give more.
// A connection whose link to the server was lost (a time-out, a server that went away) closes
// itself when it raises the error, so the next Open starts afresh.
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kitra::ado {

namespace odbc {
struct ResultRows;
}
class ReadAheadRunner;

// The connection string as the driver receives it: the given text, followed by the driver's
// own time-out options (CONN_TIMEOUT, READ_TIMEOUT, WRITE_TIMEOUT) for those that the text does
// not set itself and whose value is above 0. The given text is never changed.
std::string DriverConnectionString(const std::string& connectionString, long connectionTimeout,
                                   long commandTimeout);

// ADO's numbers: the importers compare State() with 1 and set the client-side cursor (3).
enum ObjectStateEnum : long { StateClosed = 0, StateOpen = 1 };
enum class CursorLocationEnum : long { UseServer = 2, UseClient = 3 };

class Connection {
public:
    Connection();
    explicit Connection(std::string connectionString);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    Connection(Connection&&) noexcept;
    Connection& operator=(Connection&&) noexcept;

    // The ODBC connection string, passed to the driver exactly as given, e.g.
    // "Driver={MySQL ODBC 5.1 Driver};Server=127.0.0.1;Database=r1; User=u;Password=p;Option=3;Port=3306".
    const std::string& ConnectionString() const { return connectionString_; }
    void SetConnectionString(std::string connectionString);

    // Every recordset reads its whole result when it opens, whichever location is set; the
    // value is kept because the connector sets it as it always has.
    CursorLocationEnum CursorLocation() const { return cursorLocation_; }
    void SetCursorLocation(CursorLocationEnum location) { cursorLocation_ = location; }

    // Seconds to wait for the server when opening (ADO's default: 15); 0 waits without limit.
    long ConnectionTimeout() const { return connectionTimeout_; }
    void SetConnectionTimeout(long seconds);

    // Seconds a statement waits for each answer of the server (ADO's default: 30); 0 waits
    // without limit. It applies from the next Open: the driver takes it when it connects.
    long CommandTimeout() const { return commandTimeout_; }
    void SetCommandTimeout(long seconds);

    // StateClosed (0) or StateOpen (1).
    long State() const;

    // Opens with the given connection string, which then becomes the connection's own; an
    // empty one opens with the string already set. Opening an open connection is an error.
    void Open(const std::string& connectionString = {});
    // Closes; closing a closed connection is an error, as in ADO.
    void Close();

    // Runs a statement that returns no rows (INSERT, UPDATE, CREATE, ...) and returns the
    // number of rows it affected (-1 when the driver does not know).
    long Execute(const std::string& statement);

    // The statements (each returning rows) that this open connection will be asked for next,
    // in this order: they are run ahead on `furtherConnections` connections of their own
    // (opened with this one's string and time-outs), never more than `window` statements
    // ahead, and a Recordset::Open of the next one takes its result instead of running it
    // again. Each statement runs once; its failure is raised where it is asked for, as if it
    // had run here (a lost link closes this connection too). A statement asked for out of
    // order, or one no further connection could run, runs here as usual. Ends with
    // StopReadAhead or Close; 0 further connections means none is run ahead.
    void ReadAhead(std::vector<std::string> statements, std::size_t furtherConnections,
                   std::size_t window);
    // The same for `count` statements whose texts `statementAt(i)` makes when they are needed,
    // so that a long list holds no more than the window in memory.
    void ReadAhead(std::size_t count, std::function<std::string(std::size_t)> statementAt,
                   std::size_t furtherConnections, std::size_t window);
    void StopReadAhead();

private:
    friend class Recordset;
    friend class ReadAheadRunner;
    struct Handles;

    void RequireOpen() const;
    // Runs one call on the open connection; a lost link closes the connection before the
    // error goes on.
    template <class Call>
    auto OnLink(Call&& call) -> decltype(call());
    // Closes after the link to the server was lost (the reading ahead with it).
    void LoseLink();
    // Runs the statement and reads its whole result (for Recordset::Open).
    odbc::ResultRows ReadAll(const std::string& statement);

    std::string connectionString_;
    CursorLocationEnum cursorLocation_ = CursorLocationEnum::UseServer;
    long connectionTimeout_;
    long commandTimeout_;
    std::unique_ptr<Handles> handles_;  // present while open
    // Declared after the handles: it ends first, its threads joined before the link goes.
    std::unique_ptr<ReadAheadRunner> readAhead_;
};

}  // namespace kitra::ado
