// ImportCashMovements and ImportReceipts against a restaurant database on the private server and
// a real back office: the cash documents, the receipts and what they settle.
#include "tests/import/DocumentImportTest.h"

namespace kitra {
namespace {

class CashMovementsImportTest : public DocumentImportTest {
protected:
    bool Import() { return ImportCashMovements(engine, connection, restaurant); }
    static std::string Section() { return Title("Mov.Caixa", "A importar Movimentos Caixa"); }
    static std::string Count(int n) {
        return Line("Mov.Caixa", "Registos importados:" + std::to_string(n));
    }

    // The imported cash documents, in the order they were saved: type, comment, customer,
    // amount paid.
    std::vector<std::string> CashDocuments() {
        std::vector<std::string> rows;
        backoffice::Statement documents(
            office.Office().GetDatabase(),
            "SELECT d.DocumentTypeID || '|' || replace(d.Comment, char(13) || char(10), '/') || '|' "
            "|| d.CustomerID || '|' || d.Total || '|' || group_concat(p.TenderID || ':' || p.Amount) "
            "FROM documents d LEFT JOIN document_payments p ON p.DocumentKey = d.DocumentKey "
            "GROUP BY d.DocumentKey ORDER BY d.DocumentKey");
        while (documents.Step()) rows.push_back(documents.ColumnText(0));
        return rows;
    }
};

TEST_F(CashMovementsImportTest, EachMovementBecomesACashDocumentOfItsType) {
    AddMovement(1, 1, 1, 15000, "", "NULL", "'Troco inicial'");
    AddMovement(2, 3, 0, 5000);
    AddMovement(3, 8, 1, 2000, "", "1", "'Por conta'");
    AddMovement(4, 5, 2, 1000);  // neither in nor out: an entrance
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(4));
    EXPECT_EQ(CashDocuments(), (std::vector<std::string>{
                                   "EC|Fundo Maneio/Troco inicial|0|150.0|1:150.0",
                                   "SC|Sangria|0|50.0|1:50.0",
                                   "ADC|Pag.Conta Corrente/Por conta|31|20.0|1:20.0",
                                   "EC|Vale|0|10.0|1:10.0"}));
    // The payment on account is the customer's credit; the drawer took 150 + 20 + 10 - 50.
    EXPECT_EQ(HostValue("SELECT EntryType || ' ' || CustomerID || ' ' || OpenAmount FROM "
                        "account_entries"),
              "C 31 20.0");
    EXPECT_EQ(HostValue("SELECT SUM(Amount) FROM cash_movements WHERE WorkstationID = 1"), "130.0");
    EXPECT_EQ(engine.CountOf(Counter::CashMovements), 4);
    EXPECT_EQ(HostValue("SELECT COUNT(DISTINCT StampDate) || ' ' || MAX(StampDate) FROM documents"),
              "1 2024-07-01 12:00:00");
}

TEST_F(CashMovementsImportTest, MovementsOfADocumentAreNeverRead) {
    AddMovement(1, 10, 1, 300, "FT0000001");
    AddMovement(2, 9, 1, 300, "RC0000001", "1");
    AddMovement(3, 1, 1, 300);
    ASSERT_TRUE(Import());
    EXPECT_EQ(CashDocuments(), std::vector<std::string>{"EC|Fundo Maneio|0|3.0|1:3.0"});
}

TEST_F(CashMovementsImportTest, AmountsAreMadeWholeWithHalvesToEven) {
    AddMovement(1, 1, 1, 1250);
    AddMovement(2, 1, 1, 1350);
    AddMovement(3, 1, 1, 1251);
    ASSERT_TRUE(Import());
    EXPECT_EQ(CashDocuments(), (std::vector<std::string>{"EC|Fundo Maneio|0|12.0|1:12.0",
                                                         "EC|Fundo Maneio|0|14.0|1:14.0",
                                                         "EC|Fundo Maneio|0|13.0|1:13.0"}));
}

TEST_F(CashMovementsImportTest, APaymentOnAccountWithoutACustomerIsLeftOut) {
    AddMovement(7, 8, 1, 2000);
    AddMovement(8, 8, 1, 2000, "", "2");  // customer 99, whom the host does not know
    AddMovement(9, 2, 0, 2000);
    ASSERT_TRUE(Import());
    const std::string message = "porque não foi possivel associar nenhum tipo de documento";
    EXPECT_EQ(LogText(), Section() +
                             Line("Mov.Caixa", "Não foi possível adicionar o Mov.Caixa '7' " + message) +
                             Line("Mov.Caixa", "Não foi possível adicionar o Mov.Caixa '8' " + message) +
                             Count(1));
    EXPECT_EQ(engine.WarningCount(), 2);
    EXPECT_EQ(CashDocuments(), std::vector<std::string>{"SC|Fundo Maneio Prox|0|20.0|1:20.0"});
}

TEST_F(CashMovementsImportTest, AnUnmappedKindIsLeftOutAndAnUnknownTypeHasNoText) {
    settings->CashWithdrawalTransDocument.clear();
    Use(*settings);
    AddMovement(1, 3, 0, 2000);
    AddMovement(2, 10, 1, 500, "", "NULL", "'Venda avulsa'");
    ASSERT_TRUE(Import());
    EXPECT_EQ(CashDocuments(), std::vector<std::string>{"EC|/Venda avulsa|0|5.0|1:5.0"});
    EXPECT_NE(LogText().find("Mov.Caixa '1' porque não foi possivel"), std::string::npos);
}

TEST_F(CashMovementsImportTest, AHostRefusalEndsTheStepWithItsStepLabel) {
    settings->CashEntranceTransDocument = "XX";
    Use(*settings);
    AddMovement(5, 1, 1, 2000);
    EXPECT_FALSE(Import());
    EXPECT_EQ(LogText(),
              Section() + Line("Mov.Caixa",
                               "## Erro ## ao importar a tabela de Movimentos de Caixa. Mov.Caixa: "
                               "5 : InitNewTransaction - Não existe o tipo de documento 'XX'."));
    EXPECT_EQ(engine.ErrorCount(), 1);
}

class ReceiptsImportTest : public DocumentImportTest {
protected:
    void SetUp() override {
        DocumentImportTest::SetUp();
        host::Customer other;
        other.OrganizationName = "Outro";
        Host().customers->Save(other, 32.0, true);
        Database().Execute("INSERT INTO customers (uid, CustomerID, Name) VALUES (3, 32, 'Outro')");
    }

    // A credit sale of `total` hundredths for customer uid 1 (31), on account, settled by the
    // receipt movement `receipt` when given.
    void AddCreditSale(int uid, const std::string& documentId, int total,
                       const std::string& receipt = "NULL", const std::string& customerUid = "1",
                       const std::string& created = "2024-05-31 21:30:00") {
        AddHeader(uid, 11, documentId, total, "10012", customerUid);
        Database().Execute("UPDATE transactionsheaders SET CreateDate = '" + created +
                           "' WHERE UID = " + std::to_string(uid));
        AddLine(uid, 1, "Cerveja", 1, total, total);
        AddTender(uid, 6, total, receipt);
    }
    void AddReceipt(int uid, const std::string& receiptId, int value,
                    const std::string& date = "2024-06-02 10:00:00") {
        AddMovement(uid, 8, 1, value, receiptId, "1", "NULL", date);
    }

    bool ImportAll() {
        return ImportSaleDocuments(engine, connection, restaurant) &&
               ImportReceipts(engine, connection, restaurant);
    }
    bool Import() { return ImportReceipts(engine, connection, restaurant); }
    static std::string Section() { return Title("Recibos", "A importar Recibos"); }
    static std::string Count(int n) {
        return Line("Recibos", "Registos importados:" + std::to_string(n));
    }
    std::string ReceiptsLog() {
        const std::string log = LogText();
        const auto at = log.find(Section());
        return at == std::string::npos ? log : log.substr(at);
    }

    // Open amounts of the credit sales FAC 1, 2, ... in number order.
    std::string OpenAmounts() {
        return HostValue("SELECT group_concat(DocumentNumber || '=' || OpenAmount, ' ') FROM "
                         "(SELECT * FROM account_entries WHERE EntryType = 'D' ORDER BY "
                         "DocumentNumber)");
    }
};

TEST_F(ReceiptsImportTest, AReceiptPayingThreeCreditSalesSettlesExactlyThose) {
    AddCreditSale(1, "CC0000001", 1000, "50");
    AddCreditSale(2, "CC0000002", 2000, "50");
    AddCreditSale(3, "CC0000003", 3000, "50");
    AddCreditSale(4, "CC0000004", 4000);  // still open, not paid by this receipt
    AddReceipt(50, "RC0000007", 6000);
    ASSERT_TRUE(ImportAll());
    EXPECT_EQ(ReceiptsLog(), Section() + Count(1));
    EXPECT_EQ(OpenAmounts(), "1=0.0 2=0.0 3=0.0 4=40.0");

    // The invoice list, in the order the restaurant's GROUP_CONCAT gives it.
    const auto rows = Database().Query(
        "SELECT GROUP_CONCAT(th.documentid SEPARATOR ',') FROM transactionsheaders th inner join"
        " transactionstenders tt on tt.transactionuid = th.uid WHERE tt.ReceiptMovementuid = 50");
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0][0].size(), std::string("CC0000001,CC0000002,CC0000003").size());

    EXPECT_EQ(HostValue("SELECT DocumentTypeID || ' ' || SeriesID || ' ' || DocumentNumber || ' ' "
                        "|| Kind || ' ' || CustomerID || ' ' || Total FROM documents WHERE Kind = 7"),
              "PCL EXT 7 7 31 60.0");
    EXPECT_EQ(HostValue("SELECT group_concat(Settled, ' ') FROM (SELECT e.DocumentNumber || ':' "
                        "|| s.Amount || ':' || s.InvoiceValue AS Settled FROM account_settlements s "
                        "JOIN account_entries e ON e.EntryID = s.EntryID ORDER BY e.DocumentNumber)"),
              "1:10.0:10.0 2:20.0:20.0 3:30.0:30.0");
    EXPECT_EQ(HostValue("SELECT SUM(Amount) FROM cash_movements"), "60.0");
    EXPECT_EQ(engine.CountOf(Counter::Receipts), 1);
    EXPECT_TRUE(std::find(office.notifier->statuses.begin(), office.notifier->statuses.end(),
                          "Recibo: 7") != office.notifier->statuses.end());
}

// The receipt's payment line is made as a cash movement's is: a card tender's line carries its
// card detail.
TEST_F(ReceiptsImportTest, AReceiptPaidWithACardTenderCarriesTheCardDetailAsACashMovementDoes) {
    settings->DefaultTenderPayment = 2;  // Multibanco, a card tender of the back office
    Use(*settings);
    AddCreditSale(1, "CC0000001", 1000, "50");
    AddReceipt(50, "RC0000007", 1000);
    AddMovement(60, 1, 1, 2000);
    ASSERT_TRUE(ImportAll());
    ASSERT_TRUE(ImportCashMovements(engine, connection, restaurant));
    const std::string cardLines =
        "SELECT group_concat(Line, ' ') FROM (SELECT d.DocumentTypeID || ':' || p.TenderID || ':' || "
        "p.Amount || ':' || c.Amount AS Line FROM documents d JOIN document_payments p ON "
        "p.DocumentKey = d.DocumentKey JOIN card_payments c ON c.DocumentKey = p.DocumentKey AND "
        "c.LineNumber = p.LineNumber ORDER BY d.DocumentKey)";
    EXPECT_EQ(HostValue(cardLines), "PCL:2:10.0:10.0 EC:2:20.0:20.0");
}

TEST_F(ReceiptsImportTest, AReceiptOfUnknownOrSettledInvoicesCreatesNothing) {
    settings->CreditTransDocument = "FAC";
    AddCreditSale(1, "CC0000001", 1000, "50");
    AddReceipt(50, "RC0000001", 1000);
    ASSERT_TRUE(ImportAll());
    // A second receipt for the same, now settled, invoice; and one whose invoice the host
    // never got (the credit sale's type was unmapped when it was imported).
    AddReceipt(51, "RC0000002", 1000, "2024-07-02 10:00:00");
    Database().Execute("UPDATE transactionstenders SET ReceiptMovementuid = 51");
    AddCreditSale(2, "CC0000002", 500, "52", "1", "2024-05-31 21:00:00");
    AddReceipt(52, "RC0000003", 500, "2024-07-02 11:00:00");
    restaurant.ImportDateTransactions = "2024-07-01 12:00:00";
    ASSERT_TRUE(Import());
    const std::string none = "porque não existe nenhuma factura válida associada";
    EXPECT_NE(ReceiptsLog().find(Line("Recibos", "Não foi possível adicionar o Recibo '2' " + none)),
              std::string::npos)
        << ReceiptsLog();
    EXPECT_NE(ReceiptsLog().find(Line("Recibos", "Não foi possível adicionar o Recibo '3' " + none)),
              std::string::npos)
        << ReceiptsLog();
    EXPECT_EQ(HostValue("SELECT COUNT(*) FROM documents WHERE Kind = 7"), "1");
    EXPECT_EQ(OpenAmounts(), "1=0.0");
}

TEST_F(ReceiptsImportTest, ReceiptsWithoutADocumentIdAreNeverRead) {
    AddCreditSale(1, "CC0000001", 1000, "50");
    AddReceipt(50, "", 1000);
    ASSERT_TRUE(ImportAll());
    EXPECT_EQ(ReceiptsLog(), Section() + Count(0));
    EXPECT_EQ(OpenAmounts(), "1=10.0");
}

TEST_F(ReceiptsImportTest, WithoutBothDocumentTypesNoReceiptIsMade) {
    AddCreditSale(1, "CC0000001", 1000, "50");
    AddReceipt(50, "RC0000001", 1000);
    ASSERT_TRUE(ImportSaleDocuments(engine, connection, restaurant));
    settings->CustomerPaymentTransDocument.clear();
    Use(*settings);
    ASSERT_TRUE(Import());
    EXPECT_EQ(ReceiptsLog(),
              Section() +
                  Line("Recibos", "Não foi possível adicionar o Recibo '1' porque não existem "
                                  "tipos de documento associados. ") +
                  Count(0));
    EXPECT_EQ(engine.WarningCount(), 1);
}

TEST_F(ReceiptsImportTest, LessThanOpenSettlesTheOldestFirstAndMoreLeavesACredit) {
    AddCreditSale(1, "CC0000001", 1000, "50", "1", "2024-05-30 10:00:00");
    AddCreditSale(2, "CC0000002", 2000, "50", "1", "2024-05-29 10:00:00");
    AddReceipt(50, "RC0000001", 2500);
    AddCreditSale(3, "CC0000003", 1000, "51");
    AddReceipt(51, "RC0000002", 1500);
    ASSERT_TRUE(ImportAll());
    // 25,00 pays the older FAC 2 (20,00) whole and 5,00 of FAC 1; 15,00 pays FAC 3 and leaves
    // 5,00 to the customer's credit.
    EXPECT_EQ(OpenAmounts(), "1=5.0 2=0.0 3=0.0");
    EXPECT_EQ(HostValue("SELECT EntryType || ' ' || CustomerID || ' ' || Amount || ' ' || "
                        "OpenAmount FROM account_entries WHERE EntryType = 'C'"),
              "C 31 5.0 5.0");
}

TEST_F(ReceiptsImportTest, AReceiptImportedAgainSettlesNothingTwice) {
    AddCreditSale(1, "CC0000001", 1000, "50");
    AddCreditSale(2, "CC0000002", 3000, "50");
    AddReceipt(50, "RC0000001", 2000);  // pays FAC 1 whole and 10,00 of FAC 2
    ASSERT_TRUE(ImportAll());
    EXPECT_EQ(OpenAmounts(), "1=0.0 2=20.0");

    // The restaurant changes the receipt's movement; the next run selects it again.
    Database().Execute("UPDATE cashdrawer_movements SET Date = '2024-07-02 10:00:00' WHERE UID = 50");
    restaurant.ImportDateTransactions = "2024-07-01 12:00:00";
    ASSERT_TRUE(Import());
    EXPECT_EQ(OpenAmounts(), "1=0.0 2=20.0");
    EXPECT_EQ(HostValue("SELECT COUNT(*) FROM documents WHERE Kind = 7"), "1");
    EXPECT_EQ(HostValue("SELECT SUM(Amount) FROM account_settlements"), "20.0");
    EXPECT_EQ(HostValue("SELECT Event FROM document_history"), "replaced");

    // And changed in its amount: the new version replaces the old one's settlements.
    Database().Execute(
        "UPDATE cashdrawer_movements SET value = 4000, Date = '2024-07-03 10:00:00' WHERE UID = 50");
    restaurant.ImportDateTransactions = "2024-07-02 12:00:00";
    ASSERT_TRUE(Import());
    EXPECT_EQ(OpenAmounts(), "1=0.0 2=0.0");
    EXPECT_EQ(HostValue("SELECT SUM(Amount) FROM account_settlements"), "40.0");
}

TEST_F(ReceiptsImportTest, AnInvoiceListedTwiceIsSettledOnce) {
    AddCreditSale(1, "CC0000001", 1000, "50");
    AddTender(1, 6, 0, "50");  // a second tender of the same sale points at the receipt
    AddReceipt(50, "RC0000001", 1000);
    ASSERT_TRUE(ImportAll());
    EXPECT_EQ(OpenAmounts(), "1=0.0");
    EXPECT_EQ(HostValue("SELECT COUNT(*) || ' ' || SUM(Amount) FROM account_settlements"), "1 10.0");
}

}  // namespace
}  // namespace kitra
