// ImportSaleDocuments with its lines and tenders, against a restaurant database on the private
// server and a real back office: what the host holds afterwards and what the log says.
#include <algorithm>
#include <tuple>

#include "tests/import/DocumentImportTest.h"

namespace kitra {
namespace {

class SaleDocumentsImportTest : public DocumentImportTest {
protected:
    bool Import() { return ImportSaleDocuments(engine, connection, restaurant); }

    static std::string Section() { return Title("Transacções", "A importar Transacções"); }
    static std::string Count(int n) {
        return Line("Transacções", "Registos importados:" + std::to_string(n));
    }
};

TEST_F(SaleDocumentsImportTest, AnInvoiceArrivesWithItsLinesPaymentsTotalsAndStock) {
    AddHeader(1, 17, "FT0000123", 1800);
    AddLine(1, 1, "Cerveja", 2, 150, 300);
    AddLine(1, 2, "Picanha", 1500, 1000, 1500, 2, "10007");
    AddTender(1, 1, 300);
    AddTender(1, 2, 800);
    AddTender(1, 4, 700);  // MB Way is Multibanco in the host
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(1));
    EXPECT_EQ(engine.CountOf(Counter::Transactions), 1);
    EXPECT_EQ(engine.WarningCount(), 0);

    const auto saved = Document("VB", 123);
    ASSERT_TRUE(saved.has_value());
    const host::Transaction& t = saved->Document;
    EXPECT_EQ(t.Kind, host::DocumentKind::Sale);
    EXPECT_DOUBLE_EQ(t.CustomerID, 31);
    EXPECT_DOUBLE_EQ(t.SalesmanID, 12);
    EXPECT_EQ(t.PriceLineID, 1);
    EXPECT_DOUBLE_EQ(t.ExchangeRate, 1);
    EXPECT_TRUE(t.PricesIncludeTax);
    EXPECT_EQ(t.WarehouseID, 1);
    EXPECT_EQ(t.WorkstationID, 1);
    EXPECT_EQ(t.DocumentDate, (DateTime{2024, 5, 31, 21, 30, 0}));
    EXPECT_EQ(t.DueDate, t.DocumentDate);
    EXPECT_EQ(t.StampDate, kMoment);
    EXPECT_FALSE(t.CreditSale);
    EXPECT_EQ(t.StateCode, host::document_state::kNormal);

    ASSERT_EQ(t.Lines.size(), 2u);
    EXPECT_EQ(t.Lines[0].ItemID, "C100");
    EXPECT_EQ(t.Lines[0].Description, "Cerveja");
    EXPECT_DOUBLE_EQ(t.Lines[0].Quantity, 2);
    EXPECT_DOUBLE_EQ(t.Lines[0].UnitPrice, 1.5);
    EXPECT_DOUBLE_EQ(t.Lines[0].UnitPriceWithoutTax, 1.22);
    EXPECT_DOUBLE_EQ(t.Lines[0].TotalWithTax, 3);
    EXPECT_EQ(t.Lines[0].TaxableGroupID, 1);
    EXPECT_DOUBLE_EQ(t.Lines[0].SalesmanID, 12);
    EXPECT_EQ(t.Lines[1].ItemID, "C200");
    EXPECT_DOUBLE_EQ(t.Lines[1].Quantity, 1.5);  // grams made kilograms
    EXPECT_DOUBLE_EQ(t.Lines[1].TotalWithTax, 15);
    EXPECT_EQ(t.Lines[1].TaxableGroupID, 2);
    EXPECT_DOUBLE_EQ(t.Lines[1].SalesmanID, 7);

    // Cash, and one Multibanco line for the two payment types that map to it; the card detail
    // carries the amount of the row that made the line.
    ASSERT_EQ(t.Payments.size(), 2u);
    EXPECT_EQ(t.Payments[0], (host::TransactionPayment{1, 1, 3, {}}));
    EXPECT_EQ(t.Payments[1], (host::TransactionPayment{2, 2, 15, host::CardPaymentDetail{8}}));

    EXPECT_DOUBLE_EQ(t.Total, 18);
    EXPECT_DOUBLE_EQ(t.TotalAdjustment, 0);
    EXPECT_DOUBLE_EQ(t.PaidAmount, 18);
    ASSERT_EQ(t.Taxes.size(), 2u);
    EXPECT_EQ(t.Taxes[0], (host::TaxSummary{1, 23, 2.44, 0.56, 3}));
    EXPECT_EQ(t.Taxes[1], (host::TaxSummary{2, 13, 13.27, 1.73, 15}));
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
    EXPECT_DOUBLE_EQ(Stock("C200"), -1.5);
    EXPECT_EQ(HostValue("SELECT COUNT(*) FROM account_entries"), "0");
    EXPECT_EQ(DocumentStatuses(), std::vector<std::string>{"FT0000123"});
}

TEST_F(SaleDocumentsImportTest, OnlyTheThreeTypesAreReadInDocumentIdOrder) {
    AddInvoice(1, "FT0000003");
    AddHeader(2, 11, "CC0000001", 0);
    AddHeader(3, 2, "CM0000001", 0);   // a table check
    AddHeader(4, 16, "OR0000001", 0);  // a quotation
    AddHeader(5, 13, "GS0000001", 0);
    AddInvoice(6, "FT0000002");
    ASSERT_TRUE(Import());
    EXPECT_EQ(DocumentStatuses(),
              (std::vector<std::string>{"CC0000001", "FT0000002", "FT0000003", "GS0000001"}));
    EXPECT_EQ(Documents(), 4);
    EXPECT_TRUE(Document("FAC", 1));
    EXPECT_TRUE(Document("GT", 1));
    EXPECT_TRUE(Document("VB", 2));
    EXPECT_TRUE(Document("VB", 3));
}

TEST_F(SaleDocumentsImportTest, AHeaderChangedExactlyAtTheImportDateIsNotImportedAgain) {
    AddInvoice(1, "FT0000001", "N", "2024-01-01 00:00:00");
    AddInvoice(2, "FT0000002", "N", "2024-01-01 00:00:01");
    ASSERT_TRUE(Import());
    EXPECT_EQ(DocumentStatuses(), std::vector<std::string>{"FT0000002"});
    EXPECT_FALSE(Document("VB", 1));
    EXPECT_TRUE(Document("VB", 2));
}

TEST_F(SaleDocumentsImportTest, DocumentNumbersComeFromTheLastSevenCharacters) {
    EXPECT_EQ(KitraExecutioner::DocumentNumberFromID("FT0000123"), 123);
    EXPECT_EQ(KitraExecutioner::DocumentNumberFromID("1234567"), 0);
    EXPECT_EQ(KitraExecutioner::DocumentNumberFromID("FT"), 0);
    EXPECT_EQ(KitraExecutioner::DocumentNumberFromID("12345678"), 2345678);
    EXPECT_EQ(KitraExecutioner::DocumentNumberFromID("FTA00012x"), 0);  // no leading number
}

TEST_F(SaleDocumentsImportTest, SeveralDocumentsWhoseNumberIsZeroAreAllKept) {
    AddInvoice(1, "FT0000005");
    AddInvoice(2, "1234567");
    AddInvoice(3, "A1");
    AddInvoice(4, "");
    ASSERT_TRUE(Import());
    EXPECT_EQ(engine.CountOf(Counter::Transactions), 4);
    EXPECT_EQ(Documents(), 4);
    // In DocumentID order: "", "1234567", "A1" take the series' next free numbers after the
    // highest one there; FT0000005 keeps its own.
    EXPECT_EQ(HostValue("SELECT group_concat(DocumentNumber || ':' || NumberAssigned, ' ') FROM "
                        "(SELECT * FROM documents ORDER BY DocumentKey)"),
              "1:1 2:1 3:1 5:0");
    EXPECT_DOUBLE_EQ(Stock("C100"), -8);
}

TEST_F(SaleDocumentsImportTest, SalesmanCodesAboveTenThousandLoseTheirUidBase) {
    EXPECT_EQ(engine.MapSalesmanCode("10012"), 12);
    EXPECT_EQ(engine.MapSalesmanCode("12345"), 345);
    EXPECT_EQ(engine.MapSalesmanCode("10000"), 10000);
    EXPECT_EQ(engine.MapSalesmanCode("7"), 7);
    EXPECT_EQ(engine.MapSalesmanCode("10007,6"), 8);  // rounded half to even, then modulo

    AddHeader(1, 17, "FT0000001", 600);
    AddLine(1, 1, "Cerveja", 2, 150, 300, 1, "10012");
    AddLine(1, 1, "Cerveja", 2, 150, 300, 1, "10000");
    AddTender(1, 1, 600);
    AddHeader(2, 17, "FT0000002", 0, "10055");  // a salesman the host lacks
    AddHeader(3, 17, "FT0000003", 0, "NULL");   // a salesman the restaurant lacks
    ASSERT_TRUE(Import());
    const auto first = Document("VB", 1);
    ASSERT_TRUE(first);
    EXPECT_DOUBLE_EQ(first->Document.Lines[0].SalesmanID, 12);
    EXPECT_DOUBLE_EQ(first->Document.Lines[1].SalesmanID, 10000);
    EXPECT_DOUBLE_EQ(Document("VB", 2)->Document.SalesmanID, 0);
    EXPECT_DOUBLE_EQ(Document("VB", 3)->Document.SalesmanID, 0);
}

TEST_F(SaleDocumentsImportTest, UnknownCustomersBecomeCustomerZero) {
    AddHeader(1, 17, "FT0000001", 0, "10012", "2");     // 99: the host lacks it
    AddHeader(2, 17, "FT0000002", 0, "10012", "NULL");  // no customer at all
    AddHeader(3, 17, "FT0000003", 0, "10012", "55");    // a uid the restaurant lacks
    ASSERT_TRUE(Import());
    for (int number : {1, 2, 3}) {
        const auto saved = Document("VB", number);
        ASSERT_TRUE(saved) << number;
        EXPECT_DOUBLE_EQ(saved->Document.CustomerID, 0) << number;
    }
}

TEST_F(SaleDocumentsImportTest, AnEmptyCreditSettingSkipsEveryCreditHeaderWithOneLine) {
    settings->CreditTransDocument.clear();
    Use(*settings);
    AddHeader(1, 11, "CC0000001", 300, "10055", "2");  // unknown salesman and customer too
    AddHeader(2, 11, "CC0000002", 300);
    AddInvoice(3, "FT0000001");
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Unmapped("CC0000001") + Unmapped("CC0000002") + Count(1));
    EXPECT_EQ(engine.WarningCount(), 2);
    EXPECT_EQ(Documents(), 1);
    // Each header left out is shown as the status text too, as it is logged.
    const auto& shown = office.notifier->statuses;
    for (const char* id : {"CC0000001", "CC0000002"}) {
        const std::string message = std::string("Não foi possível adicionar a Transacção '") + id +
                                    "' porque não existe o tipo de documento não está mapeado.";
        EXPECT_EQ(std::count(shown.begin(), shown.end(), message), 1) << message;
    }
}

TEST_F(SaleDocumentsImportTest, AnyStatusButNIsARefund) {
    AddInvoice(1, "FT0000001", "N");
    AddInvoice(2, "FT0000002", "");
    AddInvoice(3, "FT0000003", "A");
    ASSERT_TRUE(Import());
    EXPECT_EQ(engine.CountOf(Counter::Transactions), 3);
    EXPECT_EQ(Document("VB", 1)->Document.StateCode, host::document_state::kNormal);
    EXPECT_EQ(Document("VB", 2)->Document.StateCode, host::document_state::kVoid);
    EXPECT_EQ(Document("VB", 3)->Document.StateCode, host::document_state::kVoid);
    // The refunds' stock came back: only the normal sale's two units are out.
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
    EXPECT_EQ(HostValue("SELECT COUNT(*) FROM document_history WHERE Event = 'voided'"), "2");
}

TEST_F(SaleDocumentsImportTest, TheItemPrefixGoesBeforeTheItemCode) {
    AddInvoice(1, "FT0000001");
    restaurant.ItemIDPrefix = "R1";
    ASSERT_TRUE(Import());
    EXPECT_EQ(Document("VB", 1)->Document.Lines[0].ItemID, "R1100");
    restaurant.ItemIDPrefix.clear();
    Database().Execute("UPDATE transactionsheaders SET ModifyDate = '2024-06-02 00:00:00'");
    ASSERT_TRUE(Import());
    EXPECT_EQ(Document("VB", 1)->Document.Lines[0].ItemID, "100");
}

TEST_F(SaleDocumentsImportTest, EachPriceIsAskedOfTheHostOnceADocumentStep) {
    AddHeader(1, 17, "FT0000123", 450);
    AddLine(1, 1, "Cerveja", 3, 150, 450);
    AddTender(1, 1, 450);
    AddHeader(2, 17, "FT0000124", 300);
    AddLine(2, 1, "Cerveja", 2, 150, 300);
    AddTender(2, 1, 300);
    ASSERT_TRUE(Import());
    // The same price under the same group: one question for both documents.
    EXPECT_EQ(tax.valuesAsked, 1);
    for (const int number : {123, 124}) {
        const auto saved = Document("VB", number);
        ASSERT_TRUE(saved.has_value());
        ASSERT_EQ(saved->Document.Lines.size(), 1u);
        EXPECT_DOUBLE_EQ(saved->Document.Lines[0].UnitPriceWithoutTax, 1.22);
    }
    // A new step asks again: the host's taxes may have changed between steps.
    ASSERT_TRUE(Import());
    EXPECT_EQ(tax.valuesAsked, 2);
}

TEST_F(SaleDocumentsImportTest, OnlyItemsSoldByWeightHaveTheirQuantityDividedByAThousand) {
    AddHeader(1, 17, "FT0000001", 0);
    AddLine(1, 2, "Picanha", 1500, 1000, 1500);  // C200, weighed
    AddLine(1, 1, "Cerveja", 1500, 150, 300);    // C100, not weighed
    AddLine(1, 3, "Novo", 1500, 100, 150);       // C300, unknown to the host
    ASSERT_TRUE(Import());
    const auto saved = Document("VB", 1);
    ASSERT_TRUE(saved);
    ASSERT_EQ(saved->Document.Lines.size(), 3u);
    EXPECT_DOUBLE_EQ(saved->Document.Lines[0].Quantity, 1.5);
    EXPECT_DOUBLE_EQ(saved->Document.Lines[1].Quantity, 1500);
    EXPECT_DOUBLE_EQ(saved->Document.Lines[2].Quantity, 1500);
    // The unknown item's line is kept as given and moves no stock.
    EXPECT_EQ(saved->Document.Lines[2].ItemID, "C300");
    EXPECT_EQ(saved->Document.Lines[2].Description, "Novo");
    EXPECT_DOUBLE_EQ(Stock("C300"), 0);
}

// The host lacks item C300: its 1500 grams stay 1500, and the line keeps the value the
// restaurant gave it rather than 1500 × its price per kilogram.
TEST_F(SaleDocumentsImportTest, ALineTheHostWouldPriceOtherwiseKeepsTheRestaurantsValue) {
    AddHeader(1, 17, "FT0000001", 1800);
    AddLine(1, 3, "Novo", 1500, 1000, 1500, 2);  // 1,5 kg at 10,00 the kilogram, 13 %
    AddLine(1, 1, "Cerveja", 2, 150, 300);
    AddTender(1, 1, 1800);
    ASSERT_TRUE(Import());
    const auto saved = Document("VB", 1);
    ASSERT_TRUE(saved);
    const host::Transaction& t = saved->Document;
    ASSERT_EQ(t.Lines.size(), 2u);
    EXPECT_DOUBLE_EQ(t.Lines[0].Quantity, 1500);
    EXPECT_DOUBLE_EQ(t.Lines[0].TotalWithTax, 15);
    EXPECT_DOUBLE_EQ(t.Lines[0].NetValue, 13.27);
    EXPECT_DOUBLE_EQ(t.Lines[0].TaxValue, 1.73);
    EXPECT_DOUBLE_EQ(t.LinesTotal, 18);
    EXPECT_DOUBLE_EQ(t.TotalAdjustment, 0);
    EXPECT_DOUBLE_EQ(t.Total, 18);
    EXPECT_DOUBLE_EQ(t.TotalTax, 2.29);  // 1,73 + 0,56
    EXPECT_FALSE(t.CreditSale);
}

// A document whose DocumentID gives no number comes first in DocumentID order and takes the
// series' next free number; the restaurant's own document with that number, in the same run or
// a later one, takes it, and the other moves to the next free number. A rewind changes nothing.
TEST_F(SaleDocumentsImportTest, TheRestaurantsOwnNumberNeverOverwritesADocumentNumberedHere) {
    AddInvoice(1, "FT0000000");
    AddHeader(2, 17, "FT0000001", 450);
    AddLine(2, 1, "Cerveja", 3, 150, 450);
    AddTender(2, 1, 450);
    ASSERT_TRUE(Import());
    EXPECT_EQ(engine.CountOf(Counter::Transactions), 2);
    EXPECT_EQ(HostValue("SELECT group_concat(DocumentNumber || ':' || NumberAssigned || ':' || "
                        "SourceUID || ':' || Total, ' ') FROM (SELECT * FROM documents ORDER BY "
                        "DocumentNumber)"),
              "1:0:2:4.5 2:1:1:3.0");
    EXPECT_EQ(HostValue("SELECT Event || ' ' || DocumentNumber FROM document_history"), "renumbered 1");

    // The next run brings the restaurant's document 2.
    AddHeader(3, 17, "FT0000002", 150, "10012", "1", "N", "2024-07-02 10:00:00");
    AddLine(3, 1, "Cerveja", 1, 150, 150);
    AddTender(3, 1, 150);
    restaurant.ImportDateTransactions = "2024-07-01 12:00:00";
    ASSERT_TRUE(Import());
    EXPECT_EQ(HostValue("SELECT group_concat(DocumentNumber || ':' || NumberAssigned || ':' || "
                        "SourceUID || ':' || Total, ' ') FROM (SELECT * FROM documents ORDER BY "
                        "DocumentNumber)"),
              "1:0:2:4.5 2:0:3:1.5 3:1:1:3.0");

    // Rewound and imported again: the same three documents, nothing new in their history.
    restaurant.ImportDateTransactions = "2000-01-01 00:00:00";
    ASSERT_TRUE(Import());
    EXPECT_EQ(Documents(), 3);
    EXPECT_EQ(HostValue("SELECT group_concat(DocumentNumber || ':' || SourceUID, ' ') FROM "
                        "(SELECT * FROM documents ORDER BY DocumentNumber)"),
              "1:2 2:3 3:1");
    EXPECT_EQ(HostValue("SELECT group_concat(Event || ' ' || DocumentNumber, ', ') FROM document_history"),
              "renumbered 1, renumbered 2");
    EXPECT_DOUBLE_EQ(Stock("C100"), -6);
}

// Two sales without a number of one type, second, customer and salesman: when one of them
// changes, the next run replaces that one, never the other.
TEST_F(SaleDocumentsImportTest, TwoDocumentsWithoutANumberAtOneMomentStayTwoWhenOneChanges) {
    for (const auto& [uid, id, cents] : {std::tuple{1, "S1", 6420}, std::tuple{2, "S2", 6920}}) {
        AddHeader(uid, 17, id, cents);
        AddLine(uid, 1, "Cerveja", 1, cents, cents);
        AddTender(uid, 1, cents);
    }
    ASSERT_TRUE(Import());
    ASSERT_EQ(Documents(), 2);
    Database().Execute(
        "UPDATE transactionsheaders SET TableTotal = 7020, ModifyDate = '2024-07-02 10:00:00' WHERE UID = 2;"
        "UPDATE transactionsdetails SET PluUnitPrice = 7020, SaleValue = 7020 WHERE TransactionUID = 2;"
        "UPDATE transactionstenders SET value = 7020 WHERE TransactionUID = 2");
    restaurant.ImportDateTransactions = "2024-07-01 12:00:00";
    ASSERT_TRUE(Import());
    EXPECT_EQ(engine.CountOf(Counter::Transactions), 3);
    EXPECT_EQ(HostValue("SELECT group_concat(DocumentNumber || ':' || SourceUID || ':' || Total, ' ') "
                        "FROM (SELECT * FROM documents ORDER BY DocumentNumber)"),
              "1:1:64.2 2:2:70.2");
    EXPECT_EQ(HostValue("SELECT group_concat(DocumentNumber || ' ' || Event) FROM document_history"),
              "2 replaced");
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
}

TEST_F(SaleDocumentsImportTest, LinesComeInTheOrderTheDatabaseReturnsThem) {
    AddHeader(1, 17, "FT0000001", 0);
    Database().Execute(
        "INSERT INTO transactionsdetails (UID, TransactionUID, PluUid, PluName, Quantity,"
        " PluUnitPrice, SaleValue, SaleTaxUID, SalesmanUID) VALUES"
        " (30, 1, 1, 'Terceira', 1, 100, 100, 1, 10012), (10, 1, 1, 'Primeira', 1, 100, 100, 1, 10012),"
        " (20, 1, 1, 'Segunda', 1, 100, 100, 1, 10012)");
    ASSERT_TRUE(Import());
    std::vector<std::string> expected;
    for (const auto& row : Database().Query(
             "SELECT td.PluName FROM transactionsdetails td INNER JOIN taxes tx on tx.uid ="
             " td.SaleTaxUID INNER JOIN plus pl on td.PluUid = pl.UID Where TransactionUID = 1"))
        expected.push_back(row[0]);
    const auto saved = Document("VB", 1);
    ASSERT_TRUE(saved);
    std::vector<std::string> got;
    for (const auto& line : saved->Document.Lines) got.push_back(line.Description);
    EXPECT_EQ(got, expected);
    EXPECT_EQ(saved->Document.Lines[2].LineNumber, 3);
}

TEST_F(SaleDocumentsImportTest, PaymentsOnAccountAndOffersAreNeverPayments) {
    AddHeader(1, 11, "CC0000001", 300);
    AddLine(1, 1, "Cerveja", 2, 150, 300);
    AddTender(1, 6, 300);  // 9999: on the customer's account
    AddHeader(2, 17, "FT0000002", 300);
    AddLine(2, 1, "Cerveja", 2, 150, 300);
    AddTender(2, 7, 100);  // 9998: offered
    AddTender(2, 1, 200);
    ASSERT_TRUE(Import());
    const auto credit = Document("FAC", 1);
    ASSERT_TRUE(credit);
    EXPECT_TRUE(credit->Document.Payments.empty());
    // Nothing paid: a credit sale, open on the customer's account for the whole total.
    EXPECT_TRUE(credit->Document.CreditSale);
    EXPECT_DOUBLE_EQ(credit->OpenAmount, 3);
    EXPECT_EQ(HostValue("SELECT CustomerID || ' ' || DocumentTypeID || ' ' || DocumentNumber || "
                        "' ' || OpenAmount FROM account_entries"),
              "31 FAC 1 3.0");
    const auto sale = Document("VB", 2);
    ASSERT_TRUE(sale);
    ASSERT_EQ(sale->Document.Payments.size(), 1u);
    EXPECT_DOUBLE_EQ(sale->Document.Payments[0].Amount, 2);
    EXPECT_TRUE(sale->Document.CreditSale);  // what the offer left unpaid
    EXPECT_DOUBLE_EQ(sale->OpenAmount, 1);
}

TEST_F(SaleDocumentsImportTest, ATenderWithoutEquivalenceFallsBackToTheDefaultThenToCash) {
    AddHeader(1, 17, "FT0000001", 300);
    AddLine(1, 1, "Cerveja", 2, 150, 300);
    AddTender(1, 8, 300);  // no equivalence
    settings->DefaultTenderPayment = 4;
    Use(*settings);
    ASSERT_TRUE(Import());
    EXPECT_EQ(Document("VB", 1)->Document.Payments[0].TenderID, 4);

    settings->DefaultTenderPayment = 0;
    Use(*settings);
    Database().Execute("UPDATE transactionsheaders SET ModifyDate = '2024-06-02 00:00:00'");
    ASSERT_TRUE(Import());
    EXPECT_EQ(Document("VB", 1)->Document.Payments[0].TenderID, 1);
}

TEST_F(SaleDocumentsImportTest, OnlyTheRestaurantValueIsUpperCasedWhenTendersAreMatched) {
    settings->TenderEquivalence = {{3, "abc"}, {2, "ABC"}};
    Use(*settings);
    EXPECT_EQ(engine.FindTenderEquivalence("abc"), 2);
    settings->TenderEquivalence = {{3, "abc"}};
    Use(*settings);
    EXPECT_EQ(engine.FindTenderEquivalence("abc"), 0);
    EXPECT_EQ(engine.FindTenderEquivalence("ABC"), 0);
}

TEST_F(SaleDocumentsImportTest, TendersOfTheOnAccountTypeAreSkipped) {
    AddHeader(1, 17, "FT0000001", 300);
    AddLine(1, 1, "Cerveja", 2, 150, 300);
    AddTender(1, 5, 300);  // cheque, mapped here to the host's on-account tender 6
    ASSERT_TRUE(Import());
    EXPECT_TRUE(Document("VB", 1)->Document.Payments.empty());
}

TEST_F(SaleDocumentsImportTest, TheTotalAdjustmentMakesTheDocumentShowTheTableTotal) {
    AddHeader(1, 17, "FT0000001", 295);  // the restaurant rounded 3,00 down to 2,95
    AddLine(1, 1, "Cerveja", 2, 150, 300);
    AddTender(1, 1, 295);
    ASSERT_TRUE(Import());
    const auto saved = Document("VB", 1);
    ASSERT_TRUE(saved);
    EXPECT_DOUBLE_EQ(saved->Document.LinesTotal, 3);
    EXPECT_DOUBLE_EQ(saved->Document.TotalAdjustment, -0.05);
    EXPECT_DOUBLE_EQ(saved->Document.Total, 2.95);
    // Checked before the adjustment: 2,95 paid of 3,00.
    EXPECT_TRUE(saved->Document.CreditSale);
    EXPECT_DOUBLE_EQ(saved->OpenAmount, 0);  // after the adjustment nothing is left unpaid
}

TEST_F(SaleDocumentsImportTest, AnErrorInADocumentsLinesLeavesNoHalfDocumentAndEndsTheStep) {
    AddInvoice(1, "FT0000001");
    AddHeader(2, 17, "FT0000002", 600);
    AddLine(2, 1, "Cerveja", 2, 150, 300);
    AddLine(2, 1, "Cerveja", 2, 150, 300, 4);  // 99 %: no equivalence, no host group
    AddTender(2, 1, 600);
    AddInvoice(3, "FT0000003");
    EXPECT_FALSE(Import());
    EXPECT_EQ(LogText(),
              Section() + Line("Transacções",
                               "## Erro ## ao importar a tabela de Transacções. Transacção: "
                               "FT0000002 : SetTransactionDefaults - Não existe nenhuma taxa de "
                               "IVA de 99% na região fiscal PT/1."));
    EXPECT_EQ(engine.ErrorCount(), 1);
    EXPECT_EQ(Documents(), 1);  // the first stays; nothing of the second; the third never came
    EXPECT_TRUE(Document("VB", 1));
    EXPECT_EQ(HostValue("SELECT COUNT(*) FROM document_lines"), "1");
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);
    EXPECT_EQ(engine.CountOf(Counter::Transactions), 1);
}

TEST_F(SaleDocumentsImportTest, AHeaderChangedAfterItsImportIsReplacedByItsNewVersion) {
    AddInvoice(1, "FT0000007");
    ASSERT_TRUE(Import());
    ASSERT_TRUE(Document("VB", 7));
    // The restaurant adds a line and changes the header; the next import selects it again.
    AddLine(1, 2, "Picanha", 500, 1000, 500, 2);
    Database().Execute(
        "UPDATE transactionsheaders SET TableTotal = 800, ModifyDate = '2024-07-02 10:00:00';"
        "UPDATE transactionstenders SET value = 800");
    restaurant.ImportDateTransactions = "2024-07-01 12:00:00";
    ASSERT_TRUE(Import());
    EXPECT_EQ(Documents(), 1);
    const auto saved = Document("VB", 7);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->Document.Lines.size(), 2u);
    EXPECT_DOUBLE_EQ(saved->Document.Total, 8);
    EXPECT_DOUBLE_EQ(saved->Document.Payments[0].Amount, 8);
    EXPECT_DOUBLE_EQ(Stock("C100"), -2);  // once, not twice
    EXPECT_DOUBLE_EQ(Stock("C200"), -0.5);
    EXPECT_EQ(HostValue("SELECT Event FROM document_history"), "replaced");
}

TEST_F(SaleDocumentsImportTest, AHostRefusalIsReportedWithItsStepLabel) {
    restaurant.TransSerial = "NOPE";
    AddInvoice(1, "FT0000001");
    EXPECT_FALSE(Import());
    EXPECT_EQ(LogText(), Section() + Line("Transacções",
                                          "## Erro ## ao importar a tabela de Transacções. "
                                          "Transacção: FT0000001 : InitNewTransaction - Não "
                                          "existe a série 'NOPE'."));
    EXPECT_EQ(Documents(), 0);
}

TEST_F(SaleDocumentsImportTest, AHeaderUidThatIsNotAWholeNumberNeverReachesAStatement) {
    EXPECT_EQ(CheckedHeaderUid("42"), "42");
    for (const std::string bad : {"", "1 OR 1=1", "-1", "4.5", "12345678901"}) {
        EXPECT_THROW(CheckedHeaderUid(bad), Error) << bad;
    }
}

TEST_F(SaleDocumentsImportTest, AnUnreachableServerIsLoggedAndTheStepEnds) {
    connection.SetConnectionString(
        "Driver={MySQL ODBC 5.1 Driver};Server=127.0.0.1;Database=x; User=x;Password=x;Option=3;"
        "Port=1");
    EXPECT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() +
                             Line("Transacções",
                                  "## Erro ## Não foi possível estabelecer comunicação com o "
                                  "Servidor. Verifique as suas credenciais de acesso ou se o "
                                  "servidor está acessivel.") +
                             Count(0));
    EXPECT_TRUE(BoxShown(
        "## Erro ## Não foi possível estabelecer comunicação com o Servidor. Verifique as suas "
        "credenciais de acesso ou se o servidor está acessivel.",
        host::MessageStyle::Critical, "Erro Acesso Servidor."));
}

}  // namespace
}  // namespace kitra
