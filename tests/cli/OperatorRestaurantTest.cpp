// kitra-host against a real restaurant database on the private MariaDB server: what `check`
// tells before a run (the driver's reason, the server's clock, the rows pending) and how
// `state set` brings back what a failed run skipped.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <thread>
#include <memory>
#include <string>

#include "backoffice/BackOffice.h"
#include "tests/cli/KitraHostRun.h"
#include "tests/support/ScratchDatabase.h"

namespace kitra {
namespace {

using testing::HostResult;

class OperatorRestaurantTest : public testing::KitraHostTest {
protected:
    void SetUp() override {
        KitraHostTest::SetUp();
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        database_ = std::make_unique<test::ScratchDatabase>(std::string("op_") + info->name());
        database_->LoadRestaurantSchema();
    }

    // Settings with one restaurant "Centro" on the scratch database.
    std::string Settings(const std::string& password, const std::string& databaseName,
                         const std::string& entities = "2010-01-01 00:00:00") const {
        const test::MariaDbServer& server = database_->Server();
        return "<KitraConnectorSetting InvoiceTransDocument=\"VB\" CreditTransDocument=\"FAC\" "
               "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" "
               "CashWithdrawalTransDocument=\"SC\" CustomerPaymentTransDocument=\"PCL\" "
               "CustomerPaymentAccountDocument=\"ADC\" "
               "DefaultTenderPayment=\"1\" DefaultTaxableGroup=\"1\"><Restaurants>"
               "<Restaurant Name=\"Centro\" ServerName=\"" + server.host + "\" ServerPort=\"" +
               std::to_string(server.port) + "\" ServerDBName=\"" + databaseName + "\" ServerUser=\"" +
               server.user + "\" ServerPassword=\"" + password + "\" WorkstationID=\"1\" "
               "DefaultWarehouseID=\"1\" DefaultSupplierID=\"1\" TransSerial=\"EXT\" ImportDateEntities=\"" + entities +
               "\" ImportDateTransactions=\"2010-01-01 00:00:00\"/></Restaurants><TenderEquivalence/>"
               "<TaxableGroupEquivalence/></KitraConnectorSetting>";
    }
    // Stores settings whose one restaurant is the scratch database, as the test user.
    void LoadGoodSettings() {
        ASSERT_EQ(Run("settings load " + WriteSettings(Settings(database_->Server().password, database_->Name()))).exit, 0);
    }

    bool SalesmanImported(double id) {
        backoffice::BackOffice office(Data());
        return office.salesmen.Exists(id);
    }

    // Salesmen on the restaurant: "(SalesmanID, 'name', telephone, mobile, 'ModifyDate'), ...".
    void AddSalesmen(const std::string& rows) {
        database_->Execute("INSERT INTO salesmans (SalesmanID, SalesmanName, Telephone, MobilePhone, ModifyDate) "
                           "VALUES " + rows);
    }

    // Two runs of one restaurant within one second would write the same log key; the second's
    // row would not be stored (and the run would say so). Tests that run again wait.
    static void NextSecond() {
        const std::time_t now = std::time(nullptr);
        while (std::time(nullptr) == now) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }

    std::unique_ptr<test::ScratchDatabase> database_;
};

TEST_F(OperatorRestaurantTest, CheckCountsThePendingRowsAndSeesTheClocksAgree) {
    AddSalesmen("(1, 'Ana', '1', '2', '2024-01-01 00:00:00'), (2, 'Rui', '1', '2', '2024-01-01 00:00:00'), "
                "(3, 'Eva', '1', '2', '2009-01-01 00:00:00')");
    database_->Execute("INSERT INTO families (code, description, ModifyDate) VALUES ('10', 'Bebidas', '2024-01-01 00:00:00')");
    LoadGoodSettings();
    const HostResult json = Run("check --json");
    EXPECT_EQ(json.exit, 0) << json.out;
    EXPECT_TRUE(json.out.starts_with("{\"ok\":true,\"settingsValid\":true,\"restaurants\":[{\"name\":\"Centro\","
                                     "\"reachable\":true,\"connectionError\":null,\"clockSkewSeconds\":"))
        << json.out;
    EXPECT_NE(json.out.find("\"pending\":{\"salesmen\":2,\"customers\":0,\"families\":1,\"subfamilies\":0,"
                            "\"items\":0,\"transactions\":0,\"cashMovements\":0,\"receipts\":0}"),
              std::string::npos)
        << json.out;
    const HostResult table = Run("check");
    EXPECT_EQ(table.exit, 0) << table.out;
    EXPECT_NE(table.out.find("\nCentro\tok\t"), std::string::npos) << table.out;
    EXPECT_NE(table.out.find(" s\t2\t0\t1\t0\t0\t0\t0\t0\n"), std::string::npos) << table.out;
}

TEST_F(OperatorRestaurantTest, CheckWarnsOfASkewedClock) {
    LoadGoodSettings();
    // This machine's clock read three hours off the server's: a time zone that differs.
    const HostResult r = Run("check --json", "TZ=XYZ+3");
    EXPECT_EQ(r.exit, 3) << r.out;
    const auto at = r.out.find("\"clockSkewSeconds\":");
    ASSERT_NE(at, std::string::npos) << r.out;
    const long skew = std::stol(r.out.substr(at + 19));
    EXPECT_GE(std::labs(skew), 2 * 3600) << r.out;
    EXPECT_NE(r.out.find("\"warnings\":[\"O relógio do servidor"), std::string::npos) << r.out;
    const HostResult table = Run("check", "TZ=XYZ+3");
    EXPECT_EQ(table.exit, 3);
    EXPECT_NE(table.out.find("Centro: AVISO: O relógio do servidor"), std::string::npos) << table.out;
}

TEST_F(OperatorRestaurantTest, CheckGivesTheDriversReason) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings("wrong", database_->Name()))).exit, 0);
    HostResult r = Run("check");
    EXPECT_EQ(r.exit, 3);
    EXPECT_NE(r.out.find("\nCentro\tFALHOU\t-\t-"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Centro: ERRO: Não foi possível ligar ao servidor: "), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Access denied for user"), std::string::npos) << r.out;

    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(database_->Server().password, "no_such_db"))).exit, 0);
    r = Run("check --json");
    EXPECT_EQ(r.exit, 3);
    EXPECT_NE(r.out.find("\"reachable\":false,\"connectionError\":\""), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Unknown database 'no_such_db'"), std::string::npos) << r.out;
}

// Records an importer left out are warnings of the log; the run tells them on stderr, one line
// per restaurant with how many, the first, and the command that shows the whole log, and still
// exits 0.
TEST_F(OperatorRestaurantTest, ARunWithWarningsSaysSoOnStderrAndExitsZero) {
    // The family changed before the import date, so it is not imported; its subfamilies are.
    database_->Execute("INSERT INTO families (uid, code, description, ModifyDate) VALUES "
                       "(1, '10', 'Bebidas', '2009-01-01 00:00:00')");
    database_->Execute("INSERT INTO subfamilies (uid, code, FamilyUID, Description, ModifyDate) VALUES "
                       "(1, '1', 1, 'Cervejas', '2024-01-01 00:00:00'), (2, '2', 1, 'Vinhos', '2024-01-01 00:00:00')");
    LoadGoodSettings();
    const HostResult run = Run("execute --verbose");
    EXPECT_EQ(run.exit, 0) << run.out;
    const std::string first =
        "Não foi possível adicionar a SubFamília 'Cervejas' porque não existe a família com o código '10'";
    // Shown as it happens, as well as logged.
    EXPECT_NE(run.out.find(first + "\n"), std::string::npos) << run.out;
    const std::string start = "kitra-host: o restaurante 'Centro' teve 2 avisos (registos deixados de fora); o "
                              "primeiro: SubFamílias - " + first + ". Log completo: ";
    const auto at = run.err.find(start);
    ASSERT_NE(at, std::string::npos) << run.err;
    const std::string line = run.err.substr(at, run.err.find('\n', at) - at);
    EXPECT_EQ(run.err.find("kitra-host: o restaurante 'Centro'", at + 1), std::string::npos) << run.err;
    // The command works when pasted.
    const std::string command = line.substr(start.size());
    const std::string shown = (folder / "shown.txt").string();
    ASSERT_EQ(std::system(("KITRA_COMPONENT_REGISTRY=" + Quote((folder / "registry").string()) + " " + command +
                           " >" + Quote(shown) + " 2>&1").c_str()),
              0)
        << command;
    const std::string log = ReadWhole(shown);
    EXPECT_NE(log.find(first), std::string::npos) << log;
    EXPECT_NE(log.find("Vinhos"), std::string::npos) << log;
}

TEST_F(OperatorRestaurantTest, StateSetThenExecuteImportsWhatAFailedRunSkipped) {
    // Ana's NULL telephone ends the salesmen's import before Rui.
    AddSalesmen("(11, 'Ana', NULL, '2', '2024-01-01 00:00:00'), (12, 'Rui', '1', '2', '2024-01-01 00:00:00')");
    LoadGoodSettings();
    const HostResult failed = Run("execute");
    EXPECT_EQ(failed.exit, 3) << failed.out;
    EXPECT_NE(failed.err.find("o restaurante 'Centro' teve erros: Vendedores - ## Erro ## ao importar a tabela de "
                              "vendedores. Vendedor: 11 : Telephone"),
              std::string::npos)
        << failed.err;
    EXPECT_FALSE(SalesmanImported(12));

    // The data is mended, but the dates have moved past it: the next run imports nothing.
    database_->Execute("UPDATE salesmans SET Telephone = '1' WHERE SalesmanID = 11");
    NextSecond();
    EXPECT_EQ(Run("execute").exit, 0);
    EXPECT_FALSE(SalesmanImported(11));
    EXPECT_FALSE(SalesmanImported(12));

    // Rewound as the failed run's message said, the next run imports both.
    const HostResult rewind = Run("state set Centro --entities '2010-01-01 00:00:00'");
    EXPECT_EQ(rewind.exit, 0) << rewind.out;
    NextSecond();
    const HostResult again = Run("execute");
    EXPECT_EQ(again.exit, 0) << again.out;
    EXPECT_TRUE(SalesmanImported(11));
    EXPECT_TRUE(SalesmanImported(12));
}

}  // namespace
}  // namespace kitra
