// Whole runs over restaurant databases on the private server: the importers in their order, the
// exact log, what a second run brings, a bad import date, and generated demonstration data.
#include <algorithm>

#include "log/DSOKitraLog.h"
#include "tests/import/MasterDataImportTest.h"

namespace kitra {
namespace {

class MasterDataRunTest : public MasterDataImportTest {
protected:
    void Store(const std::vector<Restaurant>& restaurants) {
        KitraConnectorSetting settings(*Host().utility);
        settings.TaxableGroupEquivalence = {{1, "23"}, {2, "13"}, {3, "6"}};
        for (const Restaurant& r : restaurants) settings.Restaurants.Add(r);
        Host().settingsStore->Save(settings);
    }

    KitraConnectorSetting Stored() {
        KitraConnectorSetting settings(*Host().utility);
        EXPECT_TRUE(Host().settingsStore->Load(settings));
        return settings;
    }

    void Run(const DateTime& moment) {
        clock.Set(moment);
        KitraExecutioner run(Host(), clock);
        run.SetEventNotifier(office.notifier);
        run.StartImport();
    }

    // The log row of the restaurant's import at the moment.
    std::string LogOf(const std::string& name, const DateTime& moment) {
        DSOKitraLog log(Host());
        const auto row = log.GetLogInfo(name, moment, true);
        return row ? row->Contents : "(no log row)";
    }

    // The eight counts of the restaurant's last summary, in the summary's order.
    std::vector<std::string> LastSummary(const std::string& name) {
        const auto& s = office.notifier->statuses;
        const auto at = std::find(s.rbegin(), s.rend(), "Resumo Importação Restaurante: " + name);
        if (at == s.rend()) return {};
        const auto start = at.base() + 1;  // past the line after the title
        if (s.end() - start < 8) return {};
        return std::vector<std::string>(start, start + 8);
    }
    static std::vector<std::string> Summary(int customers, int salesmen, int families,
                                            int subfamilies, int items) {
        return {" - Clientes: " + std::to_string(customers),
                " - Vendedores: " + std::to_string(salesmen),
                " - Famílias: " + std::to_string(families),
                " - SubFamílias: " + std::to_string(subfamilies),
                " - Artigos: " + std::to_string(items),
                " - Transacções: 0",
                " - Mov.Caixa: 0",
                " - Recibos: 0"};
    }

    // One row of each kind, all changed on 2024-06-01.
    void AddOneOfEach() {
        Database().Execute(
            "INSERT INTO salesmans (SalesmanID, SalesmanName, SalesmanPassword, Telephone,"
            " MobilePhone, ModifyDate) VALUES (7, 'João Mendes', '0', '', '', '2024-06-01 10:00:00');"
            "INSERT INTO customers (CustomerID, Name, GlobalDiscount, FederalTaxID,"
            " PartyLocationID, ModifyDate) VALUES (31, 'Churrasqueira O''Leitão; Lda', '10',"
            " '501234560', 'Mealhada', '2024-06-01 10:00:00');"
            "INSERT INTO families (uid, code, description, ModifyDate) VALUES"
            " (1, '12', 'Bebidas', '2024-06-01 10:00:00');"
            "INSERT INTO subfamilies (uid, code, FamilyUID, Description, ModifyDate) VALUES"
            " (1, '12', 1, 'Sumos', '2024-06-01 10:00:00');"
            "INSERT INTO taxes (uid, TaxRate) VALUES (1, 23.00);"
            "INSERT INTO properties (UID, SalesPrice1, ItemTaxID1) VALUES (1, 250, 1);"
            "INSERT INTO plus (UID, ItemID, Description, BarCode, SubFamilyID, PropertyUID,"
            " ModifyDate) VALUES (1, '100', 'Sumo de laranja', '', 1, 1, '2024-06-01 10:00:00')");
    }

    static std::string Start(const Restaurant& r, const std::string& generalDate) {
        return " - # START # " + generalDate + " #\r\n" +
               "Restaurantes - A integrar Restaurante: " + r.Name + "\r\n" +
               "Restaurantes - Last entity date import: '" + r.ImportDateEntities + "'\r\n" +
               "Restaurantes - Last transactions date import: '" + r.ImportDateTransactions +
               "'\r\n";
    }
    static std::string Imported(const std::string& section, const std::string& startText,
                                int count) {
        return Title(section, startText) +
               Line(section, "Registos importados:" + std::to_string(count));
    }
    static std::string End(const std::string& generalDate) {
        return " - # END # " + generalDate + " #\r\n";
    }
};

TEST_F(MasterDataRunTest, OneOfEachArrivesInOrderWithTheExactLog) {
    AddOneOfEach();
    Store({restaurant});
    Run(kMoment);
    EXPECT_EQ(LogOf("Centro", kMoment),
              Start(restaurant, "01-07-2024 12:00:00") +
                  Imported("Vendedores", "A importar Vendedores", 1) +
                  Imported("Clientes", "A importar Clientes", 1) +
                  Imported("Famílias", "A importar Famílias", 1) +
                  Imported("SubFamílias", "A importar SubFamílias", 1) +
                  Imported("Artigos", "A importar Artigos", 1) +
                  Imported("Transacções", "A importar Transacções", 0) +
                  Imported("Mov.Caixa", "A importar Movimentos Caixa", 0) +
                  Imported("Recibos", "A importar Recibos", 0) +
                  End("01-07-2024 12:00:00"));
    EXPECT_EQ(LastSummary("Centro"), Summary(1, 1, 1, 1, 1));
    // The family and its subfamily arrived in the same run, and the item under the subfamily.
    EXPECT_EQ(Host().families->Get(10012)->ParentDescription, "Bebidas");
    EXPECT_EQ(Host().items->Get("100")->FamilyID, 10012);
    // Cleaned texts; a quote and a semicolon arrive as they are.
    EXPECT_EQ(Host().salesmen->Get(7)->Name, "Joo Mendes");
    EXPECT_EQ(Host().salesmen->Get(7)->Password, "");
    EXPECT_EQ(Host().customers->Get(31)->OrganizationName, "Churrasqueira O'Leito; Lda");
    EXPECT_EQ(Host().customers->Get(31)->PostalCode, "Mealhada Mealhada");
    // During a run the importers show no boxes; the end is shown.
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text, "A importação chegou ao fim.");
    const Restaurant after = *Stored().Restaurants.begin();
    EXPECT_EQ(after.ImportDateEntities, "2024-07-01 12:00:00");
    EXPECT_EQ(after.ImportDateTransactions, "2024-07-01 12:00:00");
}

TEST_F(MasterDataRunTest, CountersStartAgainAtZeroForEachRestaurant) {
    AddOneOfEach();
    // Two restaurants on the same database: each imports the same five records.
    Restaurant second = restaurant;
    second.Name = "Praia";
    second.ItemIDPrefix = "P";
    Store({restaurant, second});
    Run(kMoment);
    EXPECT_EQ(LastSummary("Centro"), Summary(1, 1, 1, 1, 1));
    EXPECT_EQ(LastSummary("Praia"), Summary(1, 1, 1, 1, 1));
    EXPECT_NE(LogOf("Centro", kMoment).find("Artigos - Registos importados:1\r\n"), std::string::npos);
    EXPECT_NE(LogOf("Praia", kMoment).find("Artigos - Registos importados:1\r\n"), std::string::npos);
    EXPECT_TRUE(Host().items->Exists("100"));
    EXPECT_TRUE(Host().items->Exists("P100"));
}

TEST_F(MasterDataRunTest, ASecondRunBringsOnlyWhatChangedAndOverwritesIt) {
    AddOneOfEach();
    Database().Execute(
        "INSERT INTO salesmans (SalesmanID, SalesmanName, Telephone, MobilePhone, ModifyDate)"
        " VALUES (8, 'Rita', '', '', '2024-06-01 10:00:00')");
    Store({restaurant});
    Run(kMoment);
    EXPECT_EQ(LastSummary("Centro"), Summary(1, 2, 1, 1, 1));

    // Nothing changed: nothing comes.
    const DateTime second{2024, 7, 1, 12, 30, 0};
    Run(second);
    EXPECT_EQ(LastSummary("Centro"), Summary(0, 0, 0, 0, 0));
    Restaurant moved = restaurant;
    moved.ImportDateEntities = moved.ImportDateTransactions = "2024-07-01 12:00:00";
    EXPECT_EQ(LogOf("Centro", second),
              Start(moved, "01-07-2024 12:30:00") +
                  Imported("Vendedores", "A importar Vendedores", 0) +
                  Imported("Clientes", "A importar Clientes", 0) +
                  Imported("Famílias", "A importar Famílias", 0) +
                  Imported("SubFamílias", "A importar SubFamílias", 0) +
                  Imported("Artigos", "A importar Artigos", 0) +
                  Imported("Transacções", "A importar Transacções", 0) +
                  Imported("Mov.Caixa", "A importar Movimentos Caixa", 0) +
                  Imported("Recibos", "A importar Recibos", 0) +
                  End("01-07-2024 12:30:00"));

    // A salesman and the item change after the second run: the third brings those two only.
    Database().Execute(
        "UPDATE salesmans SET SalesmanName = 'Rita Sousa', ModifyDate = '2024-07-01 13:00:00'"
        " WHERE SalesmanID = 8;"
        "UPDATE plus SET Description = 'Sumo natural', ModifyDate = '2024-07-01 13:00:00';"
        "UPDATE properties SET SalesPrice1 = 300");
    Run({2024, 7, 1, 14, 0, 0});
    EXPECT_EQ(LastSummary("Centro"), Summary(0, 1, 0, 0, 1));
    EXPECT_EQ(Host().salesmen->Get(8)->Name, "Rita Sousa");
    EXPECT_EQ(Host().salesmen->Get(7)->Name, "Joo Mendes");
    EXPECT_EQ(Host().items->Get("100")->Description, "Sumo natural");
    EXPECT_EQ(Host().items->Get("100")->PriceLines[0].PriceWithTax, 3);
    EXPECT_EQ(Host().items->List().size(), 1u);
}

TEST_F(MasterDataRunTest, ABadImportDateIsRefusedByEveryImporterAndTheRunGoesOn) {
    AddOneOfEach();
    Restaurant bad = restaurant;
    bad.Name = "Centro";
    bad.ImportDateEntities = "2024-01-01' OR '1'='1";
    Restaurant good = RestaurantOnTheServer("Praia");
    Store({bad, good});
    Run(kMoment);

    const std::string refused = " :  - A data da última importação de entidades '" +
                                bad.ImportDateEntities +
                                "' tem caracteres que não são de uma data (só algarismos, \"-\", "
                                "\":\" e espaços).";
    EXPECT_EQ(LogOf("Centro", kMoment),
              Start(bad, "01-07-2024 12:00:00") +
                  Title("Vendedores", "A importar Vendedores") +
                  Line("Vendedores",
                       "## Erro ## ao importar a tabela de vendedores. Vendedor: 0" + refused) +
                  Title("Clientes", "A importar Clientes") +
                  Line("Clientes",
                       "## Erro ## ao importar a tabela de clientes. Cliente: 0" + refused) +
                  Title("Famílias", "A importar Famílias") +
                  Line("Famílias",
                       "## Erro ## ao importar a tabela de famílias. Família: 0" + refused) +
                  Title("SubFamílias", "A importar SubFamílias") +
                  Line("SubFamílias",
                       "## Erro ## ao importar a tabela de SubFamílias. SubFamília: 0" + refused) +
                  Title("Artigos", "A importar Artigos") +
                  Line("Artigos", "## Erro ## ao importar a tabela de Artigos. Artigo: " + refused) +
                  Imported("Transacções", "A importar Transacções", 0) +
                  Imported("Mov.Caixa", "A importar Movimentos Caixa", 0) +
                  Imported("Recibos", "A importar Recibos", 0) +
                  End("01-07-2024 12:00:00"));
    EXPECT_EQ(LastSummary("Centro"), Summary(0, 0, 0, 0, 0));
    // The next restaurant, on the same connection, imports everything.
    EXPECT_EQ(LastSummary("Praia"), Summary(1, 1, 1, 1, 1));
    EXPECT_EQ(LogOf("Praia", kMoment).find("## Erro ##"), std::string::npos);
    // Both restaurants' dates moved and the run ended as usual.
    for (const Restaurant& r : Stored().Restaurants) {
        EXPECT_EQ(r.ImportDateEntities, "2024-07-01 12:00:00") << r.Name;
        EXPECT_EQ(r.ImportDateTransactions, "2024-07-01 12:00:00") << r.Name;
    }
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text, "A importação chegou ao fim.");
}

TEST_F(MasterDataRunTest, AnImportDateThatCouldAlterTheStatementEndsAnImporterWithFalse) {
    AddOneOfEach();
    for (const std::string& date : {std::string("2024-01-01 00:00:00'); DROP TABLE salesmans; --"),
                                    std::string("2024-01-01 00:00:00' OR '1'='1"),
                                    std::string("2024-01-01\\"), std::string("2024-01-01;")}) {
        restaurant.ImportDateEntities = date;
        EXPECT_FALSE(ImportSalesmen(engine, connection, restaurant)) << date;
        EXPECT_TRUE(engine.StatusText().ends_with(
            "'" + date + "' tem caracteres que não são de uma data (só algarismos, \"-\", \":\" e espaços)."))
            << engine.StatusText();
    }
    EXPECT_EQ(engine.ErrorCount(), 4);
    EXPECT_FALSE(Host().salesmen->Exists(7));
    EXPECT_EQ(Database().QueryValue("SELECT COUNT(*) FROM salesmans"), "1");
}

TEST_F(MasterDataRunTest, AnImportDateMySqlReadsGoesIntoTheStatementAsItIs) {
    AddOneOfEach();
    // Not the strict form, but a date STR_TO_DATE reads: the salesman changed after it arrives.
    restaurant.ImportDateEntities = "2024-1-5 10:00:00";
    EXPECT_TRUE(ImportSalesmen(engine, connection, restaurant));
    EXPECT_TRUE(Host().salesmen->Exists(7));
    EXPECT_EQ(engine.ErrorCount(), 0);
    // Texts MySQL cannot read as a date select nothing, and nothing fails.
    for (const std::string& date : {std::string(""), std::string("2024-02-30 00:00:00"),
                                    std::string("2099-1-1 0:0:0")}) {
        restaurant.ImportDateEntities = date;
        EXPECT_TRUE(ImportSalesmen(engine, connection, restaurant)) << date;
    }
    EXPECT_EQ(engine.ErrorCount(), 0);
}

TEST_F(MasterDataRunTest, GeneratedDemoDataArrivesWhole) {
    Database().LoadGeneratedData({"--size", "demo", "--seed", "7"});
    restaurant.ImportDateEntities = "2000-01-01 00:00:00";
    Store({restaurant});
    Run(kMoment);
    const auto count = [&](const std::string& sql) { return std::stoi(Database().QueryValue(sql)); };
    const int salesmen =
        count("SELECT COUNT(*) FROM salesmans WHERE RecordDeleted = 0 AND SalesmanID > 0");
    const int customers =
        count("SELECT COUNT(*) FROM customers WHERE RecordDeleted = 0 AND CustomerID > 0");
    const int families = count("SELECT COUNT(*) FROM families WHERE RecordDeleted = 0");
    // A subfamily arrives when its family did, an item when its subfamily did.
    const int subfamilies = count(
        "SELECT COUNT(*) FROM subfamilies s JOIN families f ON f.uid = s.FamilyUID"
        " WHERE s.RecordDeleted = 0 AND f.RecordDeleted = 0");
    const int items = count(
        "SELECT COUNT(*) FROM plus pl JOIN properties p ON pl.PropertyUID = p.UID"
        " JOIN taxes tx ON tx.uid = p.ItemTaxID1 JOIN subfamilies s ON s.uid = pl.SubFamilyID"
        " JOIN families f ON f.uid = s.FamilyUID"
        " WHERE pl.RecordDeleted = 0 AND s.RecordDeleted = 0 AND f.RecordDeleted = 0");
    EXPECT_GT(salesmen, 0);
    EXPECT_GT(customers, 0);
    EXPECT_GT(families, 0);
    EXPECT_GT(subfamilies, 0);
    EXPECT_GT(items, 0);
    // No document type is mapped here, so every document is left out with its line.
    EXPECT_EQ(LastSummary("Centro"), Summary(customers, salesmen, families, subfamilies, items));
    EXPECT_EQ(LogOf("Centro", kMoment).find("## Erro ##"), std::string::npos)
        << LogOf("Centro", kMoment);
    EXPECT_EQ(static_cast<int>(Host().customers->List().size()), customers);
    EXPECT_EQ(static_cast<int>(Host().items->List().size()), items);
    EXPECT_EQ(static_cast<int>(Host().families->List().size()), families + subfamilies);
}

}  // namespace
}  // namespace kitra
