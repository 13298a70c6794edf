// The back office's other services: application, company, tax, signature, settings store,
// the console notifier and message boxes, and how every connection is set up.
#include <gtest/gtest.h>

#include <sstream>

#include "backoffice/ConsoleServices.h"
#include "backoffice/Money.h"
#include "backoffice/Schema.h"
#include "backoffice/Sha256.h"
#include "tests/backoffice/TempFolder.h"

namespace kitra::backoffice {
namespace {

using namespace host;
using testing::TempBackOffice;

// ---------------------------------------------------------------- connection set-up

std::string Pragma(Database& database, const char* pragma) {
    Statement statement(database, std::string("PRAGMA ") + pragma);
    return statement.Step() ? statement.ColumnText(0) : std::string();
}

TEST(Connection, IsInWalWithNormalSyncForeignKeysAndTheCurrentSchemaVersion) {
    TempBackOffice office;
    Database& database = office->GetDatabase();
    EXPECT_EQ(Pragma(database, "journal_mode"), "wal");
    EXPECT_EQ(Pragma(database, "synchronous"), "1");  // NORMAL
    EXPECT_EQ(Pragma(database, "foreign_keys"), "1");
    EXPECT_EQ(Pragma(database, "busy_timeout"), std::to_string(kBusyTimeoutMilliseconds));
    EXPECT_EQ(database.UserVersion(), kSchemaVersion);
}

TEST(Connection, AFileOfANewerSchemaIsRefused) {
    TempBackOffice office;
    static_assert(kSchemaVersion < 99);
    office->GetDatabase().Exec("PRAGMA user_version=99");
    try {
        office.Reopen();
        FAIL();
    } catch (const Error& error) {
        EXPECT_NE(error.Description().find("mais recente"), std::string::npos) << error.Description();
    }
}

// How SQLite would run `sql`: the lines of its query plan, one text.
std::string QueryPlan(Database& database, const std::string& sql) {
    Statement plan(database, "EXPLAIN QUERY PLAN " + sql);
    std::string text;
    while (plan.Step()) text += plan.ColumnText(3) + "\n";
    return text;
}

// A document saved again reads and replaces its own rows in every table that hangs off it
// (the former version's snapshot, the rows taken out before the new ones go in); reading a
// whole table for each document made importing a back office again grow with the square of
// its documents.
TEST(Connection, EveryRowOfADocumentIsReachedThroughItsKey) {
    TempBackOffice office;
    Database& database = office->GetDatabase();
    for (const char* table : {"document_lines", "document_taxes", "document_payments", "card_payments",
                              "stock_movements", "cash_movements", "account_entries"}) {
        for (const std::string& sql : {std::string("SELECT * FROM ") + table + " WHERE DocumentKey=1",
                                       std::string("DELETE FROM ") + table + " WHERE DocumentKey=1"}) {
            const std::string plan = QueryPlan(database, sql);
            EXPECT_EQ(plan.find("SCAN"), std::string::npos) << sql << ":\n" << plan;
            EXPECT_NE(plan.find("SEARCH"), std::string::npos) << sql << ":\n" << plan;
        }
    }
    const std::string settlements = QueryPlan(database, "SELECT * FROM account_settlements WHERE ReceiptKey=1");
    EXPECT_EQ(settlements.find("SCAN"), std::string::npos) << settlements;
}

TEST(Connection, AFileOfVersion7FindsItsCashMovementsByDocumentWhenOpened) {
    TempBackOffice office;
    office->GetDatabase().Exec("DROP INDEX cash_movements_by_document; PRAGMA user_version=7;");
    office.Reopen();
    EXPECT_EQ(office->GetDatabase().UserVersion(), kSchemaVersion);
    const std::string plan = QueryPlan(office->GetDatabase(), "DELETE FROM cash_movements WHERE DocumentKey=1");
    EXPECT_NE(plan.find("cash_movements_by_document"), std::string::npos) << plan;
}

TEST(Connection, OpeningAFolderWithoutABackOfficeCreatesNothing) {
    testing::TempFolder folder;
    try {
        BackOffice office(folder.Path());
        FAIL();
    } catch (const Error& error) {
        EXPECT_NE(error.Description().find("kitra-host init"), std::string::npos);
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

// ---------------------------------------------------------------- application

TEST(Application, AnswersItsTitleConventionsAndTexts) {
    TempBackOffice office;
    const IApplication& application = office->application;
    EXPECT_EQ(application.Title(), "Kitrana Retaguarda");
    EXPECT_EQ(application.GeneralDateForm(), "dd-mm-yyyy hh:nn:ss");
    EXPECT_EQ(application.DecimalSeparator(), ',');
    for (long id : {4130001L, 4130002L, 4130004L, 4130005L, 4130008L, 4130009L, 4130010L})
        EXPECT_FALSE(application.Text(id).empty()) << id;
    EXPECT_EQ(application.Text(4130003), "");
    // The texts that a caption completes end in a blank.
    EXPECT_EQ(application.Text(4130001).back(), ' ');
    EXPECT_EQ(application.Text(4130002).back(), ' ');
    EXPECT_EQ(application.Text(4130004).back(), ' ');
}

TEST(Application, TheLogFolderIsLogsInTheDataFolderAndExists) {
    TempBackOffice office;
    std::filesystem::remove_all(office.DataFolder() / "logs");
    const std::string folder = office->application.LogFolder();
    EXPECT_EQ(std::filesystem::path(folder), office.DataFolder() / "logs");
    EXPECT_TRUE(std::filesystem::is_directory(folder));
}

TEST(Application, ExternalUnsignedSeriesAreActiveOnlyWhileTheDataSaysSo) {
    TempBackOffice office;
    EXPECT_TRUE(office->application.ExternalUnsignedSeriesActive());
    DocumentSeries external = *office->documentSeries.Get("EXT");
    external.Active = false;
    office->documentSeries.Save(external, "EXT", false);
    EXPECT_FALSE(office->application.ExternalUnsignedSeriesActive());
    office->documentSeries.Save({"R1", "Restaurante 1", SeriesKind::ExternalUnsigned, true}, "R1", true);
    EXPECT_TRUE(office->application.ExternalUnsignedSeriesActive());
}

// ---------------------------------------------------------------- company and tax

TEST(Company, AnswersTheCompanysValues) {
    TempBackOffice office;
    const ICompanyContext& company = office->company;
    const TaxContext tax = company.GetTaxContext();
    EXPECT_EQ(tax.CountryID, "PT");
    EXPECT_EQ(tax.TaxRegionID, 1);
    EXPECT_EQ(company.CurrencyID(), "EUR");
    EXPECT_EQ(company.DefaultUnitOfSaleID(), "UN");
    const CustomerDefaults defaults = company.GetCustomerDefaults();
    EXPECT_EQ(defaults.CountryID, "PT");
    EXPECT_EQ(defaults.TaxRegionID, 1);
    EXPECT_EQ(defaults.CurrencyID, "EUR");
    EXPECT_EQ(defaults.SalesZoneID, 1);
    EXPECT_EQ(defaults.CustomerTypeID, 1);
    EXPECT_EQ(defaults.PaymentTermID, 1);
    EXPECT_EQ(defaults.TenderID, 1);
    EXPECT_EQ(defaults.PriceLineID, 1);
}

TEST(Tax, FindsTheTaxableGroupOfARateInTheRegion) {
    TempBackOffice office;
    const ITaxService& tax = office->tax;
    EXPECT_EQ(tax.TaxableGroupForRate(23, {"PT", 1}), 1);
    EXPECT_EQ(tax.TaxableGroupForRate(13, {"PT", 1}), 2);
    EXPECT_EQ(tax.TaxableGroupForRate(6, {"PT", 1}), 3);
    EXPECT_EQ(tax.TaxableGroupForRate(0, {"PT", 1}), 4);
    EXPECT_EQ(tax.TaxableGroupForRate(16, {"PT", 2}), 1);  // the Azores' normal rate
    EXPECT_EQ(tax.TaxableGroupForRate(22, {"PT", 3}), 1);  // Madeira's
    EXPECT_THROW(tax.TaxableGroupForRate(16, {"PT", 1}), Error);
    EXPECT_THROW(tax.TaxableGroupForRate(23, {"ES", 0}), Error);
}

TEST(Tax, TakesTaxOutOfAPriceAndRoundsToCents) {
    TempBackOffice office;
    const ITaxService& tax = office->tax;
    const TaxContext mainland{"PT", 1};
    EXPECT_DOUBLE_EQ(tax.ValueWithTaxableGroup(2.5, 1, mainland, TaxCalculation::RemoveTax), 2.03);
    EXPECT_DOUBLE_EQ(tax.ValueWithTaxableGroup(12.3, 1, mainland, TaxCalculation::RemoveTax), 10.0);
    EXPECT_DOUBLE_EQ(tax.ValueWithTaxableGroup(1.13, 2, mainland, TaxCalculation::RemoveTax), 1.0);
    EXPECT_DOUBLE_EQ(tax.ValueWithTaxableGroup(5, 4, mainland, TaxCalculation::RemoveTax), 5.0);
    EXPECT_DOUBLE_EQ(tax.ValueWithTaxableGroup(-2.5, 1, mainland, TaxCalculation::RemoveTax), -2.03);
    EXPECT_DOUBLE_EQ(tax.ValueWithTaxableGroup(10, 1, mainland, TaxCalculation::AddTax), 12.3);
    EXPECT_DOUBLE_EQ(tax.ValueWithTaxableGroup(10, 1, {"PT", 2}, TaxCalculation::AddTax), 11.6);
    EXPECT_THROW(tax.ValueWithTaxableGroup(10, 99, mainland, TaxCalculation::RemoveTax), Error);
}

TEST(Money, RoundsToCentsHalfAwayFromZero) {
    EXPECT_DOUBLE_EQ(RoundMoney(2.345), 2.35);
    EXPECT_DOUBLE_EQ(RoundMoney(-2.345), -2.35);
    EXPECT_DOUBLE_EQ(RoundMoney(1.005), 1.01);
    EXPECT_DOUBLE_EQ(RoundMoney(2.344999), 2.34);
    EXPECT_DOUBLE_EQ(RoundMoney(0.125), 0.13);
    EXPECT_DOUBLE_EQ(RoundMoney(123456.785), 123456.79);
    EXPECT_DOUBLE_EQ(RoundMoney(0), 0);
}

// ---------------------------------------------------------------- signature

TEST(Signature, IsTheSha256OfTheTextInHex) {
    EXPECT_EQ(Sha256Hex(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Sha256Hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Sha256Hex("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(Sha256Hex(std::string(1'000'000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    SignatureService signature;
    EXPECT_EQ(signature.Sign("abc"), Sha256Hex("abc"));
    EXPECT_NE(signature.Sign("Integrador KitranaII"), signature.Sign("Integrador KitranaIi"));
}

// ---------------------------------------------------------------- settings store

class TestSetting final : public IGenericSetting {
public:
    TestSetting(std::string key1, std::string key2) : key1_(std::move(key1)), key2_(std::move(key2)) {}
    std::string Key1() const override { return key1_; }
    std::string Key2() const override { return key2_; }
    bool ExportToBranch() const override { return false; }
    void FromXML(const std::string& xml) override { xml_ = xml; }
    std::string ToXML() const override { return xml_; }

    std::string xml_;

private:
    std::string key1_, key2_;
};

TEST(SettingsStore, KeepsTheXmlUnderItsTwoKeys) {
    TempBackOffice office;
    IConnectorSettingsStore& store = office->settingsStore;
    TestSetting saved("Quarn.Mercatill.Connector", "Kitra");
    saved.xml_ = R"(<KitraConnectorSetting InvoiceTransDocument="VB" Nota="Tasca d'Avó; ção"/>)";
    store.Save(saved);

    office.Reopen();
    IConnectorSettingsStore& reopened = office->settingsStore;
    TestSetting loaded("Quarn.Mercatill.Connector", "Kitra");
    loaded.xml_ = "untouched";
    ASSERT_TRUE(reopened.Load(loaded));
    EXPECT_EQ(loaded.xml_, saved.xml_);

    TestSetting otherKey("Quarn.Mercatill.Connector", "Other");
    otherKey.xml_ = "untouched";
    EXPECT_FALSE(reopened.Load(otherKey));
    EXPECT_EQ(otherKey.xml_, "untouched");
}

TEST(SettingsStore, ASecondSaveReplacesTheFirst) {
    TempBackOffice office;
    TestSetting setting("K1", "K2");
    setting.xml_ = "<a/>";
    office->settingsStore.Save(setting);
    setting.xml_ = "<b/>";
    office->settingsStore.Save(setting);
    TestSetting loaded("K1", "K2");
    ASSERT_TRUE(office->settingsStore.Load(loaded));
    EXPECT_EQ(loaded.xml_, "<b/>");
    Statement rows(office->GetDatabase(), "SELECT count(*) FROM connector_settings");
    ASSERT_TRUE(rows.Step());
    EXPECT_EQ(rows.Column(0).ToInt32(), 1);
}

TEST(SettingsStore, DeleteRemovesOnlyThatPairOfKeys) {
    TempBackOffice office;
    TestSetting kitra("Quarn.Mercatill.Connector", "Kitra"), other("Quarn.Mercatill.Connector", "Other");
    kitra.xml_ = "<kitra/>";
    other.xml_ = "<other/>";
    office->settingsStore.Save(kitra);
    office->settingsStore.Save(other);
    office->settingsStore.Delete(kitra);
    EXPECT_FALSE(office->settingsStore.Load(kitra));
    EXPECT_TRUE(office->settingsStore.Load(other));
    office->settingsStore.Delete(kitra);  // deleting what is not there is no error
}

TEST(SettingsStore, KeepsEveryReplacedOrDeletedTextWithWhoStoredAndReplacedIt) {
    TempBackOffice office;
    ConnectorSettingsStore& store = office->settingsStore;
    TestSetting setting("K1", "K2");
    store.SetOrigin("settings load");
    setting.xml_ = "<a/>";
    store.Save(setting);
    EXPECT_TRUE(store.History("K1", "K2").empty());  // nothing replaced yet
    store.SetOrigin("execute");
    setting.xml_ = "<b/>";
    store.Save(setting);
    store.SetOrigin("settings delete");
    store.Delete(setting);
    store.Delete(setting);  // nothing filed: nothing more kept

    const auto history = store.History("K1", "K2");
    ASSERT_EQ(history.size(), 2u);
    EXPECT_EQ(history[0].xml, "<b/>");
    EXPECT_EQ(history[0].storedBy, "execute");
    EXPECT_EQ(history[0].replacedBy, "settings delete");
    EXPECT_EQ(history[1].xml, "<a/>");
    EXPECT_EQ(history[1].storedBy, "settings load");
    EXPECT_EQ(history[1].replacedBy, "execute");
    EXPECT_GT(history[0].id, history[1].id);
    EXPECT_TRUE(store.History("K1", "Other").empty());
    ASSERT_TRUE(store.Version("K1", "K2", history[1].id));
    EXPECT_EQ(store.Version("K1", "K2", history[1].id)->xml, "<a/>");
    EXPECT_FALSE(store.Version("K1", "Other", history[1].id));
}

TEST(SettingsStore, KeepsTheNewestVersionsOnly) {
    TempBackOffice office;
    TestSetting setting("K1", "K2");
    for (int i = 0; i <= kHistoryVersionsKept + 5; ++i) {
        setting.xml_ = "<v n=\"" + std::to_string(i) + "\"/>";
        office->settingsStore.Save(setting);
    }
    const auto history = office->settingsStore.History("K1", "K2");
    ASSERT_EQ(history.size(), static_cast<std::size_t>(kHistoryVersionsKept));
    EXPECT_EQ(history.front().xml, "<v n=\"" + std::to_string(kHistoryVersionsKept + 4) + "\"/>");
    EXPECT_EQ(history.back().xml, "<v n=\"5\"/>");
}

// ---------------------------------------------------------------- console

TEST(Console, PrintsBoxesAndAsksYesOrNo) {
    std::ostringstream out;
    std::istringstream answers("sim\nnão\n S \n");
    ConsoleMessageBoxes boxes(&answers, out);
    EXPECT_EQ(boxes.Show("A importação chegou ao fim.", MessageStyle::Information,
                         MessageButtons::Ok, "Kitrana Retaguarda"),
              MessageAnswer::Ok);
    EXPECT_EQ(boxes.Show("Apagar?", MessageStyle::Question, MessageButtons::YesNo, ""), MessageAnswer::Yes);
    EXPECT_EQ(boxes.Show("Apagar?", MessageStyle::Question, MessageButtons::YesNo, ""), MessageAnswer::No);
    EXPECT_EQ(boxes.Show("Apagar?", MessageStyle::Question, MessageButtons::YesNo, ""), MessageAnswer::Yes);
    EXPECT_EQ(boxes.Show("Apagar?", MessageStyle::Question, MessageButtons::YesNo, ""), MessageAnswer::No);
    EXPECT_EQ(out.str().rfind("(i) [Kitrana Retaguarda] A importação chegou ao fim.\n", 0), 0u);

    ConsoleMessageBoxes nobody(nullptr, out);
    EXPECT_EQ(nobody.Show("Apagar?", MessageStyle::Question, MessageButtons::YesNo, ""), MessageAnswer::No);
}

TEST(Console, PrintsProgressAndStatus) {
    std::ostringstream out;
    ConsoleEventNotifier notifier(out);
    notifier.NotifyStatus("A importar Vendedores");
    notifier.NotifyProgress(3, 10, "A importar Vendedores");
    EXPECT_EQ(out.str(), "A importar Vendedores\n[3/10] A importar Vendedores\n");
}

}  // namespace
}  // namespace kitra::backoffice
