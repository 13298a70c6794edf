// ImportItems against a restaurant database on the private server and a real back office.
#include "tests/import/MasterDataImportTest.h"

namespace kitra {
namespace {

class ItemsImportTest : public MasterDataImportTest {
protected:
    void SetUp() override {
        MasterDataImportTest::SetUp();
        Database().Execute(
            "INSERT INTO taxes (uid, TaxRate, Description) VALUES (1, 23.00, 'Normal'),"
            " (2, 13.00, 'Intermedia'), (3, 6.00, 'Reduzida');"
            "INSERT INTO families (uid, code, description) VALUES (1, '1', 'Bebidas');"
            "INSERT INTO subfamilies (uid, code, FamilyUID, Description) VALUES"
            " (1, '12', 1, 'Sumos'), (2, '3', 1, 'Vinhos')");
        // The host has subfamily 12 (host family 10012), not subfamily 3.
        host::Family sumos;
        sumos.Description = "Sumos";
        sumos.ParentFamilyID = 1;
        Host().families->Save(sumos, 10012, true);
    }

    // An item of subfamily uid 1 (code 12) at 23 %, with its properties row; `plu` and
    // `properties` override columns of either.
    void AddItem(int uid, const std::string& itemId, const std::string& description,
                 const std::string& plu = {}, const std::string& properties = {}) {
        Database().Execute(
            "INSERT INTO properties (UID, ReadQuantityFromScale, SalesPrice1, SalesPrice2,"
            " SalesPrice3, SalesPrice4, SalesPrice5, ItemTaxID1) VALUES (" +
            std::to_string(uid) + ", 0, 250, 275, 300, 0, 199, 1);"
            "INSERT INTO plus (UID, ItemID, Description, ShortDescription1, BarCode, SubFamilyID,"
            " PropertyUID, StockManagement, ModifyDate) VALUES (" +
            std::to_string(uid) + ", '" + itemId + "', '" + description +
            "', 'Curto', '5601234567890', 1, " + std::to_string(uid) +
            ", 0, '2024-06-01 10:00:00')");
        if (!plu.empty()) {
            Database().Execute("UPDATE plus SET " + plu + " WHERE UID = " + std::to_string(uid));
        }
        if (!properties.empty()) {
            Database().Execute("UPDATE properties SET " + properties +
                               " WHERE UID = " + std::to_string(uid));
        }
    }

    bool Import() { return ImportItems(engine, connection, restaurant); }

    static std::string Section() { return Title("Artigos", "A importar Artigos"); }
    static std::string Count(int n) {
        return Line("Artigos", "Registos importados:" + std::to_string(n));
    }
};

TEST_F(ItemsImportTest, EveryFieldArrives) {
    AddItem(1, "100", "Sumo de laranja");
    restaurant.DefaultSupplierID = 4;
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(1));
    host::Item expected;
    expected.ItemID = "100";
    expected.Description = "Sumo de laranja";
    expected.ShortDescription = "Curto";
    expected.TaxableGroupID = 1;
    expected.BarCode = "5601234567890";
    expected.ReadQuantityFromScale = false;
    expected.UnitOfSaleID = "UN";
    expected.FamilyID = 10012;
    expected.StockManagement = true;  // whatever the restaurant says
    expected.PriceLines = {{{1, 2.5, 2.03}, {2, 2.75, 2.24}, {3, 3, 2.44}, {4, 0, 0},
                            {5, 1.99, 1.62}}};
    expected.SupplierID = 4;
    expected.ItemType = 6;
    EXPECT_EQ(Host().items->Get("100"), expected);
    EXPECT_EQ(office.notifier->statuses,
              (std::vector<std::string>{"A importar Artigos", "Artigo: Sumo de laranja"}));
    EXPECT_EQ(office.notifier->progress,
              (std::vector<testing::RecordingNotifier::Progress>{{1, 0, "A importar Artigos"}}));
}

// The host's item keys ignore letter case: a restaurant item that would land on another item
// is left out and said so, and the count is what the host holds.
TEST_F(ItemsImportTest, ItemCodesThatDifferOnlyInLetterCaseAreNotMerged) {
    AddItem(1, "abc", "Sumo de maca");
    AddItem(2, "ABC", "Sumo de ananas");
    ASSERT_TRUE(Import());
    const auto items = Host().items->List();
    ASSERT_EQ(items.size(), 1u);
    const std::string kept = items[0].ItemID;
    const std::string other = kept == "abc" ? "ABC" : "abc";
    ASSERT_TRUE(kept == "abc" || kept == "ABC") << kept;
    const std::string otherName = other == "abc" ? "Sumo de maca" : "Sumo de ananas";
    EXPECT_EQ(LogText(),
              Section() +
                  Line("Artigos", "Não foi possível adicionar o Artigo '" + otherName +
                                      "' porque o código '" + other +
                                      "' só difere nas maiúsculas e minúsculas do código '" +
                                      kept + "' de um Artigo que já existe") +
                  Count(1));
    EXPECT_EQ(engine.CountOf(Counter::Items), 1);
    EXPECT_EQ(engine.WarningCount(), 1);
}

TEST_F(ItemsImportTest, AnItemOfTheHostIsNotOverwrittenByACodeInOtherLetters) {
    AddItem(1, "abc", "Sumo de maca");
    host::Item existing;
    existing.ItemID = "ABC";
    existing.Description = "Artigo da loja";
    Host().items->Save(existing, "ABC", true);
    ASSERT_TRUE(Import());
    EXPECT_EQ(Host().items->Get("ABC")->Description, "Artigo da loja");
    EXPECT_EQ(Host().items->Get("ABC")->ItemID, "ABC");
    EXPECT_EQ(engine.CountOf(Counter::Items), 0);
    EXPECT_EQ(engine.WarningCount(), 1);
}

TEST_F(ItemsImportTest, ThePrefixGoesBeforeTheItemCode) {
    AddItem(1, "100", "Sumo de laranja");
    restaurant.ItemIDPrefix = "R1";
    ASSERT_TRUE(Import());
    EXPECT_TRUE(Host().items->Exists("R1100"));
    EXPECT_FALSE(Host().items->Exists("100"));
    EXPECT_EQ(Host().items->Get("R1100")->ItemID, "R1100");

    restaurant.ItemIDPrefix = "";
    ASSERT_TRUE(Import());
    EXPECT_TRUE(Host().items->Exists("100"));
    EXPECT_EQ(Host().items->List().size(), 2u);
}

TEST_F(ItemsImportTest, PricesArriveFromHundredthsAndAZeroPriceAsksNoTax) {
    // Rate 13 % goes to host group 9, which has no rate: any tax question would fail.
    KitraConnectorSetting settings(*Host().utility);
    settings.TaxableGroupEquivalence = {{1, "23"}, {9, "13"}};
    engine.UseSettings(settings);
    AddItem(1, "200", "Agua", {}, "ItemTaxID1 = 2, SalesPrice1 = 0, SalesPrice2 = 0, "
                                  "SalesPrice3 = 0, SalesPrice4 = 0, SalesPrice5 = 0");
    AddItem(2, "201", "Sumo", {}, "SalesPrice1 = 250, SalesPrice2 = 5, SalesPrice3 = 1234");
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(), Section() + Count(2));
    const host::Item water = *Host().items->Get("200");
    EXPECT_EQ(water.TaxableGroupID, 9);
    for (const host::PriceLine& line : water.PriceLines) {
        EXPECT_EQ(line.PriceWithTax, 0) << line.LineNumber;
        EXPECT_EQ(line.PriceWithoutTax, 0) << line.LineNumber;
    }
    const host::Item juice = *Host().items->Get("201");
    EXPECT_EQ(juice.PriceLines[0].PriceWithTax, 2.5);
    EXPECT_EQ(juice.PriceLines[0].PriceWithoutTax, 2.03);
    EXPECT_EQ(juice.PriceLines[1].PriceWithTax, 0.05);
    EXPECT_EQ(juice.PriceLines[1].PriceWithoutTax, 0.04);
    EXPECT_EQ(juice.PriceLines[2].PriceWithTax, 12.34);
    EXPECT_EQ(juice.PriceLines[2].PriceWithoutTax, 10.03);

    // A price under group 9 does ask, and the host's refusal ends the import at its step.
    AddItem(3, "202", "Agua com gas", {}, "ItemTaxID1 = 2, SalesPrice1 = 100");
    restaurant.ImportDateEntities = "2024-06-01 10:00:00";
    Database().Execute("UPDATE plus SET ModifyDate = '2024-06-02 10:00:00' WHERE UID = 3");
    EXPECT_FALSE(Import());
    EXPECT_TRUE(LogText().ends_with(
        Line("Artigos", "## Erro ## ao importar a tabela de Artigos. Artigo: 202 : PriceLines - "
                        "A taxa de IVA 9 não tem valor na região fiscal PT/1.")))
        << LogText();
}

TEST_F(ItemsImportTest, AnItemWhoseSubfamilyTheHostLacksIsReportedAndLeftOut) {
    AddItem(1, "300", "Vinho tinto", "SubFamilyID = 2");  // code 3: host family 10003
    AddItem(2, "301", "Sumo de maçã");
    engine.showErrorMessageBoxs = false;
    ASSERT_TRUE(Import());
    EXPECT_EQ(LogText(),
              Section() +
                  Line("SubFamílias",
                       "Não foi possível adicionar o Artigo 'Vinho tinto' porque não existe a "
                       "subfamília com o código '10003'") +
                  Count(1));
    EXPECT_FALSE(Host().items->Exists("300"));
    EXPECT_TRUE(Host().items->Exists("301"));
    EXPECT_EQ(Host().items->Get("301")->Description, "Sumo de ma");
    EXPECT_EQ(engine.ErrorCount(), 0);
    EXPECT_EQ(engine.WarningCount(), 1);
    EXPECT_EQ(engine.StatusText(), "Registos importados:1");
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(ItemsImportTest, ANullBarCodeEndsTheImportAtItsStep) {
    AddItem(1, "400", "Primeiro");
    AddItem(2, "401", "Sem codigo", "BarCode = NULL");
    AddItem(3, "402", "Terceiro");
    restaurant.ItemIDPrefix = "R1";
    EXPECT_FALSE(Import());
    const std::string error =
        "## Erro ## ao importar a tabela de Artigos. Artigo: 401 : BarCode - Invalid use of Null";
    EXPECT_EQ(LogText(), Section() + Line("Artigos", error));
    EXPECT_TRUE(Host().items->Exists("R1400"));
    EXPECT_FALSE(Host().items->Exists("R1401"));
    EXPECT_FALSE(Host().items->Exists("R1402"));
    EXPECT_EQ(engine.ErrorCount(), 1);
    EXPECT_TRUE(BoxShown(error, host::MessageStyle::Information, "Error"));
}

TEST_F(ItemsImportTest, AnExistingItemKeepsWhatTheImportDoesNotSet) {
    AddItem(1, "500", "Bitoque");
    ASSERT_TRUE(Import());
    host::Item edited = *Host().items->Get("500");
    edited.CostPrice = 3.75;
    edited.Notes = "Carne do talho; servir com ovo";
    edited.Description = "Bitoque da casa";
    Host().items->Save(edited, "500", false);

    Database().Execute("UPDATE plus SET Description = 'Bitoque de vaca' WHERE UID = 1");
    Database().Execute("UPDATE properties SET SalesPrice1 = 950 WHERE UID = 1");
    ASSERT_TRUE(Import());
    const host::Item after = *Host().items->Get("500");
    EXPECT_EQ(after.CostPrice, 3.75);
    EXPECT_EQ(after.Notes, "Carne do talho; servir com ovo");
    EXPECT_EQ(after.Description, "Bitoque de vaca");
    EXPECT_EQ(after.PriceLines[0].PriceWithTax, 9.5);
    EXPECT_EQ(after.PriceLines[0].PriceWithoutTax, 7.72);
    EXPECT_EQ(engine.CountOf(Counter::Items), 2);
}

TEST_F(ItemsImportTest, AScaleItemIsSoldByTheKilogram) {
    AddItem(1, "600", "Frango assado", {}, "ReadQuantityFromScale = 1, ItemTaxID1 = 3");
    ASSERT_TRUE(Import());
    const host::Item chicken = *Host().items->Get("600");
    EXPECT_TRUE(chicken.ReadQuantityFromScale);
    EXPECT_EQ(chicken.UnitOfSaleID, "KG");
    EXPECT_EQ(chicken.TaxableGroupID, 3);
    EXPECT_EQ(chicken.PriceLines[0].PriceWithoutTax, 2.36);  // 2,50 at 6 %
}

TEST_F(ItemsImportTest, NullNamesGiveEmptyTextsAndQuotesArriveIntact) {
    AddItem(1, "700", "x", "Description = NULL, ShortDescription1 = NULL");
    AddItem(2, "701", "Tosta \"mista\"; O''Neill");
    ASSERT_TRUE(Import());
    EXPECT_EQ(Host().items->Get("700")->Description, "");
    EXPECT_EQ(Host().items->Get("700")->ShortDescription, "");
    EXPECT_EQ(Host().items->Get("701")->Description, "Tosta \"mista\"; O'Neill");
    EXPECT_EQ(office.notifier->statuses.at(1), "Artigo: ");
}

}  // namespace
}  // namespace kitra
