// The back office's documents: the line and document calculation, saving whole documents with
// their stock and current-account effects, numbering, replacement and refund.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <string_view>

#include "backoffice/AccountTransactionService.h"
#include "backoffice/DocumentCalculation.h"
#include "backoffice/Schema.h"
#include "tests/backoffice/TempFolder.h"

namespace kitra::backoffice {
namespace {

using namespace host;
using testing::TempBackOffice;

// ---------------------------------------------------------------- calculation

TransactionLine Line(double quantity, double unitPrice, double percent = 0, double value = 0) {
    TransactionLine line;
    line.Quantity = quantity;
    line.UnitPrice = unitPrice;
    line.DiscountPercent = percent;
    line.DiscountValue = value;
    return line;
}

TEST(LineCalculation, TakesTheVatOutOfPricesThatIncludeIt) {
    TransactionLine line = Line(2, 1.25);
    CalculateLine(line, true, 23);
    EXPECT_DOUBLE_EQ(line.GrossValue, 2.5);
    EXPECT_DOUBLE_EQ(line.DiscountAmount, 0);
    EXPECT_DOUBLE_EQ(line.TotalWithTax, 2.5);
    EXPECT_DOUBLE_EQ(line.Value, 2.5);
    EXPECT_DOUBLE_EQ(line.NetValue, 2.03);
    EXPECT_DOUBLE_EQ(line.TaxValue, 0.47);
    EXPECT_DOUBLE_EQ(line.TaxRate, 23);
}

TEST(LineCalculation, AddsTheVatToPricesWithoutIt) {
    TransactionLine line = Line(3, 1);
    CalculateLine(line, false, 6);
    EXPECT_DOUBLE_EQ(line.NetValue, 3);
    EXPECT_DOUBLE_EQ(line.TotalWithTax, 3.18);
    EXPECT_DOUBLE_EQ(line.TaxValue, 0.18);
}

TEST(LineCalculation, APercentageDiscountIsTakenFromTheGrossValue) {
    TransactionLine line = Line(1, 10, 15);
    CalculateLine(line, true, 23);
    EXPECT_DOUBLE_EQ(line.DiscountAmount, 1.5);
    EXPECT_DOUBLE_EQ(line.TotalWithTax, 8.5);
}

TEST(LineCalculation, ADiscountValueIsTheDiscountEvenWithAPercentage) {
    // The restaurant gives both the percentage and the amount it produced.
    TransactionLine line = Line(2, 5, 10, 1);
    CalculateLine(line, true, 23);
    EXPECT_DOUBLE_EQ(line.DiscountAmount, 1);
    EXPECT_DOUBLE_EQ(line.TotalWithTax, 9);
}

TEST(LineCalculation, AValueGivenBeforehandIsReplacedByTheCalculation) {
    TransactionLine line = Line(1, 2);
    line.Value = 200;  // a value in hundredths, as a restaurant keeps it
    CalculateLine(line, true, 13);
    EXPECT_DOUBLE_EQ(line.Value, 2);
}

TEST(LineCalculation, AValueTheSourceGaveIsKeptAndTheVatTakenOutOfIt) {
    // A weighed item the host lacks: the restaurant's 1500 grams stay 1500, and 1500 × 10,00
    // would price the line at 15.000,00; the restaurant sold it for 15,00.
    TransactionLine line = Line(1500, 10);
    line.GivenValueHundredths = 1500;
    CalculateLine(line, true, 13);
    EXPECT_DOUBLE_EQ(line.Value, 15);
    EXPECT_DOUBLE_EQ(line.TotalWithTax, 15);
    EXPECT_DOUBLE_EQ(line.NetValue, 13.27);
    EXPECT_DOUBLE_EQ(line.TaxValue, 1.73);
    EXPECT_DOUBLE_EQ(line.GrossValue, 15);
    EXPECT_DOUBLE_EQ(line.DiscountAmount, 0);
    EXPECT_DOUBLE_EQ(line.Quantity, 1500);
}

TEST(LineCalculation, AValueTheSourceGaveKeepsTheDiscountItGave) {
    TransactionLine amount = Line(2, 5, 10, 1);
    amount.GivenValueHundredths = 900;
    CalculateLine(amount, true, 23);
    EXPECT_DOUBLE_EQ(amount.TotalWithTax, 9);
    EXPECT_DOUBLE_EQ(amount.DiscountAmount, 1);
    EXPECT_DOUBLE_EQ(amount.GrossValue, 10);
    // Only a percentage: the discount is what took the line down to its value.
    TransactionLine percent = Line(1, 10, 10);
    percent.GivenValueHundredths = 900;
    CalculateLine(percent, true, 23);
    EXPECT_DOUBLE_EQ(percent.TotalWithTax, 9);
    EXPECT_DOUBLE_EQ(percent.DiscountAmount, 1);
    EXPECT_DOUBLE_EQ(percent.GrossValue, 10);
    // A value of 0 given is 0, whatever quantity and price say.
    TransactionLine offered = Line(3, 2);
    offered.GivenValueHundredths = 0;
    CalculateLine(offered, true, 23);
    EXPECT_DOUBLE_EQ(offered.TotalWithTax, 0);
    EXPECT_DOUBLE_EQ(offered.TaxValue, 0);
}

TEST(LineCalculation, AValueTheSourceGaveWithoutVatHasTheVatAdded) {
    TransactionLine line = Line(1500, 1);
    line.GivenValueHundredths = 300;
    CalculateLine(line, false, 6);
    EXPECT_DOUBLE_EQ(line.NetValue, 3);
    EXPECT_DOUBLE_EQ(line.TotalWithTax, 3.18);
    EXPECT_DOUBLE_EQ(line.TaxValue, 0.18);
}

TEST(DocumentCalculation, VatIsCalculatedOncePerTaxableGroup) {
    host::Transaction document;
    // Three lines of 0,10 at 23 %: per line 0,08 + 0,02; on their sum 0,24 + 0,06.
    for (int i = 0; i < 3; ++i) {
        TransactionLine line = Line(1, 0.10);
        line.TaxableGroupID = 1;
        CalculateLine(line, true, 23);
        document.Lines.push_back(line);
    }
    TransactionLine reduced = Line(1, 1.06);
    reduced.TaxableGroupID = 3;
    CalculateLine(reduced, true, 6);
    document.Lines.push_back(reduced);
    document.TotalAdjustment = 0.01;
    document.Payments = {{1, 1, 1.0, {}}, {2, 2, 0.37, {}}};

    CalculateDocument(document, [](std::int16_t group) { return group == 1 ? 23.0 : 6.0; });
    ASSERT_EQ(document.Taxes.size(), 2u);
    EXPECT_EQ(document.Taxes[0], (TaxSummary{1, 23, 0.24, 0.06, 0.30}));
    EXPECT_EQ(document.Taxes[1], (TaxSummary{3, 6, 1.0, 0.06, 1.06}));
    EXPECT_DOUBLE_EQ(document.TotalNet, 1.24);
    EXPECT_DOUBLE_EQ(document.TotalTax, 0.12);
    EXPECT_DOUBLE_EQ(document.LinesTotal, 1.36);
    EXPECT_DOUBLE_EQ(document.Total, 1.37);
    EXPECT_DOUBLE_EQ(document.PaidAmount, 1.37);
}

// ---------------------------------------------------------------- saving

class Documents : public ::testing::Test {
protected:
    void SetUp() override {
        Item beer;
        beer.ItemID = "C100";
        beer.Description = "Cerveja";
        beer.TaxableGroupID = 1;
        beer.StockManagement = true;
        office->items.Save(beer, beer.ItemID, true);
        Item service = beer;
        service.ItemID = "C200";
        service.Description = "Couvert";
        service.StockManagement = false;
        office->items.Save(service, service.ItemID, true);
        Customer customer;
        customer.OrganizationName = "Cliente de conta";
        office->customers.Save(customer, 7.0, true);
    }

    // A new transaction of the type in series EXT with the back office's defaults for
    // workstation 1, one line of 2 × C100 at 1,50 (23 %), dated 2025-01-10 12:00.
    std::unique_ptr<ITransactionBusiness> NewDocument(const std::string& type, std::int32_t number) {
        auto business = office->transactions.NewTransactionBusiness();
        business->InitNewTransaction(type, "EXT");
        business->SetTransactionDefaults(*office->documentTypes.Get(type), 1);
        host::Transaction& t = business->Current();
        t.DocumentNumber = number;
        t.CustomerID = 7;
        t.DocumentDate = t.DueDate = {2025, 1, 10, 12, 0, 0};
        AddLine(*business, "C100", 2, 1.5);
        return business;
    }

    static void AddLine(ITransactionBusiness& business, const std::string& item, double quantity,
                        double price) {
        TransactionLine line = business.NewLine();
        line.ItemID = item;
        line.Description = item;
        line.TaxableGroupID = 1;
        line.Quantity = quantity;
        line.UnitPrice = price;
        business.CalculateLine(line);
        business.AppendLine(line);
    }

    static void Pay(ITransactionBusiness& business, std::int16_t tender, double amount) {
        TransactionPayment payment = business.NewPayment(tender);
        payment.Amount = amount;
        business.AppendPayment(payment);
    }

    double Stock(const std::string& item, int warehouse = 1) {
        Statement stock(office->GetDatabase(),
                        "SELECT COALESCE(SUM(Quantity), 0) FROM item_stock WHERE ItemID=? AND "
                        "WarehouseID=?");
        stock.Bind({Variant(item), Variant(static_cast<std::int32_t>(warehouse))});
        stock.Step();
        return stock.Column(0).ToDouble();
    }

    std::string Value(const std::string& sql) {
        Statement statement(office->GetDatabase(), sql);
        return statement.Step() ? statement.ColumnText(0) : "(none)";
    }

    TempBackOffice office;
};

TEST_F(Documents, ASaleIsSavedWholeAndMovesStockOut) {
    auto business = NewDocument("VB", 12);
    AddLine(*business, "C200", 1, 2);
    Pay(*business, 1, 5);
    business->Calculate();
    office->transactions.Save(business->Current());

    const auto saved = office->transactions.Find("VB", "EXT", 12);
    ASSERT_TRUE(saved.has_value());
    const host::Transaction& t = saved->Document;
    EXPECT_EQ(t.Kind, DocumentKind::Sale);
    EXPECT_EQ(t.Lines.size(), 2u);
    EXPECT_DOUBLE_EQ(t.Total, 5);
    EXPECT_DOUBLE_EQ(t.PaidAmount, 5);
    EXPECT_DOUBLE_EQ(t.TotalNet, 4.07);
    EXPECT_DOUBLE_EQ(t.TotalTax, 0.93);
    EXPECT_EQ(t.WarehouseID, 1);
    EXPECT_FALSE(saved->NumberAssigned);
    // Only the stock-managed item moves.
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
    EXPECT_DOUBLE_EQ(Stock("C200"), 0);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM account_entries"), "0");
}

TEST_F(Documents, DocumentTypesAndSeriesAreCheckedWithClearMessages) {
    auto business = office->transactions.NewTransactionBusiness();
    try {
        business->InitNewTransaction("XX", "EXT");
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.Description(), "Não existe o tipo de documento 'XX'.");
    }
    try {
        business->InitNewTransaction("VB", "NOPE");
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.Description(), "Não existe a série 'NOPE'.");
    }
    DocumentSeries closed{"OLD", "Fechada", SeriesKind::ExternalUnsigned, false};
    office->documentSeries.Save(closed, "OLD", true);
    try {
        business->InitNewTransaction("VB", "OLD");
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.Description(), "A série 'OLD' não está activa.");
    }
}

// What another program changes between two groups of a run holds for the next document: the
// reference look-ups kept within a group are read again after its commit.
TEST_F(Documents, ASeriesClosedElsewhereBetweenTwoGroupsStopsTheNextDocument) {
    GroupedCommits grouped(office->GetDatabase(), 1000, 60000);
    auto first = NewDocument("VB", 12);
    office->transactions.Save(first->Current());
    office->GetDatabase().CommitGroup();
    {
        Database other(office.File(), Database::OpenMode::Existing);
        other.Exec("UPDATE document_series SET Active=0 WHERE SeriesID='EXT'");
    }
    try {
        auto second = NewDocument("VB", 13);
        office->transactions.Save(second->Current());
        FAIL() << "a closed series took a document";
    } catch (const Error& e) {
        EXPECT_EQ(e.Description(), "A série 'EXT' não está activa.");
    }
    grouped.End();
}

TEST_F(Documents, AnItemThatStopsKeepingStockElsewhereBetweenTwoGroupsMovesNoMore) {
    GroupedCommits grouped(office->GetDatabase(), 1000, 60000);
    auto first = NewDocument("VB", 12);
    office->transactions.Save(first->Current());
    office->GetDatabase().CommitGroup();
    {
        Database other(office.File(), Database::OpenMode::Existing);
        other.Exec("UPDATE items SET StockManagement=0 WHERE ItemID='C100';"
                   "UPDATE document_types SET Kind=" +
                   std::to_string(static_cast<int>(DocumentKind::CreditSale)) +
                   " WHERE DocumentTypeID='VB'");
    }
    auto second = NewDocument("VB", 13);
    office->transactions.Save(second->Current());
    grouped.End();
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
    EXPECT_EQ(office->transactions.Find("VB", "EXT", 12)->Document.Kind, DocumentKind::Sale);
    EXPECT_EQ(office->transactions.Find("VB", "EXT", 13)->Document.Kind, DocumentKind::CreditSale);
}

// How many times the back office ran a statement whose text holds `fragment` while `work` ran.
template <class Work>
int StatementsRun(Database& database, const char* fragment, Work&& work) {
    struct Count {
        const char* fragment;
        int runs = 0;
    } count{fragment};
    sqlite3_trace_v2(
        database.Handle(), SQLITE_TRACE_STMT,
        [](unsigned, void* context, void* statement, void*) {
            auto& c = *static_cast<Count*>(context);
            const char* sql = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
            if (sql != nullptr && std::string_view(sql).find(c.fragment) != std::string_view::npos) ++c.runs;
            return 0;
        },
        &count);
    work();
    sqlite3_trace_v2(database.Handle(), 0, nullptr, nullptr);
    return count.runs;
}

TEST_F(Documents, WithinAGroupTheDocumentsReferencesAreReadOnce) {
    Database& database = office->GetDatabase();
    auto saveThree = [&](std::int32_t first) {
        return [&, first] {
            for (std::int32_t number = first; number < first + 3; ++number) {
                auto business = NewDocument("VB", number);
                office->transactions.Save(business->Current());
            }
        };
    };
    // Each document in a transaction of its own reads them again.
    EXPECT_EQ(StatementsRun(database, "StockManagement FROM items", saveThree(21)), 3);
    GroupedCommits grouped(database, 1000, 60000);
    EXPECT_EQ(StatementsRun(database, "StockManagement FROM items", saveThree(31)), 1);
    EXPECT_EQ(StatementsRun(database, "Kind FROM document_types", saveThree(41)), 0);
    grouped.End();
    EXPECT_DOUBLE_EQ(Stock("C100"), -2 * 9);
}

TEST_F(Documents, ACreditSaleOpensAnAccountEntryForWhatWasNotPaid) {
    auto business = NewDocument("FAC", 3);
    Pay(*business, 1, 1);
    host::Transaction& t = business->Current();
    t.CreditSale = true;
    business->Calculate();
    office->transactions.Save(t);
    const auto saved = office->transactions.Find("FAC", "EXT", 3);
    ASSERT_TRUE(saved);
    EXPECT_DOUBLE_EQ(saved->OpenAmount, 2);
    EXPECT_EQ(Value("SELECT CustomerID || ' ' || DocumentTypeID || ' ' || SeriesID || ' ' || "
                    "DocumentNumber || ' ' || Total || ' ' || Amount FROM account_entries"),
              "7 FAC EXT 3 3.0 2.0");
}

TEST_F(Documents, NumberZeroTakesTheSeriesNextFreeNumber) {
    for (int i = 0; i < 3; ++i) {
        auto business = NewDocument("VB", i == 0 ? 41 : 0);
        business->Current().SalesmanID = i;  // three different sales
        office->transactions.Save(business->Current());
        EXPECT_EQ(business->Current().DocumentNumber, 41 + i);
    }
    EXPECT_EQ(Value("SELECT group_concat(DocumentNumber || ':' || NumberAssigned, ' ') FROM "
                    "(SELECT * FROM documents ORDER BY DocumentNumber)"),
              "41:0 42:1 43:1");
    EXPECT_DOUBLE_EQ(Stock("C100"), -6);
}

TEST_F(Documents, AlikeDocumentsWithoutANumberOfOneBusinessObjectStayTwo) {
    // Two sales alike in every field at the same second, built by one business object (one
    // import step), are two documents; built again by the next step, they are the same two.
    for (int pass = 0; pass < 2; ++pass) {
        auto business = office->transactions.NewTransactionBusiness();
        for (int i = 0; i < 2; ++i) {
            business->InitNewTransaction("VB", "EXT");
            business->SetTransactionDefaults(*office->documentTypes.Get("VB"), 1);
            host::Transaction& t = business->Current();
            t.CustomerID = 7;
            t.DocumentDate = t.DueDate = {2025, 1, 10, 12, 0, 0};
            AddLine(*business, "C100", 2, 1.5);
            office->transactions.Save(t);
            EXPECT_EQ(t.DocumentNumber, 1 + i);
        }
    }
    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents"), "2");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM document_history"), "0");  // saved again unchanged
    EXPECT_DOUBLE_EQ(Stock("C100"), -4);
}

TEST_F(Documents, ADocumentWithoutANumberChangedAtItsSourceReplacesItsFormerVersion) {
    auto first = NewDocument("VB", 0);
    office->transactions.Save(first->Current());
    auto changed = NewDocument("VB", 0);
    AddLine(*changed, "C100", 1, 1.5);
    office->transactions.Save(changed->Current());
    EXPECT_EQ(changed->Current().DocumentNumber, 1);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents"), "1");
    EXPECT_DOUBLE_EQ(Stock("C100"), -3);
    EXPECT_EQ(Value("SELECT Event FROM document_history"), "replaced");
}

TEST_F(Documents, ADocumentWithoutANumberIsFoundAgainOnceItsSalesmanIsKnown) {
    // Imported first while the back office lacked its salesman (0), then again after another
    // restaurant brought that salesman: the same document, now with the salesman.
    auto first = NewDocument("VB", 0);
    office->transactions.Save(first->Current());
    auto again = NewDocument("VB", 0);
    again->Current().SalesmanID = 4;
    office->transactions.Save(again->Current());
    EXPECT_EQ(Value("SELECT COUNT(*) || ' ' || SalesmanID FROM documents"), "1 4");
    // Two known salesmen that differ are two documents.
    auto other = NewDocument("VB", 0);
    other->Current().SalesmanID = 5;
    office->transactions.Save(other->Current());
    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents"), "2");
}

TEST_F(Documents, ALineWithAGivenValueIsSavedAtThatValue) {
    auto business = NewDocument("VB", 3);
    TransactionLine weighed = business->NewLine();
    weighed.ItemID = "C777";  // a weighed item the back office lacks: 1500 grams stay 1500
    weighed.TaxableGroupID = 1;
    weighed.Quantity = 1500;
    weighed.UnitPrice = 10;
    weighed.GivenValueHundredths = 1500;
    business->CalculateLine(weighed);
    business->AppendLine(weighed);
    EXPECT_DOUBLE_EQ(business->CalculatedTotal(), 18);
    office->transactions.Save(business->Current());
    const auto saved = office->transactions.Find("VB", "EXT", 3);
    ASSERT_TRUE(saved);
    EXPECT_DOUBLE_EQ(saved->Document.Total, 18);
    EXPECT_DOUBLE_EQ(saved->Document.TotalAdjustment, 0);
    EXPECT_DOUBLE_EQ(saved->Document.TotalTax, 3.37);  // 23 % taken out of 3,00 + 15,00
    EXPECT_EQ(Value("SELECT Quantity || ' ' || TotalWithTax || ' ' || NetValue FROM document_lines "
                    "WHERE ItemID = 'C777'"),
              "1500.0 15.0 12.2");
}

// A document without a number takes the series' next free number; when the source's own
// document with that number arrives, that one takes it and the other moves on.
TEST_F(Documents, ANumberGivenHereMovesAsideForTheSourcesOwnDocument) {
    auto lent = NewDocument("FAC", 0);
    lent->Current().SourceUID = "10";
    lent->Current().CreditSale = true;
    office->transactions.Save(lent->Current());
    EXPECT_EQ(lent->Current().DocumentNumber, 1);

    auto own = NewDocument("FAC", 1);
    own->Current().SourceUID = "11";
    AddLine(*own, "C100", 1, 1.5);
    own->Current().CreditSale = true;
    office->transactions.Save(own->Current());

    EXPECT_EQ(Value("SELECT group_concat(DocumentNumber || ':' || NumberAssigned || ':' || SourceUID || "
                    "':' || Total, ' ') FROM (SELECT * FROM documents ORDER BY DocumentKey)"),
              "2:1:10:3.0 1:0:11:4.5");
    // Its current-account entry moved with it; its history says from where.
    EXPECT_EQ(Value("SELECT group_concat(DocumentNumber || ':' || Amount, ' ') FROM "
                    "(SELECT * FROM account_entries ORDER BY DocumentKey)"),
              "2:3.0 1:4.5");
    EXPECT_EQ(Value("SELECT DocumentKey || ' ' || Event || ' ' || DocumentNumber FROM document_history"),
              "1 renumbered 1");
    EXPECT_NE(Value("SELECT FormerVersion FROM document_history").find("FAC EXT/1 de"),
              std::string::npos);
    EXPECT_DOUBLE_EQ(Stock("C100"), -5);

    // Both saved again, in either order, are the same two documents.
    for (int pass = 0; pass < 2; ++pass) {
        auto again = NewDocument("FAC", 0);
        again->Current().SourceUID = "10";
        again->Current().CreditSale = true;
        office->transactions.Save(again->Current());
        EXPECT_EQ(again->Current().DocumentNumber, 2);
        auto ownAgain = NewDocument("FAC", 1);
        ownAgain->Current().SourceUID = "11";
        AddLine(*ownAgain, "C100", 1, 1.5);
        ownAgain->Current().CreditSale = true;
        office->transactions.Save(ownAgain->Current());
    }
    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents"), "2");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM document_history"), "1");
    EXPECT_DOUBLE_EQ(Stock("C100"), -5);
}

// Two sales without a number at one second, of one customer and salesman, are told apart by
// their source's key: when one of them changes, it replaces itself, never the other.
TEST_F(Documents, DocumentsWithoutANumberAreFoundAgainByTheirSourcesKey) {
    const auto save = [this](const std::string& uid, double price) {
        auto business = NewDocument("VB", 0);
        business->Current().Lines.clear();
        AddLine(*business, "C100", 1, price);
        business->Current().SourceUID = uid;
        office->transactions.Save(business->Current());
        return business->Current().DocumentNumber;
    };
    EXPECT_EQ(save("S1", 64.2), 1);
    EXPECT_EQ(save("S2", 69.2), 2);
    // The next step: S2 changed at its source.
    EXPECT_EQ(save("S2", 70.2), 2);
    EXPECT_EQ(Value("SELECT group_concat(DocumentNumber || ':' || SourceUID || ':' || Total, ' ') FROM "
                    "(SELECT * FROM documents ORDER BY DocumentKey)"),
              "1:S1:64.2 2:S2:70.2");
    EXPECT_EQ(Value("SELECT DocumentKey || ' ' || Event FROM document_history"), "2 replaced");
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
}

// A document saved without its source's key (before the back office kept them) is found by its
// moment once, and keeps the key from then on.
TEST_F(Documents, ADocumentSavedWithoutItsSourcesKeyIsFoundByItsMomentAndGetsIt) {
    auto old = NewDocument("VB", 0);
    office->transactions.Save(old->Current());
    auto again = NewDocument("VB", 0);
    again->Current().SourceUID = "77";
    office->transactions.Save(again->Current());
    EXPECT_EQ(Value("SELECT COUNT(*) || ' ' || SourceUID FROM documents"), "1 77");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM document_history"), "0");  // nothing else changed
    // Another record alike in every field is another document.
    auto other = NewDocument("VB", 0);
    other->Current().SourceUID = "78";
    office->transactions.Save(other->Current());
    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents"), "2");
}

TEST_F(Documents, AFileOfVersion5KeepsItsHistoryAndLearnsSourceKeysAndRenumbering) {
    auto first = NewDocument("VB", 4);
    office->transactions.Save(first->Current());
    auto second = NewDocument("VB", 4);
    AddLine(*second, "C100", 1, 1.5);
    office->transactions.Save(second->Current());
    // Back to what version 5 had: no source keys, a history of two events, no restaurant imports.
    office->GetDatabase().Exec(
        "DROP TABLE restaurant_imports; DROP INDEX cash_movements_by_document; "
        "DROP INDEX documents_by_source; ALTER TABLE documents DROP COLUMN SourceUID; "
        "CREATE TABLE h5 (HistoryID INTEGER PRIMARY KEY, DocumentKey INTEGER NOT NULL, "
        "DocumentTypeID TEXT NOT NULL COLLATE NOCASE, SeriesID TEXT NOT NULL COLLATE NOCASE, "
        "DocumentNumber INTEGER NOT NULL, Event TEXT NOT NULL CHECK (Event IN ('replaced', "
        "'voided')), EventDate DATETIME NOT NULL, FormerVersion TEXT NOT NULL); "
        "INSERT INTO h5 SELECT * FROM document_history; DROP TABLE document_history; "
        "ALTER TABLE h5 RENAME TO document_history; "
        "CREATE INDEX document_history_by_document ON document_history (DocumentKey); "
        "PRAGMA user_version=5;");
    office.Reopen();
    EXPECT_EQ(office->GetDatabase().UserVersion(), kSchemaVersion);
    EXPECT_EQ(Value("SELECT Event || ' ' || DocumentNumber FROM document_history"), "replaced 4");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents WHERE SourceUID IS NULL"), "1");
    // A document without a number, then the source's own with the number it took.
    auto lent = NewDocument("VB", 0);
    lent->Current().SourceUID = "1";
    office->transactions.Save(lent->Current());
    EXPECT_EQ(lent->Current().DocumentNumber, 5);
    auto own = NewDocument("VB", 5);
    office->transactions.Save(own->Current());
    EXPECT_EQ(Value("SELECT group_concat(Event || ' ' || DocumentNumber, ', ') FROM document_history"),
              "replaced 4, renumbered 5");
    EXPECT_EQ(Value("SELECT DocumentNumber FROM documents WHERE SourceUID = '1'"), "6");
}

TEST_F(Documents, ARefundedDocumentSavedAndRefundedAgainChangesNothing) {
    // During a run, whose records are grouped, a document and its refund are one record.
    backoffice::GroupedCommits grouped(office->GetDatabase(), 500, 60000);
    auto business = NewDocument("FAC", 5);
    business->Current().CreditSale = true;
    office->transactions.Save(business->Current());
    office->transactions.Refund(business->Current());
    const std::string before = Value("SELECT group_concat(x, ';') FROM (SELECT SavedAt || State AS x "
                                     "FROM documents UNION ALL SELECT MovementID || Quantity FROM "
                                     "stock_movements UNION ALL SELECT HistoryID || Event FROM "
                                     "document_history)");
    auto again = NewDocument("FAC", 5);
    again->Current().CreditSale = true;
    again->WorkstationStamp(1, {2026, 1, 1, 0, 0, 0});
    office->transactions.Save(again->Current());
    office->transactions.Refund(again->Current());
    EXPECT_EQ(Value("SELECT group_concat(x, ';') FROM (SELECT SavedAt || State AS x "
                    "FROM documents UNION ALL SELECT MovementID || Quantity FROM "
                    "stock_movements UNION ALL SELECT HistoryID || Event FROM document_history)"),
              before);
}

TEST_F(Documents, ARefundThatFailsTakesItsDocumentWithIt) {
    // During a run, whose records are grouped, a document and its refund are one record.
    backoffice::GroupedCommits grouped(office->GetDatabase(), 500, 60000);
    auto before = NewDocument("VB", 4);
    office->transactions.Save(before->Current());
    office->GetDatabase().Exec(
        "CREATE TRIGGER refuse_void BEFORE UPDATE OF State ON documents WHEN NEW.State = 5 "
        "BEGIN SELECT RAISE(ABORT, 'recusado'); END");
    auto business = NewDocument("VB", 5);
    office->transactions.Save(business->Current());
    EXPECT_THROW(office->transactions.Refund(business->Current()), Error);
    EXPECT_EQ(Value("SELECT group_concat(DocumentNumber) FROM documents"), "4");
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
}

TEST_F(Documents, ASecondVersionReplacesTheFirstAndKeepsItInTheHistory) {
    auto first = NewDocument("FAC", 9);
    first->Current().CreditSale = true;
    office->transactions.Save(first->Current());

    // What a receipt settled of the first version stays settled.
    office->GetDatabase().Exec("UPDATE account_entries SET OpenAmount = 1");

    auto second = NewDocument("FAC", 9);
    AddLine(*second, "C100", 1, 1.5);
    second->Current().CreditSale = true;
    office->transactions.Save(second->Current());

    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents"), "1");
    const auto saved = office->transactions.Find("FAC", "EXT", 9);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->Document.Lines.size(), 2u);
    EXPECT_DOUBLE_EQ(saved->Document.Total, 4.5);
    EXPECT_DOUBLE_EQ(saved->OpenAmount, 2.5);  // 4,50 on account, 2,00 already settled
    EXPECT_DOUBLE_EQ(Stock("C100"), -3);         // the first version's movements are gone
    EXPECT_EQ(Value("SELECT Event FROM document_history"), "replaced");
    EXPECT_NE(Value("SELECT FormerVersion FROM document_history").find("total 3"),
              std::string::npos);
}

TEST_F(Documents, ANewVersionFromAnotherWorkstationReplacesTheDocument) {
    // A series belongs to one restaurant, whose workstation may change between two imports.
    auto first = NewDocument("VB", 9);
    office->transactions.Save(first->Current());
    auto other = NewDocument("VB", 9);
    other->WorkstationStamp(2, {2025, 1, 10, 12, 0, 0});
    office->transactions.Save(other->Current());
    EXPECT_EQ(Value("SELECT WorkstationID FROM documents"), "2");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM document_history"), "1");
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
}

TEST_F(Documents, ARefundVoidsTheDocumentAndReversesItsEffects) {
    auto business = NewDocument("FAC", 5);
    business->Current().CreditSale = true;
    office->transactions.Save(business->Current());
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);

    business->Current().StateCode = document_state::kVoid;
    office->transactions.Refund(business->Current());
    office->transactions.Refund(business->Current());  // a second refund changes nothing

    const auto saved = office->transactions.Find("FAC", "EXT", 5);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->Document.StateCode, document_state::kVoid);
    EXPECT_DOUBLE_EQ(saved->OpenAmount, 0);
    EXPECT_DOUBLE_EQ(Stock("C100"), 0);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM stock_movements WHERE Reversal = 1"), "1");
    EXPECT_EQ(Value("SELECT group_concat(Event) FROM document_history"), "voided");
}

TEST_F(Documents, AReturnMovesStockIn) {
    auto business = NewDocument("DEV", 1);
    office->transactions.Save(business->Current());
    EXPECT_DOUBLE_EQ(Stock("C100"), 2);
}

TEST_F(Documents, ALineWhoseItemIsUnknownIsKeptAndMovesNoStock) {
    auto business = NewDocument("VB", 2);
    AddLine(*business, "C999", 1, 3);
    office->transactions.Save(business->Current());
    const auto saved = office->transactions.Find("VB", "EXT", 2);
    ASSERT_TRUE(saved);
    ASSERT_EQ(saved->Document.Lines.size(), 2u);
    EXPECT_EQ(saved->Document.Lines[1].ItemID, "C999");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM stock_movements WHERE ItemID = 'C999'"), "0");
}

TEST_F(Documents, CardPaymentsKeepTheirDetailRecord) {
    auto business = NewDocument("VB", 4);
    TransactionPayment card = business->NewPayment(2);
    card.Amount = 3;
    card.CardDetail = CardPaymentDetail{3};
    business->AppendPayment(card);
    office->transactions.Save(business->Current());
    const auto saved = office->transactions.Find("VB", "EXT", 4);
    ASSERT_TRUE(saved);
    ASSERT_EQ(saved->Document.Payments.size(), 1u);
    EXPECT_EQ(saved->Document.Payments[0].CardDetail, CardPaymentDetail{3});
}

TEST_F(Documents, TheTotalAdjustmentIsAnAmountOfItsOwn) {
    auto business = NewDocument("VB", 6);
    EXPECT_DOUBLE_EQ(business->CalculatedTotal(), 3);
    business->SetTotalAdjustment(3.05 - business->CalculatedTotal());
    office->transactions.Save(business->Current());
    const auto saved = office->transactions.Find("VB", "EXT", 6);
    ASSERT_TRUE(saved);
    EXPECT_DOUBLE_EQ(saved->Document.LinesTotal, 3);
    EXPECT_DOUBLE_EQ(saved->Document.TotalAdjustment, 0.05);
    EXPECT_DOUBLE_EQ(saved->Document.Total, 3.05);
    EXPECT_DOUBLE_EQ(saved->Document.TotalNet + saved->Document.TotalTax, 3);
}

TEST_F(Documents, AFailedSaveLeavesNothing) {
    auto business = NewDocument("VB", 8);
    TransactionLine bad = business->NewLine();
    bad.ItemID = "C100";
    bad.TaxableGroupID = 77;  // no rate: the save's calculation fails
    bad.Quantity = 1;
    business->AppendLine(bad);
    EXPECT_THROW(office->transactions.Save(business->Current()), Error);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents"), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM document_lines"), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM stock_movements"), "0");
}

TEST_F(Documents, DefaultsComeFromTheDocumentTypeTheWorkstationAndTheCompany) {
    office->warehouses.Save({3, "Esplanada"}, 3, true);
    Workstation terrace{3, "Posto 3", 3};
    office->workstations.Save(terrace, 3, false);
    auto business = office->transactions.NewTransactionBusiness();
    business->InitNewTransaction("GT", "EXT");
    business->SetTransactionDefaults(*office->documentTypes.Get("GT"), 3);
    const host::Transaction& t = business->Current();
    EXPECT_EQ(t.Kind, DocumentKind::StockTransport);
    EXPECT_EQ(t.Stock, StockDirection::Out);
    EXPECT_EQ(t.WarehouseID, 3);
    EXPECT_EQ(t.CurrencyID, "EUR");
    EXPECT_EQ(t.Tax.CountryID, "PT");
    EXPECT_EQ(t.Tax.TaxRegionID, 1);
    EXPECT_EQ(business->NewLine().WarehouseID, 3);
    // A workstation the back office does not know takes the first warehouse.
    business->SetTransactionDefaults(*office->documentTypes.Get("GT"), 99);
    EXPECT_EQ(business->Current().WarehouseID, 1);
}

TEST_F(Documents, TheCreditCheckComparesTheTotalWithThePayments) {
    auto business = NewDocument("VB", 10);
    Pay(*business, 1, 2);
    const CreditCheckAmounts amounts = business->CreditCheck();
    EXPECT_DOUBLE_EQ(amounts.DocumentTotal, 3);
    EXPECT_DOUBLE_EQ(amounts.PaidAmount, 2);
}

}  // namespace
}  // namespace kitra::backoffice

namespace kitra::backoffice {
namespace {

using namespace host;

LedgerEntry Entry(std::int32_t id, int day, double open) {
    LedgerEntry entry;
    entry.EntryID = id;
    entry.DocumentTypeID = "FAC";
    entry.SeriesID = "EXT";
    entry.DocumentNumber = id;
    entry.DocumentDate = {2025, 1, day, 12, 0, 0};
    entry.Amount = open;
    entry.OpenAmount = open;
    return entry;
}

AccountTransaction Receipt(double received, std::vector<LedgerEntry> entries) {
    AccountTransaction receipt;
    for (const LedgerEntry& entry : entries) receipt.Lines.push_back({entry, entry.OpenAmount, 0});
    receipt.Payments.push_back({1, 1, received, {}});
    return receipt;
}

TEST(ReceiptCalculation, LessThanOpenPaysTheOldestFirst) {
    // Listed newest first: the list's order does not decide, the dates do.
    AccountTransaction receipt = Receipt(25, {Entry(2, 12, 10), Entry(1, 11, 20)});
    ApplyReceipt(receipt);
    EXPECT_DOUBLE_EQ(receipt.Lines[1].Amount, 20);
    EXPECT_DOUBLE_EQ(receipt.Lines[0].Amount, 5);
    EXPECT_DOUBLE_EQ(receipt.Applied, 25);
    EXPECT_DOUBLE_EQ(receipt.Credit, 0);
}

TEST(ReceiptCalculation, MoreThanOpenLeavesACredit) {
    AccountTransaction receipt = Receipt(50, {Entry(1, 11, 20), Entry(2, 12, 10.5)});
    ApplyReceipt(receipt);
    EXPECT_DOUBLE_EQ(receipt.Applied, 30.5);
    EXPECT_DOUBLE_EQ(receipt.Credit, 19.5);
    EXPECT_DOUBLE_EQ(receipt.Total, 50);
}

TEST(ReceiptCalculation, NothingReceivedSettlesNothing) {
    AccountTransaction receipt = Receipt(0, {Entry(1, 11, 20)});
    ApplyReceipt(receipt);
    EXPECT_DOUBLE_EQ(receipt.Lines[0].Amount, 0);
    EXPECT_DOUBLE_EQ(receipt.Credit, 0);
}

class Receipts : public Documents {
protected:
    // A credit sale FAC EXT/number for customer 7, nothing paid: 3,00 open.
    void CreditSale(std::int32_t number) {
        auto sale = NewDocument("FAC", number);
        sale->Current().CreditSale = true;
        office->transactions.Save(sale->Current());
    }
    AccountTransaction& NewReceipt(std::int32_t number, double received) {
        receipt_ = office->accountTransactions.NewAccountTransactionBusiness();
        receipt_->InitNewTransaction("PCL", "EXT");
        receipt_->Current().CustomerID = 7;
        receipt_->Current().DocumentNumber = number;
        receipt_->Current().DocumentDate = {2025, 1, 20, 10, 0, 0};
        const LedgerAccounts ledger = receipt_->LedgerAccountList();
        for (const LedgerEntry& entry : ledger.Entries()) receipt_->AddAccountLine(entry, 0);
        TransactionPayment payment = receipt_->NewPayment(1);
        payment.Amount = received;
        receipt_->AppendPayment(payment);
        receipt_->Calculate();
        return receipt_->Current();
    }
    std::unique_ptr<IAccountTransactionBusiness> receipt_;
};

TEST_F(Receipts, OnlyCustomerPaymentTypesMakeReceipts) {
    auto receipt = office->accountTransactions.NewAccountTransactionBusiness();
    try {
        receipt->InitNewTransaction("VB", "EXT");
        FAIL();
    } catch (const Error& e) {
        EXPECT_EQ(e.Description(), "O tipo de documento 'VB' não é de pagamentos de clientes.");
    }
}

TEST_F(Receipts, TheLedgerListsTheCustomersOpenCreditSalesOnly) {
    CreditSale(1);
    CreditSale(2);
    host::Transaction voided = office->transactions.Find("FAC", "EXT", 2)->Document;
    office->transactions.Refund(voided);
    auto receipt = office->accountTransactions.NewAccountTransactionBusiness();
    receipt->InitNewTransaction("PCL", "EXT");
    receipt->Current().CustomerID = 7;
    const LedgerAccounts ledger = receipt->LedgerAccountList();
    ASSERT_EQ(ledger.Entries().size(), 1u);
    EXPECT_NE(ledger.Find("fac", "ext", 1), nullptr);  // codes compare without letter case
    EXPECT_EQ(ledger.Find("FAC", "EXT", 2), nullptr);  // voided
    receipt->Current().CustomerID = 8;
    EXPECT_TRUE(receipt->LedgerAccountList().Entries().empty());
}

TEST_F(Receipts, SearchingTheLedgerFindsWhatTheWholeListHolds) {
    CreditSale(1);
    CreditSale(2);
    CreditSale(3);
    office->transactions.Refund(office->transactions.Find("FAC", "EXT", 2)->Document);
    office->accountTransactions.Save(NewReceipt(9, 3));  // settles FAC 1 in full
    // Searched before the whole list is read, each search reads one entry; it must find exactly
    // what the whole list holds.
    auto receipt = office->accountTransactions.NewAccountTransactionBusiness();
    receipt->InitNewTransaction("PCL", "EXT");
    receipt->Current().CustomerID = 7;
    const LedgerAccounts searched = receipt->LedgerAccountList();
    const LedgerAccounts whole = receipt->LedgerAccountList();
    ASSERT_EQ(whole.Entries().size(), 1u);
    const LedgerEntry* open = searched.Find("fac", "ext", 3);  // codes compare without letter case
    ASSERT_NE(open, nullptr);
    EXPECT_EQ(*open, whole.Entries()[0]);
    EXPECT_DOUBLE_EQ(open->OpenAmount, 3);
    EXPECT_EQ(searched.Find("FAC", "EXT", 1), nullptr);  // paid in full
    EXPECT_EQ(searched.Find("FAC", "EXT", 2), nullptr);  // voided
    EXPECT_EQ(searched.Find("FAC", "EXT", 4), nullptr);  // no such document
    EXPECT_EQ(searched.Find("VB", "EXT", 3), nullptr);   // another type
    // What a search found stays where it is while the list is searched again.
    ASSERT_NE(searched.Find("FAC", "EXT", 3), nullptr);
    EXPECT_EQ(open->DocumentNumber, 3);
    EXPECT_DOUBLE_EQ(open->OpenAmount, 3);
    // Another customer's search finds none of customer 7's entries.
    receipt->Current().CustomerID = 8;
    EXPECT_EQ(receipt->LedgerAccountList().Find("FAC", "EXT", 3), nullptr);
    // The receipt being saved again sees what it settled as open.
    receipt->Current().CustomerID = 7;
    receipt->Current().DocumentNumber = 9;
    const LedgerAccounts replacing = receipt->LedgerAccountList();
    const LedgerEntry* again = replacing.Find("FAC", "EXT", 1);
    ASSERT_NE(again, nullptr);
    EXPECT_DOUBLE_EQ(again->OpenAmount, 3);
}

TEST_F(Receipts, SavingSettlesAndASecondReceiptFindsNothingOpen) {
    CreditSale(1);
    AccountTransaction& first = NewReceipt(1, 3);
    office->accountTransactions.Save(first);
    EXPECT_EQ(Value("SELECT OpenAmount FROM account_entries"), "0.0");
    AccountTransaction& second = NewReceipt(2, 3);
    EXPECT_TRUE(second.Lines.empty());
    office->accountTransactions.Save(second);  // nothing to settle: all of it is credit
    EXPECT_EQ(Value("SELECT SUM(Amount) FROM account_settlements"), "3.0");
    EXPECT_EQ(Value("SELECT OpenAmount FROM account_entries WHERE EntryType = 'C'"), "3.0");
}

TEST_F(Receipts, AReceiptSavedAgainReplacesItsFormerSettlements) {
    CreditSale(1);
    office->accountTransactions.Save(NewReceipt(5, 1));
    EXPECT_EQ(Value("SELECT OpenAmount FROM account_entries"), "2.0");
    // The same receipt again: its former 1,00 counts as open for it.
    AccountTransaction& again = NewReceipt(5, 2);
    ASSERT_EQ(again.Lines.size(), 1u);
    EXPECT_DOUBLE_EQ(again.Lines[0].Entry.OpenAmount, 3);
    office->accountTransactions.Save(again);
    EXPECT_EQ(Value("SELECT OpenAmount FROM account_entries"), "1.0");
    EXPECT_EQ(Value("SELECT COUNT(*) || ' ' || SUM(Amount) FROM account_settlements"), "1 2.0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM documents WHERE Kind = 7"), "1");
}

TEST_F(Receipts, ASettlementNeverExceedsWhatIsOpenWhenSaved) {
    CreditSale(1);
    const AccountTransaction stale = NewReceipt(1, 3);  // built while 3,00 was open
    AccountTransaction built = stale;
    // Meanwhile another receipt settles 2,00.
    office->accountTransactions.Save(NewReceipt(2, 2));
    office->accountTransactions.Save(built);
    EXPECT_EQ(Value("SELECT OpenAmount FROM account_entries WHERE EntryType = 'D'"), "0.0");
    EXPECT_EQ(Value("SELECT SUM(Amount) FROM account_settlements"), "3.0");
    EXPECT_EQ(Value("SELECT OpenAmount FROM account_entries WHERE EntryType = 'C'"), "2.0");
}

TEST_F(Documents, ACashDocumentIsWorthWhatItMovesThroughTheDrawer) {
    auto business = office->transactions.NewTransactionBusiness();
    business->InitNewTransaction("SC", "EXT");
    business->Current().DocumentDate = business->Current().DueDate = {2025, 1, 10, 12, 0, 0};
    business->WorkstationStamp(2, {2025, 1, 10, 12, 0, 0});
    Pay(*business, 1, 40);
    office->transactions.Save(business->Current());
    const auto saved = office->transactions.Find("SC", "EXT", 1);
    ASSERT_TRUE(saved);
    EXPECT_DOUBLE_EQ(saved->Document.Total, 40);
    EXPECT_EQ(Value("SELECT WorkstationID || ' ' || Amount FROM cash_movements"), "2 -40.0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM account_entries"), "0");
}

}  // namespace
}  // namespace kitra::backoffice
