// The restaurant schema against the statements the connector issues. Each statement is held
// here verbatim, character for character, with a date (or a header UID) filled in: the shared
// copy in restaurant/Statements.h must produce exactly this text, and the text must run on the
// schema, empty and filled with generated data.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "restaurant/Statements.h"
#include "tests/support/RestaurantDatabaseTest.h"

namespace kitra::restaurant {
namespace {

struct StatementCase {
    const char* name;
    std::string verbatim;
    std::string produced;
};

// clang-format off
const std::vector<StatementCase>& Cases() {
    static const std::vector<StatementCase> cases = {
    {"SalesmenStatement", R"sql(SELECT SalesmanID,SalesmanName,SalesmanPassword,Telephone,MobilePhone, AddressLine1, AddressLine2, PostalCode, EmailAddress, Locality FROM salesmans WHERE RecordDeleted = 0 AND DATE_FORMAT(ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('2024-12-01 00:00:00','%Y-%m-%d %H:%i:%s') order by SalesmanID)sql",
     SalesmenStatement("2024-12-01 00:00:00")},
    {"CustomersStatement", R"sql(SELECT CustomerID,Name,GlobalDiscount,CardID,FederalTaxID,EmailAddress,PartyAddressLine1,PartyAddressLine2,PartyPostalCode,PartyCountryID,Telephone1,MobileTelephone1, PartyLocationID, FederalTaxID FROM customers WHERE RecordDeleted = 0 AND DATE_FORMAT(ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('2024-12-01 00:00:00','%Y-%m-%d %H:%i:%s') order by CustomerID)sql",
     CustomersStatement("2024-12-01 00:00:00")},
    {"FamiliesStatement", R"sql(SELECT code,description FROM families WHERE RecordDeleted = 0 AND DATE_FORMAT(ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('2024-12-01 00:00:00','%Y-%m-%d %H:%i:%s') order by code)sql",
     FamiliesStatement("2024-12-01 00:00:00")},
    {"SubfamiliesStatement", R"sql(SELECT subfamilies.code,families.code,families.description,subfamilies.Description FROM subfamilies INNER JOIN families on families.uid = subfamilies.familyuid WHERE subfamilies.RecordDeleted = 0 AND DATE_FORMAT(subfamilies.ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('2024-12-01 00:00:00','%Y-%m-%d %H:%i:%s') order by subfamilies.code)sql",
     SubfamiliesStatement("2024-12-01 00:00:00")},
    {"ItemsStatement", R"sql(SELECT pl.ItemID ItemID, pl.description Description, pl.ShortDescription1 ShortDescription1, tx.TaxRate TaxRate, pl.BarCode BarCode, sf.code SubFamilyCode , pl.StockManagement StockManagement, p.ReadQuantityFromScale ReadQuantityFromScale, p.SalesPrice1 SalesPrice1, p.SalesPrice2 SalesPrice2, p.SalesPrice3 SalesPrice3, p.SalesPrice4 SalesPrice4, p.SalesPrice5 SalesPrice5 FROM plus pl INNER JOIN  properties p on pl.PropertyUID = p.UID INNER JOIN taxes tx on tx.uid = p.ItemTaxID1 INNER JOIN subFamilies sf on sf.uid = pl.SubFamilyID WHERE pl.RecordDeleted = 0 AND DATE_FORMAT(pl.ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('2024-12-01 00:00:00','%Y-%m-%d %H:%i:%s') order by pl.ItemID)sql",
     ItemsStatement("2024-12-01 00:00:00")},
    {"SaleDocumentsStatement", R"sql(SELECT th.UID, salesmans.SalesmanID SalesmanID, th.CreateDate CreateDate,  th.ModifyDate ModifyDate, DocumentID, customers.CustomerID CustomerID, DocumentTypeUID, TransactionStatus, TransactionStartTerminalUID, th.TableTotal TableTotal FROM transactionsheaders th LEFT OUTER JOIN salesmans on salesmans.uid = th.CreateSalesmanUID LEFT OUTER JOIN customers on customers.uid = th. CustomerUID WHERE DATE_FORMAT(th.ModifyDate,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('2024-12-01 00:00:00','%Y-%m-%d %H:%i:%s') AND th.DocumentTypeUID in (11,17,13) order by DocumentID)sql",
     SaleDocumentsStatement("2024-12-01 00:00:00")},
    {"DocumentLinesStatement", R"sql(SELECT td.UID UID, td.CreateDate CreateDate, td.PluName PluName, td.PluUid PluUid, pl.ItemID ItemID, td.Quantity Quantity, td.PluUnitPrice PluUnitPrice, td.SaleValue SaleValue, td.DiscountPercentage DiscountPercentage, td.DiscountValue DiscountValue, td.DiscountPercentage DiscountPercentage, td.SalesmanUID SalesmanUID, td.Waste Waste, tx.taxrate TaxRate from transactionsdetails td INNER JOIN taxes tx on tx.uid = td.SaleTaxUID INNER JOIN plus pl on td.PluUid = pl.UID Where TransactionUID = 1)sql",
     DocumentLinesStatement("1")},
    {"DocumentTendersStatement", R"sql(SELECT tt.UID UID, tt.PaymentTypeUID PaymentTypeUID , tt.value value, tt.PaymentType PaymentType, pt.code PaymentTypeCode FROM transactionstenders tt inner join PaymentTypes pt on tt.PaymentTypeUID = pt.uid Where tt.TransactionUID = 1)sql",
     DocumentTendersStatement("1")},
    {"CashMovementsStatement", R"sql(SELECT cm.UID UID, salesmans.SalesmanID SalesmanID, customers.customerid customerid,cm.date date, value, MovementTypeID, MovementFlow, DocumentID, cm.description description FROM cashdrawer_movements cm INNER JOIN salesmans on salesmans.uid = cm.SalesmanUID LEFT JOIN customers on customers.uid = cm.entityuid INNER JOIN cashdrawermovementtypes mt on cm.MovementTypeID = mt.uid WHERE documentid = '' AND DATE_FORMAT(cm.Date,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('2024-12-01 00:00:00','%Y-%m-%d %H:%i:%s') order by cm.UID)sql",
     CashMovementsStatement("2024-12-01 00:00:00")},
    {"ReceiptsStatement", R"sql(SELECT cm.UID UID, GROUP_CONCAT(th.documentid SEPARATOR ',') InvoiceID , GROUP_CONCAT(th.tabletotal SEPARATOR ',') InvoiceValue,c.customerid ,tt.ReceiptMovementuid , salesmans.SalesmanID SalesmanID, c.customerid customerid,cm.date date, cm.value value, cm.DocumentID ReceiptID from transactionsheaders th inner join transactionstenders tt on tt.transactionuid = th.uid inner join customers c on c.uid = th.customeruid inner join cashdrawer_movements cm on cm.uid = tt.ReceiptMovementuid INNER JOIN salesmans on salesmans.uid = cm.SalesmanUID WHERE cm.MovementTypeid in (8,9) AND DATE_FORMAT(Date,'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('2024-12-01 00:00:00','%Y-%m-%d %H:%i:%s') and cm.DocumentID  <> '' group by ReceiptID order by cm.DocumentID)sql",
     ReceiptsStatement("2024-12-01 00:00:00")},
    };
    return cases;
}
// clang-format on

// The columns each importer reads by name.
const std::vector<std::vector<std::string>>& ColumnsRead() {
    static const std::vector<std::vector<std::string>> columns = {
        {"SalesmanID", "SalesmanName", "SalesmanPassword", "Telephone", "MobilePhone",
         "AddressLine1", "AddressLine2", "PostalCode", "EmailAddress", "Locality"},
        {"CustomerID", "Name", "GlobalDiscount", "CardID", "PartyAddressLine1",
         "PartyAddressLine2", "PartyLocationID", "Telephone1", "MobileTelephone1", "EmailAddress",
         "FederalTaxID"},
        {"code", "description"},
        {"code", "description"},
        {"ItemID", "Description", "ShortDescription1", "TaxRate", "BarCode", "SubFamilyCode",
         "StockManagement", "ReadQuantityFromScale", "SalesPrice1", "SalesPrice2", "SalesPrice3",
         "SalesPrice4", "SalesPrice5"},
        {"UID", "SalesmanID", "CreateDate", "ModifyDate", "DocumentID", "CustomerID",
         "DocumentTypeUID", "TransactionStatus", "TransactionStartTerminalUID", "TableTotal"},
        {"PluName", "itemID", "Quantity", "PluUnitPrice", "SaleValue", "DiscountPercentage",
         "DiscountValue", "SalesmanUID", "TaxRate"},
        {"PaymentTypeUID", "value", "PaymentTypeCode"},
        {"UID", "SalesmanID", "customerid", "date", "value", "MovementTypeID", "MovementFlow",
         "DocumentID", "description"},
        {"UID", "InvoiceID", "InvoiceValue", "customerid", "ReceiptMovementuid", "SalesmanID",
         "date", "value", "ReceiptID"},
    };
    return columns;
}

class StatementsTest : public test::RestaurantDatabaseTest {
protected:
    ado::Recordset Run(const std::string& statement) {
        if (connection.State() != ado::StateOpen) connection.Open(ConnectionString());
        ado::Recordset recordset;
        recordset.Open(statement, connection);
        return recordset;
    }

    ado::Connection connection;
};

TEST(Statements, TheSharedCopyIsTheVerbatimText) {
    for (const StatementCase& statement : Cases()) {
        EXPECT_EQ(statement.produced, statement.verbatim) << statement.name;
    }
    // The blanks that look like slips are part of the statements.
    EXPECT_NE(Cases()[4].produced.find("INNER JOIN  properties"), std::string::npos);
    EXPECT_NE(Cases()[4].produced.find("SubFamilyCode , pl."), std::string::npos);
    EXPECT_NE(Cases()[5].produced.find("CreateDate CreateDate,  th."), std::string::npos);
    EXPECT_NE(Cases()[5].produced.find("th. CustomerUID"), std::string::npos);
    EXPECT_NE(Cases()[5].produced.find("in (11,17,13)"), std::string::npos);
    EXPECT_NE(Cases()[9].produced.find("cm.DocumentID  <> ''"), std::string::npos);
}

TEST_F(StatementsTest, EveryStatementRunsOnTheEmptySchema) {
    ASSERT_EQ(Cases().size(), ColumnsRead().size());
    for (std::size_t i = 0; i < Cases().size(); ++i) {
        SCOPED_TRACE(Cases()[i].name);
        ado::Recordset result = Run(Cases()[i].verbatim);
        EXPECT_EQ(result.RecordCount(), 0);
        EXPECT_TRUE(result.Eof());
        for (const std::string& column : ColumnsRead()[i]) {
            EXPECT_TRUE(result.HasField(column)) << column;
        }
    }
}

TEST_F(StatementsTest, EveryStatementFindsRowsInGeneratedData) {
    Database().LoadGeneratedData({"--size", "tiny", "--seed", "11"});
    const std::string linesHeader = Database().QueryValue(
        "SELECT MIN(td.TransactionUID) FROM transactionsdetails td");
    const std::string tendersHeader = Database().QueryValue(
        "SELECT MIN(tt.TransactionUID) FROM transactionstenders tt"
        " JOIN paymenttypes pt ON pt.uid = tt.PaymentTypeUID");
    const std::string before = "2000-01-01 00:00:00";
    const std::vector<std::string> statements = {
        SalesmenStatement(before),       CustomersStatement(before),
        FamiliesStatement(before),       SubfamiliesStatement(before),
        ItemsStatement(before),          SaleDocumentsStatement(before),
        DocumentLinesStatement(linesHeader), DocumentTendersStatement(tendersHeader),
        CashMovementsStatement(before),  ReceiptsStatement(before),
    };
    for (std::size_t i = 0; i < statements.size(); ++i) {
        SCOPED_TRACE(Cases()[i].name);
        ado::Recordset result = Run(statements[i]);
        EXPECT_GT(result.RecordCount(), 0);
        for (const std::string& column : ColumnsRead()[i]) {
            EXPECT_TRUE(result.HasField(column)) << column;
            if (result.HasField(column)) (void)result.Field(column);
        }
    }
}

TEST_F(StatementsTest, OnlyChangesAfterTheImportDateAreRead) {
    Database().Execute(
        "INSERT INTO salesmans (uid, SalesmanID, SalesmanName, ModifyDate) VALUES"
        " (10001, 1, 'Igual', '2024-12-01 00:00:00'), (10002, 2, 'Depois', '2024-12-01 00:00:01'),"
        " (10003, 3, 'Antes', '2024-11-30 23:59:59');"
        "INSERT INTO salesmans (uid, SalesmanID, SalesmanName, RecordDeleted, ModifyDate) VALUES"
        " (10004, 4, 'Apagado', 1, '2024-12-02 00:00:00');");
    ado::Recordset result = Run(Cases()[0].verbatim);
    ASSERT_EQ(result.RecordCount(), 1);
    EXPECT_EQ(result.Field("SalesmanName"), Variant("Depois"));
    EXPECT_EQ(result.Field("SalesmanID"), Variant(std::int32_t{2}));
}

TEST_F(StatementsTest, OnlyTheThreeImportedDocumentTypesAreReadInDocumentIdOrder) {
    Database().Execute(
        "INSERT INTO salesmans (uid, SalesmanID) VALUES (10001, 1);"
        "INSERT INTO customers (uid, CustomerID, FederalTaxID) VALUES (1, 0, '999999990');"
        "INSERT INTO transactionsheaders (UID, DocumentTypeUID, DocumentID, CreateSalesmanUID,"
        " CustomerUID, TableTotal, CreateDate, ModifyDate) VALUES"
        " (1, 17, 'FT0000002', 10001, 1, 250, '2024-12-05 12:00:00', '2024-12-05 12:10:00'),"
        " (2, 11, 'CC0000001', 10001, 1, 990, '2024-12-05 13:00:00', '2024-12-05 13:10:00'),"
        " (3, 13, 'GS0000001', 10001, 1, 100, '2024-12-05 14:00:00', '2024-12-05 14:10:00'),"
        " (4, 2, 'CM0000001', 10001, 1, 100, '2024-12-05 15:00:00', '2024-12-05 15:10:00'),"
        " (5, 17, 'FT0000001', 10001, 1, 300, '2024-12-05 16:00:00', '2024-12-05 16:10:00');");
    ado::Recordset result = Run(Cases()[5].verbatim);
    std::string order;
    for (; !result.Eof(); result.MoveNext()) order += *result.Field("DocumentID").AsString() + " ";
    EXPECT_EQ(order, "CC0000001 FT0000001 FT0000002 GS0000001 ");
}

TEST_F(StatementsTest, AReceiptListsTheCreditSalesItSettles) {
    Database().Execute(
        "INSERT INTO salesmans (uid, SalesmanID) VALUES (10003, 3);"
        "INSERT INTO customers (uid, CustomerID, FederalTaxID) VALUES (8, 7, '123456789');"
        "INSERT INTO paymenttypes (uid, code, Description) VALUES (6, '9999', 'Conta Corrente');"
        "INSERT INTO transactionsheaders (UID, DocumentTypeUID, DocumentID, CreateSalesmanUID,"
        " CustomerUID, TableTotal, CreateDate, ModifyDate) VALUES"
        " (1, 11, 'CC0000001', 10003, 8, 1250, '2024-12-05 12:00:00', '2024-12-05 12:10:00'),"
        " (2, 11, 'CC0000002', 10003, 8, 990, '2024-12-06 12:00:00', '2024-12-06 12:10:00');"
        "INSERT INTO cashdrawer_movements (UID, MovementTypeID, MovementFlow, SalesmanUID,"
        " EntityUID, Date, value, DocumentID) VALUES"
        " (40, 8, 1, 10003, 8, '2024-12-10 10:00:00', 2240, 'RC0000001'),"
        " (41, 3, 0, 10003, NULL, '2024-12-10 11:00:00', 5000, '');"
        "INSERT INTO transactionstenders (UID, TransactionUID, PaymentTypeUID, PaymentType, value,"
        " ReceiptMovementuid) VALUES (1, 1, 6, 'Conta Corrente', 1250, 40),"
        " (2, 2, 6, 'Conta Corrente', 990, 40);");
    ado::Recordset receipts = Run(Cases()[9].verbatim);
    ASSERT_EQ(receipts.RecordCount(), 1);
    EXPECT_EQ(receipts.Field("ReceiptID"), Variant("RC0000001"));
    const std::string invoices = *receipts.Field("InvoiceID").AsString();
    EXPECT_TRUE(invoices == "CC0000001,CC0000002" || invoices == "CC0000002,CC0000001") << invoices;
    EXPECT_EQ(receipts.Field("customerid"), Variant(std::int32_t{7}));
    EXPECT_EQ(receipts.Field("SalesmanID"), Variant(std::int32_t{3}));
    EXPECT_EQ(receipts.Field("value"), Variant(std::int32_t{2240}));
    EXPECT_EQ(receipts.Field("date"), Variant(DateTime{2024, 12, 10, 10, 0, 0}));

    // The receipt is no cash movement of its own; the withdrawal is.
    ado::Recordset movements = Run(Cases()[8].verbatim);
    ASSERT_EQ(movements.RecordCount(), 1);
    EXPECT_EQ(movements.Field("UID"), Variant(std::int32_t{41}));
    EXPECT_TRUE(movements.Field("customerid").IsNull());
    EXPECT_TRUE(movements.Field("description").IsNull());
    EXPECT_EQ(movements.Field("DocumentID"), Variant(""));
}

TEST_F(StatementsTest, LinesWithoutTheirTaxOrItemAreNotRead) {
    Database().Execute(
        "INSERT INTO taxes (uid, TaxRate) VALUES (1, 23.00);"
        "INSERT INTO plus (UID, ItemID, Description, SubFamilyID, PropertyUID) VALUES (5, '1005', 'Imperial', 1, 1);"
        "INSERT INTO transactionsdetails (UID, TransactionUID, PluUid, PluName, Quantity,"
        " PluUnitPrice, SaleValue, SaleTaxUID, SalesmanUID) VALUES"
        " (1, 1, 5, 'Imperial', 2, 160, 320, 1, 10001),"
        " (2, 1, 99, 'Sem artigo', 1, 100, 100, 1, 10001),"
        " (3, 1, 5, 'Sem taxa', 1, 160, 160, 7, 10001);");
    ado::Recordset lines = Run(Cases()[6].verbatim);
    ASSERT_EQ(lines.RecordCount(), 1);
    EXPECT_EQ(lines.Field("itemID"), Variant("1005"));
    EXPECT_EQ(lines.Field("TaxRate"), Variant(23.0));
    EXPECT_EQ(lines.Field("Quantity"), Variant(std::int32_t{2}));
    EXPECT_EQ(lines.Field("DiscountPercentage"), Variant(0.0));
    EXPECT_EQ(lines.Field("SalesmanUID"), Variant(std::int32_t{10001}));
}

}  // namespace
}  // namespace kitra::restaurant
