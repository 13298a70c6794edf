// kitra-host report sales over a back office with documents saved through its services.
#include <gtest/gtest.h>

#include <sstream>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/KitraHost.h"
#include "tests/hostsupport/TempFolder.h"

namespace kitra {
namespace {

using backoffice::BackOffice;

class ReportCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        BackOffice::Create(Data());
        BackOffice office(Data());
        host::Item fish;
        fish.Description = "Robalo";
        fish.TaxableGroupID = 1;
        fish.StockManagement = true;
        office.items.Save(fish, "C1", true);
        host::Item bread = fish;
        bread.Description = "Pão";
        office.items.Save(bread, "C2", true);
        // 10 January: a sale of 2 fish (paid in cash) and a credit sale of one bread; 11 January:
        // a sale of 5 bread paid by card and a voided sale.
        Save(office, "VB", 1, {2025, 1, 10, 12, 0, 0}, {{"C1", 2, 10}}, 1);
        Save(office, "FAC", 1, {2025, 1, 10, 13, 0, 0}, {{"C2", 1, 1.5}}, 0);
        Save(office, "VB", 2, {2025, 1, 11, 20, 0, 0}, {{"C2", 5, 1}}, 2);
        auto voided = Save(office, "VB", 3, {2025, 1, 11, 21, 0, 0}, {{"C1", 1, 10}}, 1);
        office.transactions.Refund(voided);
    }

    struct Sold {
        std::string item;
        double quantity;
        double price;
    };

    static host::Transaction Save(BackOffice& office, const std::string& type, std::int32_t number,
                                  const DateTime& date, const std::vector<Sold>& lines,
                                  std::int16_t tender) {
        auto business = office.transactions.NewTransactionBusiness();
        business->InitNewTransaction(type, "EXT");
        business->SetTransactionDefaults(*office.documentTypes.Get(type), 1);
        host::Transaction& t = business->Current();
        t.DocumentNumber = number;
        t.DocumentDate = t.DueDate = date;
        for (const Sold& sold : lines) {
            host::TransactionLine line = business->NewLine();
            line.ItemID = sold.item;
            line.Description = office.items.Get(sold.item)->Description;
            line.TaxableGroupID = 1;
            line.Quantity = sold.quantity;
            line.UnitPrice = sold.price;
            business->CalculateLine(line);
            business->AppendLine(line);
        }
        if (tender != 0) {
            host::TransactionPayment payment = business->NewPayment(tender);
            payment.Amount = business->CalculatedTotal();
            business->AppendPayment(payment);
        } else {
            t.CreditSale = true;
        }
        office.transactions.Save(t);
        return t;
    }

    std::filesystem::path Data() const { return folder.Path() / "data"; }

    int Run(std::vector<std::string> arguments, std::string& out) {
        arguments.insert(arguments.begin(), {"--data", Data().string()});
        std::ostringstream output, errors;
        const int code = backoffice::cli::RunKitraHost(arguments, nullptr, output, errors);
        out = output.str() + errors.str();
        return code;
    }

    static bool Has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }

    testing::TempFolder folder;
};

TEST_F(ReportCommandTest, ShowsDaysTypesTendersAndTheBestSellersStock) {
    std::string out;
    ASSERT_EQ(Run({"report", "sales"}, out), 0) << out;
    // Days: the voided sale does not count.
    EXPECT_TRUE(Has(out, "2025-01-10           2          17,48          4,02       0,00          21,50"))
        << out;
    EXPECT_TRUE(Has(out, "2025-01-11           1           4,07          0,93       0,00           5,00"))
        << out;
    EXPECT_TRUE(Has(out, "Total                3          21,55          4,95       0,00          26,50"))
        << out;
    // Types, with the voided document apart.
    EXPECT_TRUE(Has(out, "VB      VENDA A BALCÃO                       2          25,00         1          10,00"))
        << out;
    EXPECT_TRUE(Has(out, "FAC     FACTURA                              1           1,50         0           0,00"))
        << out;
    // Tenders and what went on account.
    EXPECT_TRUE(Has(out, "         1  Dinheiro                             1          20,00")) << out;
    EXPECT_TRUE(Has(out, "         2  Multibanco                           1           5,00")) << out;
    EXPECT_TRUE(Has(out, "A crédito (conta corrente)           1           1,50   (em aberto: 1,50)"))
        << out;
    // Best sellers by value, with the stock left: the voided fish came back.
    EXPECT_TRUE(Has(out, "C1            Robalo                                   2          20,00          -2"))
        << out;
    EXPECT_TRUE(Has(out, "C2            Pão                                      6           6,50          -6"))
        << out;
    EXPECT_LT(out.find("C1  "), out.find("C2  "));
}

TEST_F(ReportCommandTest, APeriodLimitsEveryTable) {
    std::string out;
    ASSERT_EQ(Run({"report", "sales", "--from", "2025-01-11", "--to=2025-01-11"}, out), 0) << out;
    EXPECT_TRUE(Has(out, "Período: 2025-01-11 00:00:00 a 2025-01-11 23:59:59")) << out;
    EXPECT_FALSE(Has(out, "2025-01-10")) << out;
    EXPECT_TRUE(Has(out, "Total                1           4,07          0,93       0,00           5,00"))
        << out;
    EXPECT_FALSE(Has(out, "Robalo  ")) << out;
}

// Cash movements and payments on account are money, not sales: the type and tender sections
// count only sales, credit sales and returns, and each adds up to the day table's total.
TEST_F(ReportCommandTest, EverySalesSectionCountsOnlySalesAndAddsUpToTheSameTotal) {
    {
        BackOffice office(Data());
        host::Customer customer;
        customer.OrganizationName = "Café Central";
        office.customers.Save(customer, 7.0, true);
        for (const auto& [type, amount] : {std::pair<std::string, double>{"SC", 7}, {"ADC", 5}}) {
            auto cash = office.transactions.NewTransactionBusiness();
            cash->InitNewTransaction(type, "EXT");
            cash->Current().CustomerID = 7;
            cash->Current().DocumentDate = cash->Current().DueDate = {2025, 1, 11, 9, 0, 0};
            cash->WorkstationStamp(1, {2025, 1, 11, 9, 0, 0});
            host::TransactionPayment money = cash->NewPayment(1);
            money.Amount = amount;
            cash->AppendPayment(money);
            office.transactions.Save(cash->Current());
        }
    }
    std::string out;
    ASSERT_EQ(Run({"report", "sales"}, out), 0) << out;
    const std::string blank(26, ' ');
    EXPECT_TRUE(Has(out, "Total                3          21,55          4,95       0,00          26,50")) << out;
    EXPECT_FALSE(Has(out, "\nSC  ")) << out;
    EXPECT_FALSE(Has(out, "\nADC  ")) << out;
    EXPECT_TRUE(Has(out, "Total   " + blank + "           3          26,50         1          10,00\n")) << out;
    EXPECT_TRUE(Has(out, "         1  Dinheiro                             1          20,00\n")) << out;
    EXPECT_TRUE(Has(out, "         2  Multibanco                           1           5,00\n")) << out;
    EXPECT_TRUE(Has(out, "A crédito (conta corrente)           1           1,50   (em aberto: 1,50)\n")) << out;
    EXPECT_TRUE(Has(out, "Diferença (troco, acertos)" + std::string(23, ' ') + "0,00\n")) << out;
    EXPECT_TRUE(Has(out, "     Total  " + blank + "           3          26,50\n")) << out;
}

// Without --from and --to the report covers everything, and says so; a date alone is its day's
// 00:00:00 (as for 'state set'), and as --to it takes in the whole day.
TEST_F(ReportCommandTest, ThePeriodIsSaidInWords) {
    std::string out;
    ASSERT_EQ(Run({"report", "sales"}, out), 0) << out;
    EXPECT_TRUE(out.starts_with("Período: todo o período\n")) << out;
    ASSERT_EQ(Run({"report", "cash", "--from", "2025-01-11"}, out), 0) << out;
    EXPECT_TRUE(out.starts_with("Período: desde 2025-01-11 00:00:00\n")) << out;
    ASSERT_EQ(Run({"report", "sales", "--to", "2025-01-10 12:30:00"}, out), 0) << out;
    EXPECT_TRUE(out.starts_with("Período: até 2025-01-10 12:30:00\n")) << out;
    EXPECT_TRUE(Has(out, "Total                1          16,26          3,74       0,00          20,00")) << out;
    EXPECT_FALSE(Has(out, "0000-01-01")) << out;
}

TEST_F(ReportCommandTest, ShowsACustomersAccountAndTheCashMovements) {
    {
        BackOffice office(Data());
        host::Customer customer;
        customer.OrganizationName = "Café Central";
        office.customers.Save(customer, 7.0, true);
        auto sale = office.transactions.NewTransactionBusiness();
        sale->InitNewTransaction("FAC", "EXT");
        sale->SetTransactionDefaults(*office.documentTypes.Get("FAC"), 1);
        host::Transaction& credit = sale->Current();
        credit.DocumentNumber = 2;
        credit.CustomerID = 7;
        credit.CreditSale = true;
        credit.DocumentDate = credit.DueDate = {2025, 1, 12, 9, 0, 0};
        host::TransactionLine line = sale->NewLine();
        line.ItemID = "C1";
        line.TaxableGroupID = 1;
        line.Quantity = 1;
        line.UnitPrice = 10;
        sale->CalculateLine(line);
        sale->AppendLine(line);
        office.transactions.Save(credit);

        auto receipt = office.accountTransactions.NewAccountTransactionBusiness();
        receipt->InitNewTransaction("PCL", "EXT");
        receipt->Current().CustomerID = 7;
        receipt->Current().DocumentDate = {2025, 1, 13, 9, 0, 0};
        receipt->WorkstationStamp(2, {2025, 1, 13, 9, 0, 0});
        const host::LedgerAccounts ledger = receipt->LedgerAccountList();
        ASSERT_NE(ledger.Find("FAC", "EXT", 2), nullptr);
        receipt->AddAccountLine(*ledger.Find("FAC", "EXT", 2), 10);
        host::TransactionPayment cash = receipt->NewPayment(1);
        cash.Amount = 4;
        receipt->AppendPayment(cash);
        receipt->Calculate();
        office.accountTransactions.Save(receipt->Current());

        auto advance = office.transactions.NewTransactionBusiness();
        advance->InitNewTransaction("ADC", "EXT");
        advance->Current().CustomerID = 7;
        advance->Current().DocumentDate = advance->Current().DueDate = {2025, 1, 14, 9, 0, 0};
        advance->WorkstationStamp(2, {2025, 1, 14, 9, 0, 0});
        host::TransactionPayment money = advance->NewPayment(1);
        money.Amount = 5;
        advance->AppendPayment(money);
        office.transactions.Save(advance->Current());
    }
    std::string out;
    ASSERT_EQ(Run({"report", "account", "7"}, out), 0) << out;
    EXPECT_TRUE(Has(out, "Conta corrente do cliente 7 - Café Central")) << out;
    EXPECT_TRUE(Has(out, "FAC EXT/2           2025-01-12          10,00           6,00")) << out;
    EXPECT_TRUE(Has(out, "PCL EXT/1           2025-01-13           4,00  FAC EXT/2 4,00")) << out;
    EXPECT_TRUE(Has(out, "ADC EXT/1           2025-01-14           5,00           5,00")) << out;
    EXPECT_TRUE(Has(out, "Saldo: 1,00 a pagar pelo cliente")) << out;

    ASSERT_EQ(Run({"report", "cash", "--from", "2025-01-13"}, out), 0) << out;
    EXPECT_TRUE(Has(out, "ADC     ADIANTAMENTO DE CLIENTES               1           5,00           0,00"))
        << out;
    EXPECT_TRUE(Has(out, "PCL     PAGAMENTO DE CLIENTES                  1           4,00           0,00"))
        << out;
    EXPECT_TRUE(Has(out, "    2  Posto 2                                9,00           0,00           9,00"))
        << out;

    EXPECT_EQ(Run({"report", "account", "70"}, out), 1);
    EXPECT_TRUE(Has(out, "Não existe o cliente 70.")) << out;
    EXPECT_EQ(Run({"report", "account", "sete"}, out), 2);
}

TEST_F(ReportCommandTest, RefusesWhatItDoesNotUnderstand) {
    std::string out;
    EXPECT_EQ(Run({"report"}, out), 2);
    EXPECT_TRUE(Has(out, "report sales|cash [--from DATA] [--to DATA] | report account CLIENTE")) << out;
    EXPECT_EQ(Run({"report", "sales", "--from", "ontem"}, out), 2);
    EXPECT_TRUE(Has(out, "aaaa-mm-dd")) << out;
    EXPECT_EQ(Run({"report", "sales", "--from"}, out), 2);
    EXPECT_EQ(Run({"report", "sales", "--from", "2025-02-01", "--to", "2025-01-01"}, out), 2);
    EXPECT_EQ(Run({"report", "sales", "extra"}, out), 2);
}

}  // namespace
}  // namespace kitra
