// ImportSalesmen against a restaurant database on the private server and a real back office.
#include "tests/import/MasterDataImportTest.h"

namespace kitra {
namespace {

class SalesmenImportTest : public MasterDataImportTest {
protected:
    // A salesman row with every text filled; `changes` overrides columns ("Telephone=NULL").
    void AddSalesman(int id, const std::string& name, const std::string& changes = {}) {
        Database().Execute(
            "INSERT INTO salesmans (SalesmanID, SalesmanName, SalesmanPassword, Telephone,"
            " MobilePhone, AddressLine1, AddressLine2, PostalCode, EmailAddress, Locality,"
            " ModifyDate) VALUES (" +
            std::to_string(id) + ", '" + name +
            "', '4321', '239000111', '912000111', 'Rua da Sofia, 10', '2.o Esq.', '3000-389',"
            " 'joao@exemplo.pt', 'Coimbra', '2024-06-01 10:00:00')");
        if (!changes.empty()) {
            Database().Execute("UPDATE salesmans SET " + changes +
                               " WHERE SalesmanID = " + std::to_string(id));
        }
    }

    bool Import() { return ImportSalesmen(engine, connection, restaurant); }

    static std::string Section() { return Title("Vendedores", "A importar Vendedores"); }
    static std::string Count(int n) {
        return Line("Vendedores", "Registos importados:" + std::to_string(n));
    }
};

TEST_F(SalesmenImportTest, EveryFieldArrives) {
    AddSalesman(7, "Joao Mendes", "AddressLine2 = NULL, EmailAddress = NULL");
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(1));
    const auto salesman = Host().salesmen->Get(7);
    ASSERT_TRUE(salesman);
    EXPECT_EQ(*salesman, (host::Salesman{7, "Joao Mendes", "4321", "239000111", "912000111",
                                         "Rua da Sofia, 10", "", "Coimbra", "3000-389", ""}));
    EXPECT_EQ(engine.CountOf(Counter::Salesmen), 1);
    EXPECT_EQ(engine.ErrorCount(), 0);
    // The connection is closed again for the next importer.
    EXPECT_EQ(connection.State(), ado::StateClosed);
    // What the host was told: the status texts and one progress report per row.
    EXPECT_EQ(office.notifier->statuses,
              (std::vector<std::string>{"A importar Vendedores", "Vendedor: Joao Mendes"}));
    EXPECT_EQ(office.notifier->progress,
              (std::vector<testing::RecordingNotifier::Progress>{{1, 0, "A importar Vendedores"}}));
}

TEST_F(SalesmenImportTest, AnEmptyResultWritesTheTitleAndTheCountUnchanged) {
    // Changed before the last import: not selected.
    AddSalesman(7, "Joao Mendes", "ModifyDate = '2023-12-31 23:59:59'");
    engine.Count(Counter::Salesmen) = 2;  // this importer adds to the counter, never resets it
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(2));
    EXPECT_FALSE(Host().salesmen->Exists(7));
}

TEST_F(SalesmenImportTest, IdZeroOrNegativeIsSkippedWithoutALine) {
    AddSalesman(0, "Zero");
    AddSalesman(-3, "Negativo");
    AddSalesman(5, "Cinco");
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(1));
    EXPECT_TRUE(Host().salesmen->Exists(5));
    EXPECT_FALSE(Host().salesmen->Exists(0));
    EXPECT_FALSE(Host().salesmen->Exists(-3));
    EXPECT_EQ(engine.WarningCount(), 0);
}

TEST_F(SalesmenImportTest, ANullTelephoneEndsTheImportAtItsStep) {
    AddSalesman(1, "Ana");
    AddSalesman(2, "Bruno", "Telephone = NULL");
    AddSalesman(3, "Carla");
    EXPECT_FALSE(Import());
    const std::string error =
        "## Erro ## ao importar a tabela de vendedores. Vendedor: 2 : Telephone - Invalid use of Null";
    EXPECT_EQ(LogText(), Section() + Line("Vendedores", error));  // no count line
    EXPECT_EQ(engine.StatusText(), error);
    EXPECT_TRUE(Host().salesmen->Exists(1));  // saved before the error: stays
    EXPECT_FALSE(Host().salesmen->Exists(2));
    EXPECT_FALSE(Host().salesmen->Exists(3));
    EXPECT_EQ(engine.ErrorCount(), 1);
    EXPECT_EQ(engine.CountOf(Counter::Salesmen), 1);
    // Outside a run the error is also shown.
    EXPECT_TRUE(BoxShown(error, host::MessageStyle::Information, "Error"));
    // Left open for the importers that follow.
    EXPECT_EQ(connection.State(), ado::StateOpen);
}

TEST_F(SalesmenImportTest, ANullMobilePhoneEndsTheImportAtItsStep) {
    AddSalesman(4, "Duarte", "MobilePhone = NULL");
    engine.showErrorMessageBoxs = false;  // as during a run
    EXPECT_FALSE(Import());
    EXPECT_EQ(LogText(),
              Section() + Line("Vendedores",
                               "## Erro ## ao importar a tabela de vendedores. Vendedor: 4 : "
                               "MobilePhone - Invalid use of Null"));
    EXPECT_FALSE(Host().salesmen->Exists(4));
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(SalesmenImportTest, PasswordZeroArrivesEmpty) {
    AddSalesman(2, "Sem Senha", "SalesmanPassword = '0'");
    AddSalesman(3, "Com Senha", "SalesmanPassword = '00'");
    ASSERT_TRUE(Import());
    EXPECT_EQ(Host().salesmen->Get(2)->Password, "");
    EXPECT_EQ(Host().salesmen->Get(3)->Password, "00");
}

TEST_F(SalesmenImportTest, AccentedLettersAreLeftOutAndQuotesArriveIntact) {
    AddSalesman(8, "José Araújo");
    AddSalesman(9, "O''Neill; \"Zé\" -- DROP TABLE salesmen");
    ASSERT_TRUE(Import());
    EXPECT_EQ(Host().salesmen->Get(8)->Name, "Jos Arajo");
    EXPECT_EQ(Host().salesmen->Get(9)->Name, "O'Neill; \"Z\" -- DROP TABLE salesmen");
    EXPECT_EQ(office.notifier->statuses.at(1), "Vendedor: Jos Arajo");
    EXPECT_EQ(Host().salesmen->List().size(), 2u);
}

TEST_F(SalesmenImportTest, ImportingTheSameSalesmanTwiceOverwritesAndCountsTwice) {
    AddSalesman(7, "Joao Mendes");
    ASSERT_TRUE(Import());
    Database().Execute(
        "UPDATE salesmans SET SalesmanName = 'Joao M. Mendes', AddressLine2 = NULL "
        "WHERE SalesmanID = 7");
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(1) + Section() + Count(2));
    const auto salesman = Host().salesmen->Get(7);
    EXPECT_EQ(salesman->Name, "Joao M. Mendes");
    EXPECT_EQ(salesman->AddressLine2, "");  // every field rewritten
    EXPECT_EQ(Host().salesmen->List().size(), 1u);
}

}  // namespace
}  // namespace kitra
