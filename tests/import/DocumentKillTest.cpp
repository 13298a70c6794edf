// A run killed in the middle of the documents: kitra-host execute imports a generated
// restaurant and is killed (SIGKILL) once documents are arriving. The back office is intact and
// holds only whole documents: each has every line and payment the restaurant gives its header.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <thread>

#include "backoffice/BackOffice.h"
#include "import/KitraExecutioner.h"
#include "settings/KitraConnectorSetting.h"
#include "tests/hostsupport/TempFolder.h"
#include "tests/support/RestaurantDatabaseTest.h"

namespace kitra {
namespace {

using backoffice::BackOffice;
using backoffice::Statement;

class DocumentKillTest : public test::RestaurantDatabaseTest {
protected:
    std::filesystem::path Data() const { return folder.Path() / "data"; }

    void StoreSettings() {
        BackOffice office(Data());
        KitraConnectorSetting settings(office.utility);
        settings.InvoiceTransDocument = "VB";
        settings.CreditTransDocument = "FAC";
        settings.StockTransDocument = "GT";
        // Every document type, as an import needs; the run is killed before its cash
        // movements and receipts.
        settings.CashEntranceTransDocument = "EC";
        settings.CashWithdrawalTransDocument = "SC";
        settings.CustomerPaymentTransDocument = "PCL";
        settings.CustomerPaymentAccountDocument = "ADC";
        settings.DefaultTenderPayment = 1;
        settings.DefaultTaxableGroup = 1;
        settings.TaxableGroupEquivalence = {{1, "23"}, {2, "13"}, {3, "6"}};
        settings.TenderEquivalence = {{1, "1"}, {2, "2"}, {3, "3"}, {2, "4"}, {4, "5"}};
        Restaurant r;
        r.Name = "Centro";
        r.ServerName = Server().host;
        r.ServerPort = std::to_string(Server().port);
        r.ServerDBName = Database().Name();
        r.ServerUser = Server().user;
        r.ServerPassword = Server().password;
        r.WorkstationID = 1;
        r.ItemIDPrefix = "C";
        r.DefaultWarehouseID = 1;
        r.DefaultSupplierID = 1;
        r.TransSerial = "EXT";
        r.ImportDateEntities = r.ImportDateTransactions = "2000-01-01 00:00:00";
        settings.Restaurants.Add(r);
        office.settingsStore.Save(settings);
    }

    // Starts kitra-host execute on the back office; its output goes nowhere.
    pid_t StartExecute() {
        const pid_t child = ::fork();
        if (child == 0) {
            ::setenv("KITRA_COMPONENT_REGISTRY", (folder.Path() / "registry").c_str(), 1);
            // Small groups, committed one after another: the test sees documents arrive and
            // kills the run between two commits, as a run of a large restaurant would be.
            ::setenv("KITRA_HOST_RECORDS_PER_COMMIT", "10", 1);
            std::freopen("/dev/null", "w", stdout);
            std::freopen("/dev/null", "w", stderr);
            ::execl(KITRA_HOST_PROGRAM, KITRA_HOST_PROGRAM, "--data", Data().c_str(), "execute",
                    static_cast<char*>(nullptr));
            ::_exit(127);
        }
        return child;
    }

    long HostCount(const std::string& sql) {
        BackOffice office(Data());
        Statement count(office.GetDatabase(), sql);
        return count.Step() ? count.Column(0).ToInt32() : -1;
    }

    testing::TempFolder folder;
};

TEST_F(DocumentKillTest, AKilledRunLeavesOnlyWholeDocuments) {
    Database().LoadGeneratedData({"--size", "demo", "--seed", "3"});
    BackOffice::Create(Data());
    StoreSettings();

    const pid_t run = StartExecute();
    ASSERT_GT(run, 0);
    // Kill it once some documents are in, well before all 3,600 are.
    long saved = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (saved < 40 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        try {
            saved = HostCount("SELECT COUNT(*) FROM documents");
        } catch (const Error&) {
            saved = 0;  // the back office was busy for a moment
        }
    }
    ASSERT_EQ(::kill(run, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(run, &status, 0), run);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the run ended before it could be killed";

    BackOffice office(Data());
    Statement integrity(office.GetDatabase(), "PRAGMA integrity_check");
    ASSERT_TRUE(integrity.Step());
    EXPECT_EQ(integrity.ColumnText(0), "ok");

    // What the restaurant gives each imported header, by its host type and number.
    std::map<std::pair<std::string, std::int32_t>, long> expected;  // -> lines
    for (const auto& row : Database().Query(
             "SELECT CASE th.DocumentTypeUID WHEN 17 THEN 'VB' WHEN 11 THEN 'FAC' ELSE 'GT' END,"
             " th.DocumentID,"
             " (SELECT COUNT(*) FROM transactionsdetails td JOIN taxes tx ON tx.uid = td.SaleTaxUID"
             "  JOIN plus pl ON pl.UID = td.PluUid WHERE td.TransactionUID = th.UID)"
             " FROM transactionsheaders th WHERE th.DocumentTypeUID IN (11, 13, 17)")) {
        const auto number = static_cast<std::int32_t>(KitraExecutioner::DocumentNumberFromID(row[1]));
        expected[{row[0], number}] = std::stol(row[2]);
    }
    Statement documents(office.GetDatabase(),
                        "SELECT d.DocumentTypeID, d.DocumentNumber, (SELECT COUNT(*) FROM "
                        "document_lines l WHERE l.DocumentKey = d.DocumentKey) FROM documents d");
    long checked = 0;
    while (documents.Step()) {
        const std::pair<std::string, std::int32_t> key{documents.ColumnText(0),
                                                       documents.Column(1).ToInt32()};
        ASSERT_TRUE(expected.count(key)) << key.first << " " << key.second;
        EXPECT_EQ(documents.Column(2).ToInt32(), expected[key]) << key.first << " " << key.second;
        ++checked;
    }
    EXPECT_GT(checked, 0);
    // No line, payment or stock movement without its document.
    for (const char* table : {"document_lines", "document_payments", "stock_movements"}) {
        Statement orphans(office.GetDatabase(),
                          std::string("SELECT COUNT(*) FROM ") + table +
                              " t WHERE NOT EXISTS (SELECT 1 FROM documents d WHERE "
                              "d.DocumentKey = t.DocumentKey)");
        ASSERT_TRUE(orphans.Step());
        EXPECT_EQ(orphans.Column(0).ToInt32(), 0) << table;
    }
    // The run did not reach its end: the import dates did not move.
    KitraConnectorSetting settings(office.utility);
    ASSERT_TRUE(office.settingsStore.Load(settings));
    EXPECT_EQ(settings.Restaurants.begin()->ImportDateTransactions, "2000-01-01 00:00:00");
}

}  // namespace
}  // namespace kitra
