// ImportFamilies and ImportSubfamilies against a restaurant database on the private server and
// a real back office.
#include "tests/import/MasterDataImportTest.h"

namespace kitra {
namespace {

class FamiliesImportTest : public MasterDataImportTest {
protected:
    // A family with the given uid and code; returns nothing, the uid names it for subfamilies.
    void AddFamily(int uid, const std::string& code, const std::string& description,
                   const std::string& modified = "2024-06-01 10:00:00") {
        Database().Execute("INSERT INTO families (uid, code, description, ModifyDate) VALUES (" +
                           std::to_string(uid) + ", '" + code + "', " + description + ", '" +
                           modified + "')");
    }
    void AddSubfamily(int uid, const std::string& code, int familyUid,
                      const std::string& description,
                      const std::string& modified = "2024-06-01 10:00:00") {
        Database().Execute(
            "INSERT INTO subfamilies (uid, code, FamilyUID, Description, ModifyDate) VALUES (" +
            std::to_string(uid) + ", '" + code + "', " + std::to_string(familyUid) + ", " +
            description + ", '" + modified + "')");
    }

    bool ImportFamilies() { return kitra::ImportFamilies(engine, connection, restaurant); }
    bool ImportSubfamilies() { return kitra::ImportSubfamilies(engine, connection, restaurant); }

    static std::string FamiliesSection() { return Title("Famílias", "A importar Famílias"); }
    static std::string SubfamiliesSection() {
        return Title("SubFamílias", "A importar SubFamílias");
    }
    static std::string FamiliesCount(int n) {
        return Line("Famílias", "Registos importados:" + std::to_string(n));
    }
    static std::string SubfamiliesCount(int n) {
        return Line("SubFamílias", "Registos importados:" + std::to_string(n));
    }
};

TEST_F(FamiliesImportTest, FamilyTwelveAndItsSubfamilyTwelveMakeOneTree) {
    AddFamily(1, "12", "'Bebidas'");
    AddSubfamily(1, "12", 1, "'Sumos'");
    ASSERT_TRUE(ImportFamilies());
    ASSERT_TRUE(ImportSubfamilies());
    EXPECT_EQ(LogText(), FamiliesSection() + FamiliesCount(1) + SubfamiliesSection() +
                             SubfamiliesCount(1));
    EXPECT_EQ(Host().families->Get(12),
              (host::Family{12, "Bebidas", "Bebidas", "Bebidas", 0, "", 0, "UN", 100}));
    EXPECT_EQ(Host().families->Get(10012),
              (host::Family{10012, "Sumos", "", "Bebidas\\Sumos", 12, "Bebidas", 0, "UN", 100}));
    EXPECT_EQ(engine.CountOf(Counter::Families), 1);
    EXPECT_EQ(engine.CountOf(Counter::Subfamilies), 1);
    EXPECT_EQ(office.notifier->statuses,
              (std::vector<std::string>{"A importar Famílias", "Família: Bebidas",
                                        "A importar SubFamílias", "SubFamília: Sumos"}));
}

TEST_F(FamiliesImportTest, EachRowsProgressShowsTheStatusTextAsItIs) {
    AddFamily(1, "1", "'Entradas'");
    AddFamily(2, "2", "'Pratos'");
    ASSERT_TRUE(ImportFamilies());
    EXPECT_EQ(office.notifier->progress,
              (std::vector<testing::RecordingNotifier::Progress>{
                  {1, 1, "A importar Famílias"}, {2, 1, "Família: Entradas"}}));
}

TEST_F(FamiliesImportTest, ASubfamilyWithoutItsFamilyIsReportedAndLeftOut) {
    AddFamily(1, "12", "'Bebidas'");
    AddSubfamily(1, "12", 1, "'Sumos'");
    AddSubfamily(2, "13", 1, "'Águas'");
    engine.showErrorMessageBoxs = false;
    // The families were not imported: the host has no family 12.
    ASSERT_TRUE(ImportSubfamilies());
    EXPECT_EQ(LogText(),
              SubfamiliesSection() +
                  Line("SubFamílias",
                       "Não foi possível adicionar a SubFamília 'Sumos' porque não existe a "
                       "família com o código '12'") +
                  Line("SubFamílias",
                       "Não foi possível adicionar a SubFamília 'guas' porque não existe a "
                       "família com o código '12'") +
                  SubfamiliesCount(0));
    EXPECT_FALSE(Host().families->Exists(10012));
    EXPECT_FALSE(Host().families->Exists(10013));
    EXPECT_EQ(engine.ErrorCount(), 0);
    EXPECT_EQ(engine.WarningCount(), 2);
    EXPECT_TRUE(office.boxes.shown.empty());

    // The next import, after the family arrived, does not bring the subfamilies again...
    ASSERT_TRUE(ImportFamilies());
    restaurant.ImportDateEntities = "2024-07-01 12:00:00";
    ASSERT_TRUE(ImportSubfamilies());
    EXPECT_FALSE(Host().families->Exists(10012));
    // ...until one of them changes again.
    Database().Execute("UPDATE subfamilies SET ModifyDate = '2024-07-02 09:00:00' WHERE uid = 1");
    ASSERT_TRUE(ImportSubfamilies());
    EXPECT_TRUE(Host().families->Exists(10012));
    EXPECT_FALSE(Host().families->Exists(10013));
}

TEST_F(FamiliesImportTest, OnlyTheSubfamilysOwnChangeBringsItAgain) {
    AddFamily(1, "4", "'Sobremesas'");
    AddSubfamily(1, "40", 1, "'Bolos'");
    ASSERT_TRUE(ImportFamilies());
    ASSERT_TRUE(ImportSubfamilies());
    restaurant.ImportDateEntities = "2024-07-01 12:00:00";
    Database().Execute(
        "UPDATE families SET description = 'Doces', ModifyDate = '2024-07-02 09:00:00'");
    ASSERT_TRUE(ImportFamilies());
    ASSERT_TRUE(ImportSubfamilies());
    EXPECT_EQ(Host().families->Get(4)->Description, "Doces");
    EXPECT_EQ(Host().families->Get(10040)->FullPath, "Sobremesas\\Bolos");
    EXPECT_EQ(engine.CountOf(Counter::Families), 2);
    EXPECT_EQ(engine.CountOf(Counter::Subfamilies), 1);
}

TEST_F(FamiliesImportTest, FamilyCodeZeroAndCodesBeyondTheKeyLimitAreSkippedWithoutALine) {
    // The back office's limit for a key of ten digits is the largest 32-bit key.
    ASSERT_EQ(Host().utility->KeyLimit(10), 2147483647);
    AddFamily(1, "0", "'Zero'");
    AddFamily(2, "2147483648", "'Grande demais'");
    AddFamily(3, "2147483647", "'Grande'");
    AddFamily(4, "-1", "'Negativa'");
    AddFamily(5, "7x", "'Sete'");  // the plain parse stops at the letter
    ASSERT_TRUE(ImportFamilies());
    EXPECT_EQ(LogText(), FamiliesSection() + FamiliesCount(2));
    const auto families = Host().families->List();
    ASSERT_EQ(families.size(), 2u);
    EXPECT_EQ(families[0].FamilyID, 7);
    EXPECT_EQ(families[0].Description, "Sete");
    EXPECT_EQ(families[1].FamilyID, 2147483647);
    EXPECT_EQ(families[1].Description, "Grande");
}

TEST_F(FamiliesImportTest, NullDescriptionsGiveEmptyTextsAndAccentsAreLeftOut) {
    AddFamily(1, "3", "NULL");
    AddFamily(2, "5", "'Cafetaria & Pastelaria'");
    AddSubfamily(1, "8", 1, "NULL");
    AddSubfamily(2, "9", 2, "'Pão; \"Bolos\"'");
    ASSERT_TRUE(ImportFamilies());
    ASSERT_TRUE(ImportSubfamilies());
    EXPECT_EQ(Host().families->Get(3)->Description, "");
    EXPECT_EQ(Host().families->Get(10008)->FullPath, "\\");
    EXPECT_EQ(Host().families->Get(10009)->Description, "Po; \"Bolos\"");
    EXPECT_EQ(Host().families->Get(10009)->FullPath, "Cafetaria & Pastelaria\\Po; \"Bolos\"");
}

TEST_F(FamiliesImportTest, TheParentDescriptionIsTheHostsOwn) {
    AddFamily(1, "2", "'Pratos'");
    AddSubfamily(1, "21", 1, "'Grelhados'");
    ASSERT_TRUE(ImportFamilies());
    // Renamed in the back office since: the subfamily takes the host's name as its parent's
    // description, the restaurant's name in its path.
    host::Family family = *Host().families->Get(2);
    family.Description = "Pratos do dia";
    Host().families->Save(family, 2, false);
    ASSERT_TRUE(ImportSubfamilies());
    const host::Family subfamily = *Host().families->Get(10021);
    EXPECT_EQ(subfamily.ParentDescription, "Pratos do dia");
    EXPECT_EQ(subfamily.FullPath, "Pratos\\Grelhados");
}

}  // namespace
}  // namespace kitra
