// The ways back after a run that went wrong, taken for real: the dates rewound and the
// restaurant imported again doubles nothing (documents the back office numbered itself and cash
// movements included, which the source gives no number), two records alike in every field stay
// two, a record changed in the restaurant replaces its earlier version, a restaurant whose
// workstation changed replaces its own documents, two restaurants in one series are refused
// before a run starts, and a refund that fails leaves no normal document behind.
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/KitraHost.h"
#include "tests/faults/FaultRun.h"

namespace kitra::test {
namespace {

using backoffice::BackOffice;
using backoffice::Statement;

// The back-office tables an import of documents writes.
const std::vector<std::string> kDocumentTables = {
    "documents",       "document_lines",  "document_taxes",      "document_payments",
    "card_payments",   "stock_movements", "account_entries",     "account_settlements",
    "cash_movements",  "document_history"};

class RecoveryTest : public FaultRunTest {
protected:
    // Settings with every document type mapped: documents, cash movements and receipts.
    void StoreAllDocumentSettings() { StoreSettings(true, true); }

    // Every row of every document table, each column as SQLite gives it back.
    std::map<std::string, std::vector<std::string>> DocumentTables() const {
        std::map<std::string, std::vector<std::string>> tables;
        BackOffice office(Data());
        for (const std::string& table : kDocumentTables) {
            Statement rows(office.GetDatabase(), "SELECT * FROM " + table + " ORDER BY rowid");
            while (rows.Step()) {
                std::string row;
                for (int c = 0; c < rows.ColumnCount(); ++c)
                    row += (rows.ColumnIsNull(c) ? "NULL" : rows.ColumnText(c)) + "|";
                tables[table].push_back(row);
            }
        }
        return tables;
    }

    std::string Value(const std::string& sql) const {
        BackOffice office(Data());
        Statement value(office.GetDatabase(), sql);
        return value.Step() ? value.ColumnText(0) : "(none)";
    }

    void RewindBoth(const std::string& to = "2000-01-01 00:00:00") {
        for (const char* name : {"Centro", "Praia"})
            ASSERT_EQ(Host({"state", "set", name, "--entities", to, "--transactions", to}), 0);
    }

    // Adds to Centro two cash movements alike in every field at the same second, and two sales
    // alike in every field at the same second whose DocumentIDs give no number.
    void AddTwins() {
        centroDatabase->Execute(
            "INSERT INTO cashdrawer_movements (MovementTypeID, MovementFlow, SalesmanUID, EntityUID,"
            " Date, value, DocumentID, description) SELECT 3, 0, MIN(uid), NULL,"
            " '2020-02-02 10:00:00', 1250, '', 'Troco' FROM salesmans");
        centroDatabase->Execute(
            "INSERT INTO cashdrawer_movements (MovementTypeID, MovementFlow, SalesmanUID, EntityUID,"
            " Date, value, DocumentID, description) SELECT MovementTypeID, MovementFlow, SalesmanUID,"
            " EntityUID, Date, value, DocumentID, description FROM cashdrawer_movements"
            " WHERE Date = '2020-02-02 10:00:00'");
        for (const char* id : {"T1", "T2"}) {
            centroDatabase->Execute(
                std::string("INSERT INTO transactionsheaders (DocumentTypeUID, DocumentID,"
                            " CreateSalesmanUID, CustomerUID, TransactionStatus, TableTotal,"
                            " CreateDate, ModifyDate) SELECT 17, '") +
                id + "', MIN(uid), NULL, 'N', 300, '2020-02-02 11:00:00', '2020-02-02 11:00:00'"
                     " FROM salesmans");
            centroDatabase->Execute(
                std::string("INSERT INTO transactionsdetails (TransactionUID, PluUid, PluName,"
                            " Quantity, PluUnitPrice, DiscountPercentage, DiscountValue, SaleValue,"
                            " SaleTaxUID, SalesmanUID) SELECT h.UID, (SELECT MIN(UID) FROM plus),"
                            " 'Twin', 2, 150, 0, 0, 300, (SELECT MIN(uid) FROM taxes),"
                            " h.CreateSalesmanUID FROM transactionsheaders h WHERE h.DocumentID = '") +
                id + "'");
            centroDatabase->Execute(
                std::string("INSERT INTO transactionstenders (TransactionUID, PaymentTypeUID, value)"
                            " SELECT h.UID, (SELECT MIN(uid) FROM paymenttypes WHERE code = '1'), 300"
                            " FROM transactionsheaders h WHERE h.DocumentID = '") +
                id + "'");
        }
    }

    // Adds to Centro an invoice with one line and a cash payment of `cents`, made at `created`.
    void AddSale(const std::string& id, int cents, const std::string& created) {
        centroDatabase->Execute(
            "INSERT INTO transactionsheaders (DocumentTypeUID, DocumentID, CreateSalesmanUID,"
            " CustomerUID, TransactionStatus, TableTotal, CreateDate, ModifyDate) SELECT 17, '" + id +
            "', MIN(uid), NULL, 'N', " + std::to_string(cents) + ", '" + created + "', '" + created +
            "' FROM salesmans");
        centroDatabase->Execute(
            "INSERT INTO transactionsdetails (TransactionUID, PluUid, PluName, Quantity, PluUnitPrice,"
            " DiscountPercentage, DiscountValue, SaleValue, SaleTaxUID, SalesmanUID) SELECT h.UID,"
            " (SELECT MIN(UID) FROM plus), 'Sem número', 1, " + std::to_string(cents) + ", 0, 0, " +
            std::to_string(cents) + ", (SELECT MIN(uid) FROM taxes), h.CreateSalesmanUID FROM"
            " transactionsheaders h WHERE h.DocumentID = '" + id + "'");
        centroDatabase->Execute(
            "INSERT INTO transactionstenders (TransactionUID, PaymentTypeUID, value) SELECT h.UID,"
            " (SELECT MIN(uid) FROM paymenttypes WHERE code = '1'), " + std::to_string(cents) +
            " FROM transactionsheaders h WHERE h.DocumentID = '" + id + "'");
    }

    // What `kitra-host reconcile` answers for the restaurant.
    int Reconcile(const std::string& name, std::string& said) const {
        std::ostringstream out, err;
        const int exit = backoffice::cli::RunKitraHost({"--data", Data().string(), "reconcile", name},
                                                       nullptr, out, err);
        said = out.str() + err.str();
        return exit;
    }
};

TEST_F(RecoveryTest, RewindAndImportAgainChangesNoTable) {
    StoreAllDocumentSettings();
    AddTwins();
    const HostRun first = Execute();
    ASSERT_EQ(first.exit, 0) << first.out << first.err;
    const auto before = DocumentTables();
    // Everything the run brings: documents numbered by the source and by the back office, refunds,
    // credit sales, cash documents of every kind, and receipts that settle credit sales.
    EXPECT_GE(Count("SELECT COUNT(*) FROM documents WHERE NumberAssigned = 1 AND Kind IN (1, 2, 4)"), 2);
    EXPECT_GT(Count("SELECT COUNT(*) FROM documents WHERE State = 5"), 0);
    for (const char* type : {"EC", "SC", "ADC", "PCL", "FAC"})
        EXPECT_GT(Count(std::string("SELECT COUNT(*) FROM documents WHERE DocumentTypeID = '") + type + "'"), 0) << type;
    EXPECT_GT(Count("SELECT COUNT(*) FROM account_settlements"), 0);
    // The twins are two documents each, never one.
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents WHERE SeriesID = 'CEN' AND DocumentTypeID = 'SC'"
                    " AND DocumentDate = '2020-02-02 10:00:00'"), 2);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents WHERE SeriesID = 'CEN' AND DocumentTypeID = 'VB'"
                    " AND DocumentDate = '2020-02-02 11:00:00'"), 2);

    RewindBoth();
    NextSecond();
    const HostRun again = Execute();
    ASSERT_EQ(again.exit, 0) << again.out << again.err;
    EXPECT_NE(SummaryOf(again, "Centro").at(6), " - Mov.Caixa: 0");  // it did import them again
    const auto after = DocumentTables();
    for (const std::string& table : kDocumentTables) {
        EXPECT_EQ(after.count(table) ? after.at(table) : std::vector<std::string>{},
                  before.count(table) ? before.at(table) : std::vector<std::string>{})
            << table;
    }
}

TEST_F(RecoveryTest, ARecordChangedInTheRestaurantReplacesItsEarlierVersion) {
    StoreAllDocumentSettings();
    AddTwins();
    ASSERT_EQ(Execute().exit, 0);
    const long documents = Count("SELECT COUNT(*) FROM documents");
    const std::string drawer = Value("SELECT SUM(Amount) FROM cash_movements");

    // One of the two twin sales is changed; the next run selects it alone.
    NextSecond();
    centroDatabase->Execute("UPDATE transactionsheaders SET TableTotal = 350, ModifyDate = NOW()"
                            " WHERE DocumentID = 'T2'");
    NextSecond();
    ASSERT_EQ(Execute().exit, 0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents"), documents);
    EXPECT_EQ(Value("SELECT GROUP_CONCAT(Total, ' ') FROM (SELECT Total FROM documents WHERE"
                    " SeriesID = 'CEN' AND DocumentDate = '2020-02-02 11:00:00' ORDER BY Total)"),
              "3.0 3.5");

    // One of the two twin withdrawals is changed; after a rewind it replaces its former version.
    centroDatabase->Execute("UPDATE cashdrawer_movements SET value = 2000 WHERE Date ="
                            " '2020-02-02 10:00:00' ORDER BY UID DESC LIMIT 1");
    RewindBoth("2020-01-01 00:00:00");
    NextSecond();
    ASSERT_EQ(Execute().exit, 0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents"), documents);
    EXPECT_EQ(Value("SELECT GROUP_CONCAT(Total, ' ') FROM (SELECT Total FROM documents WHERE"
                    " SeriesID = 'CEN' AND DocumentDate = '2020-02-02 10:00:00' ORDER BY Total)"),
              "12.0 20.0");
    EXPECT_EQ(std::stod(Value("SELECT SUM(Amount) FROM cash_movements")), std::stod(drawer) - 8.0);
}

TEST_F(RecoveryTest, ARestaurantWhoseWorkstationChangedReplacesItsOwnDocuments) {
    StoreSettings(true);
    ASSERT_EQ(Execute().exit, 0);
    const long documents = Count("SELECT COUNT(*) FROM documents");
    // The settings stored again as they stand after the run, but for Centro's workstation.
    centro.WorkstationID = 3;
    for (auto* restaurant : {&centro, &praia}) {
        const ImportDates dates = DatesOf(restaurant->Name);
        restaurant->ImportDateEntities = dates.entities;
        restaurant->ImportDateTransactions = dates.transactions;
    }
    StoreSettings(true);
    NextSecond();
    // The first document in Centro's order is changed: every one after it still comes.
    centroDatabase->Execute("UPDATE transactionsheaders SET ModifyDate = NOW() ORDER BY DocumentID LIMIT 5");
    NextSecond();
    const HostRun run = Execute();
    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(SummaryOf(run, "Centro").at(5), " - Transacções: 5");
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents"), documents);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents WHERE SeriesID = 'CEN' AND WorkstationID = 3"), 5);
}

TEST_F(RecoveryTest, TwoRestaurantsInOneSeriesAreRefusedBeforeARunStarts) {
    praia.TransSerial = "cen";  // the same series: codes compare without letter case
    StoreSettings(true);
    const HostRun run = Execute();
    EXPECT_EQ(run.exit, 1);
    EXPECT_NE(run.err.find("Os restaurantes 'Centro' e 'Praia' usam a mesma série de documentos 'CEN'"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("a importação não começou"), std::string::npos) << run.err;
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents"), 0);
    EXPECT_EQ(LogRows(), 0);
    EXPECT_EQ(DatesOf("Centro").transactions, "2000-01-01 00:00:00");

    for (std::vector<std::string> command : {std::vector<std::string>{"validate"}, {"check"}}) {
        command.insert(command.begin(), {"--data", Data().string()});
        std::ostringstream out, err;
        EXPECT_NE(backoffice::cli::RunKitraHost(command, nullptr, out, err), 0) << command[2];
        EXPECT_NE((out.str() + err.str()).find("usam a mesma série de documentos"), std::string::npos)
            << command[2] << ": " << out.str() << err.str();
    }
}

TEST_F(RecoveryTest, ARefundThatFailsLeavesNoNormalDocument) {
    StoreSettings(true);
    {
        // The back office refuses to void any document: the refund after a refunded header's
        // save fails.
        BackOffice office(Data());
        office.GetDatabase().Exec(
            "CREATE TRIGGER refuse_void BEFORE UPDATE OF State ON documents WHEN NEW.State = 5 "
            "BEGIN SELECT RAISE(ABORT, 'anulação recusada'); END");
    }
    const HostRun run = Execute();
    EXPECT_EQ(run.exit, 3) << run.err;
    EXPECT_NE(run.err.find("(etapa 'refundDoc'): "), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("anulação recusada"), std::string::npos) << run.err;
    // The refunded header that failed is not in the back office at all, not even as a sale:
    // Centro holds exactly the documents its importer counted before it.
    const std::string counted = SummaryOf(run, "Centro").at(5);
    ASSERT_TRUE(counted.starts_with(" - Transacções: ")) << counted;
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents WHERE SeriesID = 'CEN'"),
              std::stol(counted.substr(17)));
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents WHERE State = 5"), 0);
    EXPECT_EQ(IntegrityCheck(), "ok");
}

TEST_F(RecoveryTest, ANullTotalSaysWhereTheStepStoppedAndReconcileShowsWhatWasLeft) {
    StoreSettings(true);
    // A restaurant whose total may be NULL (older databases allow it).
    centroDatabase->Execute("ALTER TABLE transactionsheaders MODIFY TableTotal INT NULL");
    centroDatabase->Execute("UPDATE transactionsheaders SET TableTotal = NULL WHERE DocumentID ="
                            " (SELECT DocumentID FROM (SELECT DocumentID FROM transactionsheaders"
                            " ORDER BY DocumentID LIMIT 1 OFFSET 10) x)");
    const HostRun run = Execute();
    EXPECT_EQ(run.exit, 3) << run.err;
    EXPECT_NE(run.err.find("O passo 'Transacções' parou no registo '"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("(etapa 'TableTotal'): Invalid use of Null"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("Os registos seguintes desse passo não foram importados."),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("A causa está nos dados do restaurante"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("kitra-host --data " + Data().string() + " reconcile Centro"),
              std::string::npos)
        << run.err;

    std::ostringstream out, err;
    EXPECT_EQ(backoffice::cli::RunKitraHost({"--data", Data().string(), "reconcile", "Centro"},
                                            nullptr, out, err),
              3)
        << out.str() << err.str();
}

// Documents whose DocumentID gives no number among the numbered ones of their series: the first
// of them comes before FT0000001 and takes number 1, which FT0000001 then takes from it; two of
// them at one second of one salesman and customer stay two, also when one changes. Imported,
// rewound and imported again, each restaurant document is in the back office once, and
// reconcile finds nothing to mend.
TEST_F(RecoveryTest, DocumentsWithoutANumberAreKeptBesideTheNumberedOnesOfTheirSeries) {
    StoreSettings(true);
    AddSale("FT0000000", 1250, "2020-03-03 09:00:00");
    AddSale("S1", 6420, "2020-03-03 10:00:00");
    AddSale("S2", 6920, "2020-03-03 10:00:00");
    const auto restaurantInvoices = [this] {
        return std::stol(centroDatabase->QueryValue(
            "SELECT COUNT(*) FROM transactionsheaders WHERE DocumentTypeUID = 17"));
    };
    const auto backOfficeInvoices = [this] {
        return Count("SELECT COUNT(*) FROM documents WHERE SeriesID = 'CEN' AND DocumentTypeID = 'VB'");
    };
    ASSERT_GT(std::stol(centroDatabase->QueryValue(
                  "SELECT COUNT(*) FROM transactionsheaders WHERE DocumentID = 'FT0000001'")),
              0);
    const HostRun first = Execute();
    ASSERT_EQ(first.exit, 0) << first.out << first.err;
    EXPECT_EQ(backOfficeInvoices(), restaurantInvoices());
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents WHERE SeriesID = 'CEN' AND DocumentTypeID = 'VB'"
                    " AND NumberAssigned = 1"),
              3);
    // It moved on with every numbered invoice that came after it; its history keeps where it was.
    EXPECT_EQ(Value("SELECT GROUP_CONCAT(Event || ' ' || DocumentNumber) FROM document_history"
                    " WHERE SeriesID = 'CEN' AND Event = 'renumbered'"),
              "renumbered 1");
    EXPECT_EQ(Value("SELECT NumberAssigned FROM documents WHERE SeriesID = 'CEN' AND"
                    " DocumentTypeID = 'VB' AND DocumentNumber = 1"),
              "0");
    std::string said;
    EXPECT_EQ(Reconcile("Centro", said), 0) << said;

    const auto before = DocumentTables();
    RewindBoth();
    NextSecond();
    const HostRun again = Execute();
    ASSERT_EQ(again.exit, 0) << again.out << again.err;
    EXPECT_EQ(SummaryOf(again, "Centro").at(5), SummaryOf(first, "Centro").at(5));
    const auto after = DocumentTables();
    for (const std::string& table : kDocumentTables) {
        EXPECT_EQ(after.count(table) ? after.at(table) : std::vector<std::string>{},
                  before.count(table) ? before.at(table) : std::vector<std::string>{})
            << table;
    }
    EXPECT_EQ(Reconcile("Centro", said), 0) << said;

    // S2 changes in the restaurant: the next run replaces S2, never S1.
    NextSecond();
    centroDatabase->Execute("UPDATE transactionsheaders SET TableTotal = 7020, ModifyDate = NOW()"
                            " WHERE DocumentID = 'S2'");
    centroDatabase->Execute("UPDATE transactionsdetails d JOIN transactionsheaders h ON h.UID ="
                            " d.TransactionUID SET d.PluUnitPrice = 7020, d.SaleValue = 7020 WHERE"
                            " h.DocumentID = 'S2'");
    centroDatabase->Execute("UPDATE transactionstenders t JOIN transactionsheaders h ON h.UID ="
                            " t.TransactionUID SET t.value = 7020 WHERE h.DocumentID = 'S2'");
    NextSecond();
    ASSERT_EQ(Execute().exit, 0);
    EXPECT_EQ(backOfficeInvoices(), restaurantInvoices());
    EXPECT_EQ(Value("SELECT GROUP_CONCAT(Total, ' ') FROM (SELECT Total FROM documents WHERE"
                    " SeriesID = 'CEN' AND DocumentDate = '2020-03-03 10:00:00' ORDER BY Total)"),
              "64.2 70.2");
    EXPECT_EQ(Reconcile("Centro", said), 0) << said;
}

}  // namespace
}  // namespace kitra::test
