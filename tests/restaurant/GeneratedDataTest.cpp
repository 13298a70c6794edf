// Generated restaurant data loaded into the schema: the relationships the importers rely on
// hold, and the generator program writes the same file for the same seed.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "restaurant/generator/TaxNumbers.h"
#include "tests/support/Process.h"
#include "tests/support/RestaurantDatabaseTest.h"

namespace kitra::restaurant {
namespace {

class GeneratedDataTest : public test::RestaurantDatabaseTest {
protected:
    void SetUp() override {
        RestaurantDatabaseTest::SetUp();
        Database().LoadGeneratedData({"--size", "tiny", "--seed", "5", "--base-date",
                                      "2025-01-31 20:00:00", "--days", "30"});
    }
    long Count(const std::string& sql) { return std::stol(Database().QueryValue(sql)); }
};

TEST_F(GeneratedDataTest, EveryReceiptLinkPointsFromACreditSaleToAReceipt) {
    EXPECT_GT(Count("SELECT COUNT(*) FROM transactionstenders WHERE ReceiptMovementuid IS NOT NULL"), 0);
    // The tender belongs to a credit sale (11), paid on account (9999) ...
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionstenders tt"
                    " LEFT JOIN transactionsheaders th ON th.UID = tt.TransactionUID"
                    " LEFT JOIN paymenttypes pt ON pt.uid = tt.PaymentTypeUID"
                    " WHERE tt.ReceiptMovementuid IS NOT NULL"
                    " AND (th.UID IS NULL OR th.DocumentTypeUID <> 11 OR pt.code <> '9999')"),
              0);
    // ... and points at a movement of type 8 or 9 with a DocumentID, of the same customer,
    // dated after the sale.
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionstenders tt"
                    " JOIN transactionsheaders th ON th.UID = tt.TransactionUID"
                    " LEFT JOIN cashdrawer_movements cm ON cm.UID = tt.ReceiptMovementuid"
                    " WHERE tt.ReceiptMovementuid IS NOT NULL AND (cm.UID IS NULL"
                    " OR cm.MovementTypeID NOT IN (8, 9) OR cm.DocumentID = ''"
                    " OR cm.EntityUID <> th.CustomerUID OR cm.Date < th.CreateDate)"),
              0);
    // A receipt pays what its sales totalled, or part of it.
    EXPECT_EQ(Count("SELECT COUNT(*) FROM cashdrawer_movements cm WHERE cm.DocumentID LIKE 'RC%'"
                    " AND (cm.value <= 0 OR cm.value > (SELECT SUM(th.TableTotal) FROM"
                    " transactionstenders tt JOIN transactionsheaders th ON th.UID = tt.TransactionUID"
                    " WHERE tt.ReceiptMovementuid = cm.UID))"),
              0);
    // Credit sales belong to real customers, never to the final consumer.
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsheaders th JOIN customers c ON c.uid = th.CustomerUID"
                    " WHERE th.DocumentTypeUID = 11 AND c.CustomerID = 0"),
              0);
}

TEST_F(GeneratedDataTest, DocumentsHaveTheirLinesTendersSalesmenAndCustomers) {
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsheaders th WHERE NOT EXISTS"
                    " (SELECT 1 FROM transactionsdetails td WHERE td.TransactionUID = th.UID)"),
              0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsdetails td LEFT JOIN transactionsheaders th"
                    " ON th.UID = td.TransactionUID"
                    " LEFT JOIN taxes tx ON tx.uid = td.SaleTaxUID LEFT JOIN salesmans s"
                    " ON s.uid = td.SalesmanUID"
                    " WHERE th.UID IS NULL OR tx.uid IS NULL OR s.uid IS NULL"),
              0);
    // A few lines refer to an item the restaurant has removed (every 97th line).
    const long lines = Count("SELECT COUNT(*) FROM transactionsdetails");
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsdetails td LEFT JOIN plus pl"
                    " ON pl.UID = td.PluUid WHERE pl.UID IS NULL"),
              lines / 97);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsheaders th LEFT JOIN salesmans s"
                    " ON s.uid = th.CreateSalesmanUID LEFT JOIN customers c ON c.uid = th.CustomerUID"
                    " WHERE s.uid IS NULL OR c.uid IS NULL"),
              0);
    // The total is the sum of the lines, and the tenders pay it.
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsheaders th WHERE th.TableTotal <>"
                    " (SELECT SUM(SaleValue) FROM transactionsdetails td WHERE td.TransactionUID = th.UID)"),
              0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsheaders th WHERE th.DocumentTypeUID <> 13"
                    " AND th.TableTotal <> (SELECT SUM(value) FROM transactionstenders tt"
                    " WHERE tt.TransactionUID = th.UID)"),
              0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionstenders tt LEFT JOIN paymenttypes pt"
                    " ON pt.uid = tt.PaymentTypeUID WHERE pt.uid IS NULL"),
              0);
    // Line values: price times quantity (thousandths for weighed items), less the discount.
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsdetails td JOIN plus pl ON pl.UID = td.PluUid"
                    " JOIN properties p ON p.UID = pl.PropertyUID WHERE td.SaleValue + td.DiscountValue <>"
                    " IF(p.ReadQuantityFromScale = 1, ROUND(td.PluUnitPrice * td.Quantity / 1000),"
                    " td.PluUnitPrice * td.Quantity)"),
              0);
}

TEST_F(GeneratedDataTest, EveryKindOfDocumentTenderAndMovementIsThere) {
    EXPECT_EQ(Database().QueryValue("SELECT GROUP_CONCAT(DISTINCT DocumentTypeUID ORDER BY DocumentTypeUID)"
                                    " FROM transactionsheaders"),
              "2,11,13,16,17");
    EXPECT_EQ(Database().QueryValue("SELECT GROUP_CONCAT(DISTINCT pt.code ORDER BY pt.code)"
                                    " FROM transactionstenders tt JOIN paymenttypes pt"
                                    " ON pt.uid = tt.PaymentTypeUID WHERE pt.code LIKE '999_'"),
              "9998,9999");
    EXPECT_EQ(Database().QueryValue("SELECT GROUP_CONCAT(DISTINCT MovementTypeID ORDER BY MovementTypeID)"
                                    " FROM cashdrawer_movements WHERE DocumentID = ''"),
              "1,2,3,4,5,6,7,8");
    EXPECT_EQ(Count("SELECT COUNT(DISTINCT MovementFlow) FROM cashdrawer_movements"
                    " WHERE DocumentID = '' AND MovementFlow IN (0, 1, 2)"),
              3);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM cashdrawer_movements WHERE DocumentID = ''"
                    " AND MovementTypeID = 8 AND EntityUID IS NOT NULL"
                    " AND EntityUID NOT IN (SELECT uid FROM customers)"),
              0);
    EXPECT_EQ(Database().QueryValue("SELECT GROUP_CONCAT(TaxRate ORDER BY TaxRate) FROM taxes"),
              "6.00,13.00,23.00");
    EXPECT_GT(Count("SELECT COUNT(*) FROM properties WHERE ReadQuantityFromScale = 1"), 0);
}

TEST_F(GeneratedDataTest, MasterDataHangsTogether) {
    EXPECT_EQ(Count("SELECT COUNT(*) FROM salesmans WHERE uid <> 10000 + SalesmanID"), 0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM subfamilies sf LEFT JOIN families f ON f.uid = sf.FamilyUID"
                    " WHERE f.uid IS NULL"),
              0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM plus pl LEFT JOIN subfamilies sf ON sf.uid = pl.SubFamilyID"
                    " LEFT JOIN properties p ON p.UID = pl.PropertyUID LEFT JOIN taxes tx"
                    " ON tx.uid = p.ItemTaxID1 WHERE sf.uid IS NULL OR p.UID IS NULL OR tx.uid IS NULL"),
              0);
    // The texts whose NULL would stop an import are never NULL in generated data.
    EXPECT_EQ(Count("SELECT COUNT(*) FROM salesmans WHERE Telephone IS NULL OR MobilePhone IS NULL"), 0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM customers WHERE FederalTaxID IS NULL"), 0);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM plus WHERE BarCode IS NULL"), 0);
    // Other texts may be NULL, as in a real restaurant.
    EXPECT_GT(Count("SELECT COUNT(*) FROM customers WHERE GlobalDiscount IS NULL OR CardID IS NULL"), 0);
    EXPECT_EQ(Database().QueryValue("SELECT Name FROM customers WHERE CustomerID = 0"), "Consumidor Final");
}

TEST_F(GeneratedDataTest, EveryTaxNumberHasItsCheckDigit) {
    const auto rows = Database().Query("SELECT FederalTaxID FROM customers");
    ASSERT_FALSE(rows.empty());
    for (const auto& row : rows) EXPECT_TRUE(IsValidNif(row[0])) << row[0];
}

TEST_F(GeneratedDataTest, DatesLieInTheWindowBeforeTheBaseDate) {
    for (const std::string column :
         {"salesmans.ModifyDate", "customers.ModifyDate", "families.ModifyDate",
          "subfamilies.ModifyDate", "plus.ModifyDate", "transactionsheaders.ModifyDate",
          "transactionsheaders.CreateDate", "cashdrawer_movements.Date"}) {
        const std::string table = column.substr(0, column.find('.'));
        EXPECT_EQ(Count("SELECT COUNT(*) FROM " + table + " WHERE " + column +
                        " < '2025-01-01 20:00:00' OR " + column + " > '2025-01-31 20:00:00'"),
                  0)
            << column;
    }
    EXPECT_EQ(Count("SELECT COUNT(*) FROM transactionsheaders WHERE ModifyDate < CreateDate"), 0);
}

TEST_F(GeneratedDataTest, TextsArriveWithTheirAccents) {
    EXPECT_GT(Count("SELECT COUNT(*) FROM families WHERE description = 'Pratos de Peixe'"
                    " OR description = 'Bebidas'"),
              0);
    EXPECT_GT(Count("SELECT COUNT(*) FROM subfamilies WHERE Description = 'Águas'"), 0);
}

TEST(GeneratorProgram, WritesTheSameFileForTheSameSeed) {
    const std::string program = test::ScratchDatabase::GeneratorPath();
    test::TemporaryFile first, second, other;
    const auto run = [&](const std::string& seed, const std::string& path) {
        const test::ProcessResult result =
            test::RunProcess({program, "--size", "demo", "--seed", seed, "--output", path});
        ASSERT_EQ(result.exitCode, 0) << result.err;
    };
    run("3", first.Path());
    run("3", second.Path());
    run("4", other.Path());
    EXPECT_EQ(first.Read(), second.Read());
    EXPECT_NE(first.Read(), other.Read());
    // Standard output carries the same text.
    const test::ProcessResult piped = test::RunProcess({program, "--size", "demo", "--seed", "3"});
    EXPECT_EQ(piped.out, first.Read());
}

TEST(GeneratorProgram, RefusesUnknownOptions) {
    const std::string program = test::ScratchDatabase::GeneratorPath();
    EXPECT_EQ(test::RunProcess({program, "--size", "huge"}).exitCode, 2);
    EXPECT_EQ(test::RunProcess({program, "--base-date", "31-01-2025"}).exitCode, 2);
    EXPECT_EQ(test::RunProcess({program, "--frobnicate"}).exitCode, 2);
}

class DemoDataTest : public test::RestaurantDatabaseTest {};

TEST_F(DemoDataTest, TheDemoSizeLoads) {
    Database().LoadGeneratedData({"--size", "demo"});
    EXPECT_EQ(Database().QueryValue("SELECT COUNT(*) FROM transactionsheaders"), "4000");
    EXPECT_GT(std::stol(Database().QueryValue(
                  "SELECT COUNT(*) FROM cashdrawer_movements WHERE DocumentID LIKE 'RC%'")),
              10);
    // Some receipts pay only part of their sales.
    EXPECT_GT(std::stol(Database().QueryValue(
                  "SELECT COUNT(*) FROM cashdrawer_movements cm WHERE cm.DocumentID LIKE 'RC%'"
                  " AND cm.value < (SELECT SUM(th.TableTotal) FROM transactionstenders tt JOIN"
                  " transactionsheaders th ON th.UID = tt.TransactionUID"
                  " WHERE tt.ReceiptMovementuid = cm.UID)")),
              0);
}

}  // namespace
}  // namespace kitra::restaurant
