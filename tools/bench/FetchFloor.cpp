// The fetch floor: every statement an import run issues against the restaurant, as many times
// as the run issues it and in the same order, fetched whole through the same connection and
// recordset classes, with nothing written anywhere. The documents' lines and payments are read
// ahead on further connections as the import reads them (Connection::ReadAhead, the same
// connections and window), each result taken in order and dropped; fetched one after another
// instead, they measure the round trip's latency rather than a floor. What the import takes
// beyond the floor is the host's and the connector's own work.
#include "tools/bench/Bench.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "restaurant/Statements.h"

namespace kitra::bench {
namespace {

using SteadyClock = std::chrono::steady_clock;

class StatementTimer {
public:
    explicit StatementTimer(FetchResult& result) : result_(result) {}

    // Fetches the statement's whole result (or, read ahead, waits for it) and counts it under
    // `kind`.
    ado::Recordset Fetch(const std::string& kind, const std::string& statement,
                         ado::Connection& connection) {
        const SteadyClock::time_point started = SteadyClock::now();
        ado::Recordset rows;
        rows.Open(statement, connection);
        const double seconds =
            std::chrono::duration<double>(SteadyClock::now() - started).count();
        FetchKind& entry = Entry(kind);
        entry.statements += 1;
        entry.rows += rows.RecordCount();
        entry.seconds += seconds;
        return rows;
    }

private:
    FetchKind& Entry(const std::string& kind) {
        auto found = std::find_if(result_.kinds.begin(), result_.kinds.end(),
                                  [&](const FetchKind& k) { return k.kind == kind; });
        if (found != result_.kinds.end()) return *found;
        result_.kinds.push_back({kind, 0, 0, 0.0});
        return result_.kinds.back();
    }

    FetchResult& result_;
};

}  // namespace

namespace {

// The connection string the run builds for a restaurant, character for character.
std::string RestaurantConnectionString(const FetchFloorOptions& options) {
    return "Driver={MySQL ODBC 5.1 Driver};Server=" + options.server + ";Database=" +
           options.database + "; User=" + options.user + ";Password=" + options.password +
           ";Option=3;Port=" + options.port;
}

}  // namespace

long CountTransactionHeaders(const FetchFloorOptions& options) {
    ado::Connection connection;
    connection.Open(RestaurantConnectionString(options));
    ado::Recordset count;
    count.Open("SELECT COUNT(*) FROM transactionsheaders", connection);
    const long headers = count.Field(std::size_t{0}).ToInt32();
    connection.Close();
    return headers;
}

FetchResult MeasureFetchFloor(const FetchFloorOptions& options, const FetchMode& mode) {
    FetchResult result;
    StatementTimer timer(result);
    const ServerCpu server(options.serverPid);
    const double cpuBefore = OwnCpuSeconds();
    const SteadyClock::time_point started = SteadyClock::now();

    ado::Connection connection;
    connection.SetConnectionString(RestaurantConnectionString(options));
    connection.SetCursorLocation(ado::CursorLocationEnum::UseClient);

    // Each importer opens the connection for its statement and closes it when its rows are done.
    namespace r = kitra::restaurant;
    const auto importer = [&](const std::string& kind, const std::string& statement) {
        connection.Open();
        timer.Fetch(kind, statement, connection);
        connection.Close();
    };
    const std::string& entities = options.entityImportDate;
    const std::string& transactions = options.transactionImportDate;
    importer("Vendedores", r::SalesmenStatement(entities));
    importer("Clientes", r::CustomersStatement(entities));
    importer("Famílias", r::FamiliesStatement(entities));
    importer("SubFamílias", r::SubfamiliesStatement(entities));
    importer("Artigos", r::ItemsStatement(entities));

    // The documents' importer issues the lines and payments of each mapped header on the same
    // connection, in the headers' order: read ahead, as the import has them read, or one after
    // another.
    connection.Open();
    ado::Recordset headers =
        timer.Fetch("Transacções", r::SaleDocumentsStatement(transactions), connection);
    std::vector<std::string> uids;
    for (; !headers.Eof(); headers.MoveNext()) {
        const std::int32_t type = headers["DocumentTypeUID"].ToInt32();
        if (std::find(options.mappedDocumentTypes.begin(), options.mappedDocumentTypes.end(),
                      type) == options.mappedDocumentTypes.end()) {
            continue;
        }
        uids.push_back(headers["UID"].ToText());
    }
    headers.Close();
    // Statement 2i reads the lines of header i, 2i + 1 its payments.
    const auto statementAt = [&uids](std::size_t i) {
        return i % 2 == 0 ? r::DocumentLinesStatement(uids[i / 2]) : r::DocumentTendersStatement(uids[i / 2]);
    };
    const std::size_t count = uids.size() * 2;
    if (mode.furtherConnections > 0) {
        connection.ReadAhead(count, statementAt, mode.furtherConnections, mode.window);
    }
    for (std::size_t i = 0; i < count; ++i) {
        timer.Fetch(i % 2 == 0 ? "Transacções (linhas)" : "Transacções (pagamentos)", statementAt(i), connection);
    }
    connection.StopReadAhead();
    connection.Close();

    importer("Movimentos Caixa", r::CashMovementsStatement(transactions));
    importer("Recibos", r::ReceiptsStatement(transactions));

    result.seconds = std::chrono::duration<double>(SteadyClock::now() - started).count();
    result.cpuSeconds = OwnCpuSeconds() - cpuBefore;
    result.serverCpuSeconds = server.Since();
    return result;
}

}  // namespace kitra::bench
