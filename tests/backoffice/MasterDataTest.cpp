// Every master-data service of the back office against a real database file: insert, exists,
// get, overwrite, list, and the refusals; then the services with rows in a second table.
#include <gtest/gtest.h>

#include "backoffice/Schema.h"
#include "tests/backoffice/TempFolder.h"

namespace kitra::backoffice {
namespace {

using namespace host;
using testing::TempBackOffice;

// For each service: where it is in a back office, a key that the starting data does not use,
// and two different records to file under it.
template <class Service>
struct Samples;

template <>
struct Samples<SalesmanService> {
    static SalesmanService& Of(BackOffice& b) { return b.salesmen; }
    static double Key() { return 42; }
    static Salesman First() {
        return {42, "João Mendes", "1234", "239000111", "912000111", "Rua da Sofia, 10",
                "2.º Esq.", "Coimbra", "3000-389", "joao@exemplo.pt"};
    }
    static Salesman Second() {
        return {42, "João M. Mendes", "", "239000222", "", "Rua Nova, 1", "", "Lousã",
                "3200-100", ""};
    }
};

template <>
struct Samples<CustomerService> {
    static CustomerService& Of(BackOffice& b) { return b.customers; }
    static double Key() { return 1001; }
    static Customer First() {
        Customer c;
        c.CustomerID = 1001;
        c.OrganizationName = "Café Central, Lda.";
        c.CardID = "C-77";
        c.DirectDiscount = 12.5;
        c.AddressLine1 = "Praça 8 de Maio";
        c.PostalCode = "3000-300 Coimbra";
        c.Telephone = "239111222";
        c.Email = "geral@cafecentral.pt";
        c.FederalTaxID = "501234560";
        c.CountryID = "PT";
        c.TaxRegionID = 1;
        c.CurrencyID = "EUR";
        c.SalesZoneID = 1;
        c.CustomerTypeID = 1;
        c.PaymentTermID = 1;
        c.TenderID = 1;
        c.PriceLineID = 1;
        c.UpdateDate = {2024, 5, 6, 7, 8, 9};
        c.Active = c.SubjectToTax = c.AllowCreditSales = c.SendAccountStatements = true;
        return c;
    }
    static Customer Second() {
        Customer c = First();
        c.OrganizationName = "Café Central";
        c.DirectDiscount = 0;
        c.PriceLineID = 3;
        c.UpdateDate = {2025, 1, 2, 3, 4, 5};
        c.SendAccountStatements = false;
        return c;
    }
};

template <>
struct Samples<FamilyService> {
    static FamilyService& Of(BackOffice& b) { return b.families; }
    static double Key() { return 10012; }
    static Family First() {
        return {10012, "Sumos", "", "Bebidas\\Sumos", 12, "Bebidas", 0, "UN", 100};
    }
    static Family Second() {
        return {10012, "Sumos naturais", "Sumos", "Bebidas\\Sumos naturais", 12, "Bebidas", 5,
                "KG", 50};
    }
};

template <>
struct Samples<TenderService> {
    static TenderService& Of(BackOffice& b) { return b.tenders; }
    static std::int16_t Key() { return 42; }
    static Tender First() { return {42, "MB Way", tender_type::kTransfer, false, 0, 0, false}; }
    static Tender Second() { return {42, "MB Way (app)", tender_type::kCard, true, 500, 1.5, true}; }
};

template <>
struct Samples<DocumentTypeService> {
    static DocumentTypeService& Of(BackOffice& b) { return b.documentTypes; }
    static std::string Key() { return "NC"; }
    static DocumentType First() { return {"NC", "NOTA DE CRÉDITO", DocumentKind::Return}; }
    static DocumentType Second() { return {"NC", "NOTA DE CRÉDITO A CLIENTES", DocumentKind::Sale}; }
};

template <>
struct Samples<DocumentSeriesService> {
    static DocumentSeriesService& Of(BackOffice& b) { return b.documentSeries; }
    static std::string Key() { return "R2"; }
    static DocumentSeries First() { return {"R2", "Restaurante 2", SeriesKind::ExternalUnsigned, true}; }
    static DocumentSeries Second() { return {"R2", "Restaurante 2 (fechado)", SeriesKind::Manual, false}; }
};

template <>
struct Samples<WarehouseService> {
    static WarehouseService& Of(BackOffice& b) { return b.warehouses; }
    static std::int16_t Key() { return 7; }
    static Warehouse First() { return {7, "Cave"}; }
    static Warehouse Second() { return {7, "Cave do restaurante"}; }
};

template <>
struct Samples<WorkstationService> {
    static WorkstationService& Of(BackOffice& b) { return b.workstations; }
    static std::int16_t Key() { return 9; }
    static Workstation First() { return {9, "Esplanada"}; }
    static Workstation Second() { return {9, "Esplanada norte"}; }
};

template <>
struct Samples<SupplierService> {
    static SupplierService& Of(BackOffice& b) { return b.suppliers; }
    static double Key() { return 77; }
    static Supplier First() { return {77, "Lacticínios da Beira, S.A.", "500000000"}; }
    static Supplier Second() { return {77, "Lacticínios da Beira", "500000000"}; }
};

template <>
struct Samples<PlaceService> {
    static PlaceService& Of(BackOffice& b) { return b.places; }
    static std::int32_t Key() { return 1; }
    static Place First() { return {1, "Local de carga"}; }
    static Place Second() { return {1, "Cais de carga"}; }
};

template <>
struct Samples<UnitOfSaleService> {
    static UnitOfSaleService& Of(BackOffice& b) { return b.unitsOfSale; }
    static std::string Key() { return "LT"; }
    static UnitOfSale First() { return {"LT", "Litro"}; }
    static UnitOfSale Second() { return {"LT", "Litros"}; }
};

template <>
struct Samples<CustomerTypeService> {
    static CustomerTypeService& Of(BackOffice& b) { return b.customerTypes; }
    static std::int32_t Key() { return 1; }
    static CustomerType First() { return {1, "Geral", 1}; }
    static CustomerType Second() { return {1, "Geral (revenda)", 2}; }
};

template <>
struct Samples<SalesZoneService> {
    static SalesZoneService& Of(BackOffice& b) { return b.salesZones; }
    static std::int32_t Key() { return 1; }
    static SalesZone First() { return {1, "Geral", "PT", 1, "EUR", zone_type::kNational}; }
    static SalesZone Second() { return {1, "Espanha", "ES", 0, "EUR", zone_type::kEuropeanUnion}; }
};

template <>
struct Samples<PaymentTermService> {
    static PaymentTermService& Of(BackOffice& b) { return b.paymentTerms; }
    static std::int32_t Key() { return 1; }
    static PaymentTerm First() { return {1, "Geral", 0}; }
    static PaymentTerm Second() { return {1, "30 dias", 30}; }
};

template <class Service>
class MasterDataTest : public ::testing::Test {
protected:
    using S = Samples<Service>;
    Service& Of() { return S::Of(*office_); }
    TempBackOffice office_;
};

using Services =
    ::testing::Types<SalesmanService, CustomerService, FamilyService, TenderService,
                     DocumentTypeService, DocumentSeriesService, WarehouseService,
                     WorkstationService, SupplierService, PlaceService, UnitOfSaleService,
                     CustomerTypeService, SalesZoneService, PaymentTermService>;
TYPED_TEST_SUITE(MasterDataTest, Services);

TYPED_TEST(MasterDataTest, InsertsThenOverwrites) {
    using S = typename TestFixture::S;
    auto& service = this->Of();
    ASSERT_FALSE(service.Exists(S::Key()));
    EXPECT_FALSE(service.Get(S::Key()).has_value());

    service.Save(S::First(), S::Key(), true);
    EXPECT_TRUE(service.Exists(S::Key()));
    EXPECT_EQ(service.Get(S::Key()), S::First());

    service.Save(S::Second(), S::Key(), false);
    EXPECT_EQ(service.Get(S::Key()), S::Second());

    // The overwrite replaced the record; it did not add a second one.
    const auto all = service.List();
    EXPECT_EQ(std::count(all.begin(), all.end(), S::Second()), 1);
    EXPECT_EQ(std::count(all.begin(), all.end(), S::First()), 0);
}

TYPED_TEST(MasterDataTest, WhatWasSavedSurvivesAnotherProgram) {
    using S = typename TestFixture::S;
    this->Of().Save(S::First(), S::Key(), true);
    this->office_.Reopen();
    EXPECT_EQ(this->Of().Get(S::Key()), S::First());
}

TYPED_TEST(MasterDataTest, RefusesANewRecordUnderATakenKeyAndKeepsTheFirst) {
    using S = typename TestFixture::S;
    auto& service = this->Of();
    service.Save(S::First(), S::Key(), true);
    EXPECT_THROW(service.Save(S::Second(), S::Key(), true), Error);
    EXPECT_EQ(service.Get(S::Key()), S::First());
}

TYPED_TEST(MasterDataTest, RefusesToOverwriteWhatIsNotThere) {
    using S = typename TestFixture::S;
    auto& service = this->Of();
    EXPECT_THROW(service.Save(S::First(), S::Key(), false), Error);
    EXPECT_FALSE(service.Exists(S::Key()));
}

TEST(MasterData, TheKeyGivenToSaveIsTheKeyTheRecordIsFiledUnder) {
    TempBackOffice office;
    Salesman salesman = Samples<SalesmanService>::First();
    salesman.SalesmanID = 999;
    office->salesmen.Save(salesman, 42.0, true);
    EXPECT_FALSE(office->salesmen.Exists(999.0));
    ASSERT_TRUE(office->salesmen.Exists(42.0));
    EXPECT_EQ(office->salesmen.Get(42.0)->SalesmanID, 42.0);
}

TEST(MasterData, NumericKeysAreWholeNumbersRoundedHalfToEven) {
    TempBackOffice office;
    office->salesmen.Save(Samples<SalesmanService>::First(), 42.5, true);  // files under 42
    EXPECT_TRUE(office->salesmen.Exists(42.0));
    EXPECT_TRUE(office->salesmen.Exists(41.7));
    EXPECT_FALSE(office->salesmen.Exists(43.0));
    try {
        office->salesmen.Exists(3e9);
        FAIL() << "a key beyond 32 bits must fail";
    } catch (const Error& error) {
        EXPECT_EQ(error.Description(), "Overflow");
    }
}

TEST(MasterData, TextKeysIgnoreLetterCase) {
    TempBackOffice office;
    office->documentTypes.Save({"NC", "NOTA DE CRÉDITO", DocumentKind::Return}, "NC", true);
    EXPECT_TRUE(office->documentTypes.Exists("nc"));
    EXPECT_THROW(office->documentTypes.Save({"nc", "OUTRA", DocumentKind::Sale}, "nc", true), Error);
}

TEST(MasterData, ARefusedSaveLeavesEarlierSavesInPlace) {
    TempBackOffice office;
    office->salesmen.Save(testing::NamedSalesman(1, "Vendedor Geral"), 1.0, true);
    office->salesmen.Save(testing::NamedSalesman(2, "Ana"), 2.0, true);
    EXPECT_THROW(office->salesmen.Save(testing::NamedSalesman(2, "Ana outra vez"), 2.0, true), Error);
    office.Reopen();
    EXPECT_EQ(office->salesmen.Get(1.0)->Name, "Vendedor Geral");
    EXPECT_EQ(office->salesmen.Get(2.0)->Name, "Ana");
}

TEST(MasterData, TheErrorNamesTheRecordInPortuguese) {
    TempBackOffice office;
    try {
        office->families.Save({}, 12.0, false);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.Description(), "Não existe a família com o código 12.");
    }
}

TEST(MasterData, ListsInKeyOrder) {
    TempBackOffice office;
    const auto warehouses = office->warehouses.List();
    ASSERT_EQ(warehouses.size(), 2u);
    EXPECT_EQ(warehouses[0], (Warehouse{1, "Armazém principal"}));
    EXPECT_EQ(warehouses[1], (Warehouse{2, "Armazém de quebras"}));
}

// ---------------------------------------------------------------- items and their prices

Item SampleItem() {
    Item item;
    item.ItemID = "R1100";
    item.Description = "Bitoque";
    item.ShortDescription = "Bitoque";
    item.TaxableGroupID = 2;
    item.BarCode = "5601234567890";
    item.UnitOfSaleID = "UN";
    item.FamilyID = 10012;
    item.StockManagement = true;
    item.SupplierID = 1;
    item.ItemType = 6;
    item.FindPriceLine(1)->PriceWithTax = 9.5;
    item.FindPriceLine(1)->PriceWithoutTax = 8.41;
    item.FindPriceLine(5)->PriceWithTax = 2.5;
    item.FindPriceLine(5)->PriceWithoutTax = 2.21;
    item.CostPrice = 3.75;
    item.Notes = "Carne do talho Ferreira; servir com ovo";
    return item;
}

TEST(Items, ANewItemHasTheFivePriceLines) {
    Item item;
    for (int line = 1; line <= 5; ++line) {
        ASSERT_NE(item.FindPriceLine(line), nullptr);
        EXPECT_EQ(item.FindPriceLine(line)->LineNumber, line);
    }
    EXPECT_EQ(item.FindPriceLine(0), nullptr);
    EXPECT_EQ(item.FindPriceLine(6), nullptr);
}

TEST(Items, SavesAndReadsTheItemWithItsPrices) {
    TempBackOffice office;
    office->items.Save(SampleItem(), "R1100", true);
    ASSERT_TRUE(office->items.Exists("r1100"));
    EXPECT_EQ(office->items.Get("R1100"), SampleItem());
}

TEST(Items, TextsAndKeysKeepEveryByteNulIncluded) {
    using namespace std::string_literals;
    TempBackOffice office;
    Item item = SampleItem();
    item.ItemID = "R1\0" "100😀"s;
    item.Description = "Bife\0à casa \x01 中文 \xF4\x8F\xBF\xBF"s;
    item.Notes = "\0"s;
    office->items.Save(item, item.ItemID, true);
    // Another program sees the same bytes.
    office.Reopen();
    EXPECT_FALSE(office->items.Exists("R1"));
    const auto stored = office->items.Get(item.ItemID);
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->ItemID, item.ItemID);
    EXPECT_EQ(stored->Description, item.Description);
    EXPECT_EQ(stored->Notes, item.Notes);
    EXPECT_EQ(office->items.List().size(), 1u);
}

TEST(Items, OverwritingReplacesEveryPriceLine) {
    TempBackOffice office;
    office->items.Save(SampleItem(), "R1100", true);
    Item changed = *office->items.Get("R1100");
    changed.ReadQuantityFromScale = true;
    changed.UnitOfSaleID = "KG";
    changed.FindPriceLine(1)->PriceWithTax = 11;
    changed.FindPriceLine(1)->PriceWithoutTax = 9.73;
    changed.FindPriceLine(5)->PriceWithTax = 0;
    changed.FindPriceLine(5)->PriceWithoutTax = 0;
    office->items.Save(changed, "R1100", false);
    office.Reopen();
    EXPECT_EQ(office->items.Get("R1100"), changed);
}

TEST(Items, EveryItemHasExactlyFivePriceRows) {
    TempBackOffice office;
    office->items.Save(SampleItem(), "R1100", true);
    office->items.Save(SampleItem(), "R1100", false);
    Statement count(office->GetDatabase(), "SELECT count(*) FROM item_prices WHERE ItemID='R1100'");
    ASSERT_TRUE(count.Step());
    EXPECT_EQ(count.Column(0).ToInt32(), 5);
}

TEST(Items, AFileOfVersion1GetsTheItemsCostAndNotesWhenOpened) {
    TempBackOffice office;
    Item before = SampleItem();
    before.CostPrice = 0;
    before.Notes.clear();
    office->items.Save(before, "R1100", true);
    // Back to what version 1 had: no cost, no notes, none of the later versions' settings
    // history and documents.
    office->GetDatabase().Exec(
        "ALTER TABLE items DROP COLUMN CostPrice; ALTER TABLE items DROP COLUMN Notes; "
        "ALTER TABLE connector_settings DROP COLUMN UpdatedBy; DROP TABLE connector_settings_history; "
        "DROP TABLE restaurant_imports; DROP VIEW item_stock; DROP TABLE document_history; DROP TABLE account_settlements; "
        "DROP TABLE cash_movements; DROP TABLE account_entries; "
        "DROP TABLE stock_movements; DROP TABLE card_payments; DROP TABLE document_payments; "
        "DROP TABLE document_taxes; DROP TABLE document_lines; DROP TABLE documents; "
        "ALTER TABLE workstations DROP COLUMN WarehouseID; PRAGMA user_version=1;");
    office.Reopen();
    EXPECT_EQ(office->GetDatabase().UserVersion(), kSchemaVersion);
    EXPECT_EQ(office->items.Get("R1100"), before);  // upgraded with cost 0 and empty notes
    Item kept = before;
    kept.CostPrice = 1.25;
    kept.Notes = "Fornecido à segunda-feira";
    office->items.Save(kept, "R1100", false);
    EXPECT_EQ(office->items.Get("R1100"), kept);
}

// ---------------------------------------------------------------- taxable groups

TEST(TaxableGroups, ASaveReplacesTheGroupsRates) {
    TempBackOffice office;
    TaxableGroup group{7, "Taxa especial", {{"PT", 1, 8}, {"PT", 2, 7}}};
    office->taxableGroups.Save(group, 7, true);
    EXPECT_EQ(office->taxableGroups.Get(7), group);
    group.Rates = {{"PT", 3, 6.5}};
    office->taxableGroups.Save(group, 7, false);
    EXPECT_EQ(office->taxableGroups.Get(7), group);
    EXPECT_EQ(group.RateIn({"PT", 3}), 6.5);
    EXPECT_FALSE(group.RateIn({"PT", 1}).has_value());
}

TEST(TaxableGroups, ARecordWhoseSecondTableFailsIsNotSavedAtAll) {
    TempBackOffice office;
    // Tax region PT/9 does not exist: the rate row breaks a foreign key, and the group's own
    // row, written first in the same transaction, must go with it.
    const TaxableGroup group{8, "Taxa de uma região desconhecida", {{"PT", 9, 10}}};
    EXPECT_THROW(office->taxableGroups.Save(group, 8, true), Error);
    EXPECT_FALSE(office->taxableGroups.Exists(8));
}

}  // namespace
}  // namespace kitra::backoffice
