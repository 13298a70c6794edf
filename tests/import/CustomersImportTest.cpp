// ImportCustomers against a restaurant database on the private server and a real back office.
#include "tests/import/MasterDataImportTest.h"

namespace kitra {
namespace {

class CustomersImportTest : public MasterDataImportTest {
protected:
    // A customer row with every text filled; `changes` overrides columns.
    void AddCustomer(int id, const std::string& name, const std::string& changes = {}) {
        Database().Execute(
            "INSERT INTO customers (CustomerID, Name, GlobalDiscount, CardID, FederalTaxID,"
            " EmailAddress, PartyAddressLine1, PartyAddressLine2, PartyPostalCode, PartyCountryID,"
            " PartyLocationID, Telephone1, MobileTelephone1, ModifyDate) VALUES (" +
            std::to_string(id) + ", '" + name +
            "', '5', 'CRT000123', '501234560', 'geral@cafe.pt', 'Praca 8 de Maio',"
            " 'Loja 2', '3000-300', 'PT', 'Coimbra', '239111222', '912333444',"
            " '2024-06-01 10:00:00')");
        if (!changes.empty()) {
            Database().Execute("UPDATE customers SET " + changes +
                               " WHERE CustomerID = " + std::to_string(id));
        }
    }

    bool Import() { return ImportCustomers(engine, connection, restaurant); }

    static std::string Section() { return Title("Clientes", "A importar Clientes"); }
    static std::string Count(int n) {
        return Line("Clientes", "Registos importados:" + std::to_string(n));
    }
    double DiscountOf(double id) { return Host().customers->Get(id)->DirectDiscount; }
};

TEST_F(CustomersImportTest, EveryFieldArrivesWithTheCompanysDefaults) {
    AddCustomer(31, "Cafe Central, Lda.", "PartyAddressLine2 = NULL");
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(1));
    host::Customer expected;
    expected.CustomerID = 31;
    expected.OrganizationName = "Cafe Central, Lda.";
    expected.CardID = "CRT000123";
    expected.DirectDiscount = 5;
    expected.AddressLine1 = "Praca 8 de Maio";
    expected.AddressLine2 = "";
    expected.PostalCode = "Coimbra Coimbra";
    expected.Telephone = "239111222";
    expected.MobileTelephone = "912333444";
    expected.Email = "geral@cafe.pt";
    expected.FederalTaxID = "501234560";
    // The back office's company: Portugal mainland, euro, and the "Geral" records, cash and
    // price line 1; the moment of the import; and the four flags.
    expected.CountryID = "PT";
    expected.TaxRegionID = 1;
    expected.CurrencyID = "EUR";
    expected.SalesZoneID = 1;
    expected.CustomerTypeID = 1;
    expected.PaymentTermID = 1;
    expected.TenderID = 1;
    expected.PriceLineID = 1;
    expected.UpdateDate = kMoment;
    expected.Active = expected.SubjectToTax = expected.AllowCreditSales =
        expected.SendAccountStatements = true;
    EXPECT_EQ(Host().customers->Get(31), expected);
    EXPECT_EQ(office.notifier->statuses,
              (std::vector<std::string>{"A importar Clientes", "Cliente: Cafe Central, Lda."}));
    EXPECT_EQ(engine.CountOf(Counter::Customers), 1);
}

TEST_F(CustomersImportTest, DiscountThroughThePlainParse) {
    AddCustomer(1, "Nulo", "GlobalDiscount = NULL");
    AddCustomer(2, "Vazio", "GlobalDiscount = ''");
    AddCustomer(3, "Zero", "GlobalDiscount = '0'");
    AddCustomer(4, "Ponto", "GlobalDiscount = '12.5'");
    AddCustomer(5, "Virgula", "GlobalDiscount = '12,5'");
    AddCustomer(6, "Texto", "GlobalDiscount = '7 %'");
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(6));
    EXPECT_EQ(DiscountOf(1), 0);
    EXPECT_EQ(DiscountOf(2), 0);
    EXPECT_EQ(DiscountOf(3), 0);
    EXPECT_EQ(DiscountOf(4), 12.5);
    EXPECT_EQ(DiscountOf(5), 12);  // the parse stops at the comma
    EXPECT_EQ(DiscountOf(6), 7);
}

TEST_F(CustomersImportTest, ANullTaxNumberEndsTheImportAtItsStep) {
    AddCustomer(1, "Primeiro");
    AddCustomer(2, "Sem NIF", "FederalTaxID = NULL");
    AddCustomer(3, "Terceiro");
    EXPECT_FALSE(Import());
    const std::string error =
        "## Erro ## ao importar a tabela de clientes. Cliente: 2 : FederalTaxID - Invalid use of Null";
    EXPECT_EQ(LogText(), Section() + Line("Clientes", error));
    EXPECT_TRUE(Host().customers->Exists(1));
    EXPECT_FALSE(Host().customers->Exists(2));
    EXPECT_FALSE(Host().customers->Exists(3));
    EXPECT_EQ(engine.ErrorCount(), 1);
    EXPECT_TRUE(BoxShown(error, host::MessageStyle::Information, "Error"));
}

TEST_F(CustomersImportTest, ThePostalCodeGetsTheLocationTwice) {
    AddCustomer(1, "Lisboeta", "PartyLocationID = 'Lisboa', PartyPostalCode = '1100-001'");
    AddCustomer(2, "Sem Local", "PartyLocationID = ''");
    AddCustomer(3, "Local Nulo", "PartyLocationID = NULL");
    AddCustomer(4, "Acentos", "PartyLocationID = 'Lousã'");
    ASSERT_TRUE(Import());
    EXPECT_EQ(Host().customers->Get(1)->PostalCode, "Lisboa Lisboa");
    EXPECT_EQ(Host().customers->Get(2)->PostalCode, "");
    EXPECT_EQ(Host().customers->Get(3)->PostalCode, "");
    EXPECT_EQ(Host().customers->Get(4)->PostalCode, "Lous Lous");
}

TEST_F(CustomersImportTest, CustomerZeroIsSkippedWithoutALine) {
    AddCustomer(0, "Consumidor Final", "FederalTaxID = '999999990'");
    AddCustomer(12, "Cliente Doze");
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(1));
    EXPECT_FALSE(Host().customers->Exists(0));
    EXPECT_TRUE(Host().customers->Exists(12));
    EXPECT_EQ(office.notifier->statuses,
              (std::vector<std::string>{"A importar Clientes", "Cliente: Cliente Doze"}));
    // Both rows were gone through.
    EXPECT_EQ(office.notifier->progress.size(), 2u);
}

TEST_F(CustomersImportTest, AnExistingCustomerIsRewrittenWhole) {
    AddCustomer(31, "Cafe Central");
    ASSERT_TRUE(Import());
    host::Customer edited = *Host().customers->Get(31);
    edited.PriceLineID = 3;  // changed in the back office
    edited.Active = false;
    Host().customers->Save(edited, 31, false);
    Database().Execute("UPDATE customers SET Name = 'Cafe Central; Bar' WHERE CustomerID = 31");
    clock.Set({2024, 7, 2, 8, 0, 0});
    ASSERT_TRUE(Import());
    const host::Customer after = *Host().customers->Get(31);
    EXPECT_EQ(after.OrganizationName, "Cafe Central; Bar");
    EXPECT_EQ(after.PriceLineID, 1);
    EXPECT_TRUE(after.Active);
    EXPECT_EQ(after.UpdateDate, (DateTime{2024, 7, 2, 8, 0, 0}));
    EXPECT_EQ(engine.CountOf(Counter::Customers), 2);
}

}  // namespace
}  // namespace kitra
