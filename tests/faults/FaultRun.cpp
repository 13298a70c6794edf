#include "tests/faults/FaultRun.h"

#include <sqlite3.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <thread>

#include "backoffice/BackOffice.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/cli/KitraHost.h"
#include "core/Clock.h"
#include "core/DateTime.h"
#include "settings/KitraConnectorSetting.h"

namespace kitra::test {
namespace {

using backoffice::BackOffice;
using backoffice::Statement;

// An output stream's buffer that keeps everything written and shows each finished line to a
// hook at once, while the writer waits.
class LineWatcher final : public std::streambuf {
public:
    explicit LineWatcher(const std::function<void(const std::string&)>& hook) : hook_(hook) {}
    std::string all;

protected:
    int_type overflow(int_type c) override {
        if (!traits_type::eq_int_type(c, traits_type::eof())) Put(traits_type::to_char_type(c));
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char* text, std::streamsize n) override {
        for (std::streamsize i = 0; i < n; ++i) Put(text[i]);
        return n;
    }

private:
    void Put(char c) {
        all += c;
        if (c != '\n') {
            line_ += c;
            return;
        }
        std::string done;
        done.swap(line_);
        if (hook_) hook_(done);
    }
    const std::function<void(const std::string&)>& hook_;
    std::string line_;
};

std::string Now() { return FormatIsoDateTime(SystemClock().Now()); }

}  // namespace

Counts CountsOf(const ScratchDatabase& database) {
    const auto count = [&](const std::string& sql) { return std::stoi(database.QueryValue(sql)); };
    Counts c;
    c.salesmen = count("SELECT COUNT(*) FROM salesmans WHERE RecordDeleted = 0 AND SalesmanID > 0");
    c.customers = count("SELECT COUNT(*) FROM customers WHERE RecordDeleted = 0 AND CustomerID > 0");
    c.families = count("SELECT COUNT(*) FROM families WHERE RecordDeleted = 0");
    c.subfamilies = count(
        "SELECT COUNT(*) FROM subfamilies s JOIN families f ON f.uid = s.FamilyUID"
        " WHERE s.RecordDeleted = 0 AND f.RecordDeleted = 0");
    c.items = count(
        "SELECT COUNT(*) FROM plus pl JOIN properties p ON pl.PropertyUID = p.UID"
        " JOIN taxes tx ON tx.uid = p.ItemTaxID1 JOIN subfamilies s ON s.uid = pl.SubFamilyID"
        " JOIN families f ON f.uid = s.FamilyUID"
        " WHERE pl.RecordDeleted = 0 AND s.RecordDeleted = 0 AND f.RecordDeleted = 0");
    return c;
}

std::vector<std::string> Summary(const Counts& c, int documents) {
    return {" - Clientes: " + std::to_string(c.customers),
            " - Vendedores: " + std::to_string(c.salesmen),
            " - Famílias: " + std::to_string(c.families),
            " - SubFamílias: " + std::to_string(c.subfamilies),
            " - Artigos: " + std::to_string(c.items),
            " - Transacções: " + std::to_string(documents),
            " - Mov.Caixa: 0",
            " - Recibos: 0"};
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
    std::size_t n = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
    return n;
}

void PrintTo(const ImportDates& dates, std::ostream* out) {
    *out << dates.entities << " / " << dates.transactions;
}

std::string ErrorLineOf(const HostRun& run, const std::string& restaurant) {
    const std::string opening = "kitra-host: o restaurante '" + restaurant + "' teve erros: ";
    const auto at = run.err.find(opening);
    if (at == std::string::npos) return {};
    const auto from = at + opening.size();
    return run.err.substr(from, run.err.find('\n', from) - from);
}

void ExpectDatesWithin(const ImportDates& dates, const HostRun& run, const std::string& name) {
    for (const std::string& date : {dates.entities, dates.transactions}) {
        EXPECT_GE(date, run.started) << name;
        EXPECT_LE(date, run.ended) << name;
    }
}

void FaultRunTest::SetUp() {
    centroDatabase = std::make_unique<ScratchDatabase>("faults_centro", server.Info());
    praiaDatabase = std::make_unique<ScratchDatabase>("faults_praia", server.Info());
    for (const auto* database : {centroDatabase.get(), praiaDatabase.get()}) {
        database->LoadRestaurantSchema();
        database->LoadGeneratedData({"--size", "tiny", "--seed", "5"});
    }
    expected = CountsOf(*praiaDatabase);
    const auto on = [this](const ScratchDatabase& database, const std::string& name,
                           const std::string& prefix, const std::string& series, short workstation) {
        Restaurant r;
        r.Name = name;
        r.ServerName = server.Info().host;
        r.ServerPort = std::to_string(server.Info().port);
        r.ServerDBName = database.Name();
        r.ServerUser = server.Info().user;
        r.ServerPassword = server.Info().password;
        r.WorkstationID = workstation;
        r.ItemIDPrefix = prefix;
        r.DefaultWarehouseID = 1;
        r.DefaultSupplierID = 1;
        r.TransSerial = series;
        r.ImportDateEntities = "2000-01-01 00:00:00";
        r.ImportDateTransactions = "2000-01-01 00:00:00";
        return r;
    };
    centro = on(*centroDatabase, "Centro", "C", "CEN", 1);
    praia = on(*praiaDatabase, "Praia", "P", "PRA", 2);

    // The component is found where the build put it, whatever the machine's registry says; the
    // restaurant time-outs are short, so that a silent or frozen server costs seconds.
    ::setenv("KITRA_COMPONENT_REGISTRY", (folder.Path() / "registry").c_str(), 1);
    ::setenv("KITRA_CONNECTION_TIMEOUT", "2", 1);
    ::setenv("KITRA_COMMAND_TIMEOUT", "2", 1);
    ASSERT_EQ(Host({"init"}), 0);
    ASSERT_EQ(Host({"series", "add", "CEN", "Restaurante Centro"}), 0);
    ASSERT_EQ(Host({"series", "add", "PRA", "Restaurante Praia"}), 0);
}

void FaultRunTest::TearDown() {
    for (const char* variable : {"KITRA_COMPONENT_REGISTRY", "KITRA_CONNECTION_TIMEOUT",
                                 "KITRA_COMMAND_TIMEOUT", "KITRA_HOST_BUSY_TIMEOUT_MS",
                                 "KITRA_HOST_RUN_BUSY_TIMEOUT_MS", "KITRA_HOST_RECORDS_PER_COMMIT"}) {
        ::unsetenv(variable);
    }
    server.ReleaseLock();
    server.Ensure();  // so that the scratch databases can be dropped
    centroDatabase.reset();
    praiaDatabase.reset();
}

void FaultRunTest::MoveBackOfficeTo(const std::filesystem::path& place) {
    std::filesystem::create_directories(place);
    std::filesystem::copy(data_, place, std::filesystem::copy_options::recursive);
    std::filesystem::remove_all(data_);
    data_ = place;
}

void FaultRunTest::StoreSettingsIn(const std::filesystem::path& data, bool documents,
                                   bool cashAndReceipts) {
    // An import refuses settings that leave a document type out, so every one is mapped; what
    // a test does not import, the restaurants do not have: without documents, no transaction
    // and no cash-drawer movement; without cash and receipts, no cash-drawer movement (receipts
    // are movements too).
    for (const ScratchDatabase* database : {centroDatabase.get(), praiaDatabase.get()}) {
        if (!documents) {
            database->Execute("DELETE FROM transactionstenders");
            database->Execute("DELETE FROM transactionsdetails");
            database->Execute("DELETE FROM transactionsheaders");
        }
        if (!cashAndReceipts) database->Execute("DELETE FROM cashdrawer_movements");
    }
    BackOffice office(data);
    KitraConnectorSetting settings(office.utility);
    settings.TaxableGroupEquivalence = {{1, "23"}, {2, "13"}, {3, "6"}};
    settings.InvoiceTransDocument = "VB";
    settings.CreditTransDocument = "FAC";
    settings.StockTransDocument = "GT";
    settings.DefaultTenderPayment = 1;
    settings.DefaultTaxableGroup = 1;
    settings.TenderEquivalence = {{1, "1"}, {2, "2"}, {3, "3"}, {2, "4"}, {4, "5"}};
    settings.CashEntranceTransDocument = "EC";
    settings.CashWithdrawalTransDocument = "SC";
    settings.CustomerPaymentTransDocument = "PCL";
    settings.CustomerPaymentAccountDocument = "ADC";
    settings.Restaurants.Add(centro);
    settings.Restaurants.Add(praia);
    office.settingsStore.Save(settings);
}

int FaultRunTest::Host(std::vector<std::string> arguments, const std::filesystem::path& data) {
    arguments.insert(arguments.begin(), {"--data", (data.empty() ? Data() : data).string()});
    std::ostringstream out, err;
    const int code = backoffice::cli::RunKitraHost(arguments, nullptr, out, err);
    if (code != 0) ADD_FAILURE() << "kitra-host " << arguments[2] << ": " << out.str() << err.str();
    return code;
}

HostRun FaultRunTest::ExecuteOn(const std::filesystem::path& data) {
    HostRun run;
    LineWatcher watcher(onLine);
    std::ostream out(&watcher);
    std::ostringstream err;
    run.started = Now();
    const auto start = std::chrono::steady_clock::now();
    run.exit = backoffice::cli::RunKitraHost({"--data", data.string(), "execute", "--verbose"},
                                             nullptr, out, err);
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    run.ended = Now();
    run.out = watcher.all;
    run.err = err.str();
    return run;
}

void FaultRunTest::RestoreServerBeforePraia(std::function<void(const std::string&)> then) {
    onLine = [this, then](const std::string& line) {
        if (line == "A integrar Restaurante: Praia") server.Ensure();
        if (then) then(line);
    };
}

std::string FaultRunTest::IntegrityCheck() const {
    const std::string path = BackOffice::FileIn(Data()).string();
    sqlite3* db = nullptr;
    std::string result = "cannot open";
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_stmt* statement = nullptr;
        result.clear();
        sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &statement, nullptr);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            result += reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        }
        sqlite3_finalize(statement);
    }
    sqlite3_close(db);
    return result;
}

long FaultRunTest::Count(const std::string& sql) const {
    BackOffice office(Data());
    Statement count(office.GetDatabase(), sql);
    return count.Step() ? count.Column(0).ToInt32() : -1;
}

long FaultRunTest::LogRows() const {
    if (Count("SELECT COUNT(*) FROM sqlite_schema WHERE name = 'Kitra2Log'") == 0) return 0;
    return Count("SELECT COUNT(*) FROM Kitra2Log");
}

void FaultRunTest::NextSecond() {
    const std::string now = Now();
    while (Now() == now) std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

int FaultRunTest::ItemsWithPrefix(const std::string& prefix) const {
    return static_cast<int>(Count("SELECT COUNT(*) FROM items WHERE ItemID LIKE '" + prefix + "%'"));
}

std::string FaultRunTest::LogOf(const std::string& restaurant) const {
    BackOffice office(Data());
    Statement row(office.GetDatabase(),
                  "SELECT Contents FROM Kitra2Log WHERE RestaurantID = ? ORDER BY ImportDate DESC");
    row.Bind({Variant(restaurant)});
    return row.Step() ? row.ColumnText(0) : "(no log row)";
}

ImportDates FaultRunTest::DatesOf(const std::string& restaurant) const {
    BackOffice office(Data());
    for (const auto& r : backoffice::StoredRestaurants(office.settingsStore.StoredText(
             backoffice::kSettingsKey1, backoffice::kSettingsKey2))) {
        if (r.name == restaurant) return {r.importDateEntities, r.importDateTransactions};
    }
    return {};
}

std::vector<std::string> FaultRunTest::LogFiles() const {
    std::vector<std::string> names;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(LogFolder(), ec)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> FaultRunTest::SummaryOf(const HostRun& run, const std::string& restaurant) {
    std::vector<std::string> lines;
    std::istringstream in(run.out);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    const auto at = std::find(lines.begin(), lines.end(), "Resumo Importação Restaurante: " + restaurant);
    if (at == lines.end() || lines.end() - at < 10) return {};
    return std::vector<std::string>(at + 2, at + 10);
}

std::map<std::string, std::string> FaultRunTest::DocumentsOf(const std::filesystem::path& data,
                                                             const std::string& series) {
    BackOffice office(data);
    Statement documents(
        office.GetDatabase(),
        "SELECT d.DocumentTypeID || ' ' || d.DocumentNumber,"
        " (SELECT COUNT(*) FROM document_lines l WHERE l.DocumentKey = d.DocumentKey) || ' lines, ' ||"
        " (SELECT COUNT(*) FROM document_payments p WHERE p.DocumentKey = d.DocumentKey) || ' payments, ' ||"
        " (SELECT COUNT(*) FROM document_taxes t WHERE t.DocumentKey = d.DocumentKey) || ' taxes, ' ||"
        " (SELECT COUNT(*) FROM stock_movements s WHERE s.DocumentKey = d.DocumentKey) || ' stock, total ' ||"
        " printf('%.2f', d.Total) || ', state ' || d.State"
        " FROM documents d WHERE d.SeriesID = ?");
    documents.Bind({Variant(series)});
    std::map<std::string, std::string> shapes;
    while (documents.Step()) shapes[documents.ColumnText(0)] = documents.ColumnText(1);
    return shapes;
}

std::map<std::string, std::string> FaultRunTest::ReferenceDocuments(const std::string& series) {
    const std::filesystem::path reference = folder.Path() / "reference";
    if (!std::filesystem::exists(reference)) {
        const auto strike = std::move(onLine);
        onLine = nullptr;
        EXPECT_EQ(Host({"init"}, reference), 0);
        EXPECT_EQ(Host({"series", "add", "CEN", "Restaurante Centro"}, reference), 0);
        EXPECT_EQ(Host({"series", "add", "PRA", "Restaurante Praia"}, reference), 0);
        StoreSettingsIn(reference, true);
        const HostRun run = ExecuteOn(reference);
        EXPECT_EQ(run.exit, 0) << run.out << run.err;
        onLine = strike;
    }
    return DocumentsOf(reference, series);
}

std::size_t FaultRunTest::ExpectSomeDocumentsEachWhole(const std::string& series) {
    const auto reference = ReferenceDocuments(series);
    const auto saved = DocumentsOf(Data(), series);
    EXPECT_GT(saved.size(), 0u);
    EXPECT_LT(saved.size(), reference.size());
    for (const auto& [document, shape] : saved) {
        const auto whole = reference.find(document);
        if (whole == reference.end()) {
            ADD_FAILURE() << document << " is not among the documents of a whole import";
            continue;
        }
        EXPECT_EQ(shape, whole->second) << document;
    }
    EXPECT_EQ(Orphans(), 0);
    return saved.size();
}

long FaultRunTest::Orphans() const {
    long orphans = 0;
    for (const char* table : {"document_lines", "document_payments", "document_taxes", "stock_movements"}) {
        orphans += Count(std::string("SELECT COUNT(*) FROM ") + table +
                         " t WHERE NOT EXISTS (SELECT 1 FROM documents d WHERE d.DocumentKey = t.DocumentKey)");
    }
    return orphans;
}

}  // namespace kitra::test
