// ImportItems: the restaurant's sale items changed since its last entity import, into the host's
// items with their five prices. An item the host already has is updated, so what the host keeps
// beside the restaurant's values stays; an item whose subfamily the host lacks is left out.
#include <array>
#include <optional>

#include "core/Numbers.h"
#include "import/Importers.h"
#include "import/MasterDataImport.h"
#include "restaurant/Statements.h"

namespace kitra {
namespace {

constexpr std::int16_t kRestaurantItemType = 6;
// Items sold by weight are sold by the kilogram.
constexpr const char* kWeighedUnitOfSale = "KG";

}  // namespace

bool ImportItems(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant) {
    static constexpr MasterDataImportTexts kTexts{
        .section = "Artigos",
        .startText = "A importar Artigos",
        .errorText = "## Erro ## ao importar a tabela de Artigos. Artigo: ",
        .counter = Counter::Items,
        .progress = RowProgressText::StartText,
        .idBeforeFirstRow = "",
    };
    return ImportMasterData(
        engine, connection, restaurant, kTexts, kitra::restaurant::ItemsStatement,
        [](MasterDataRow& row) {
            const host::HostServices& services = row.Services();

            row.Step("ItemID-Check");
            const std::string restaurantItemId = row["ItemID"].ToText();
            row.Identify(restaurantItemId);
            row.Step("itemName");
            const std::string name = CleanedOrEmpty(row["Description"]);

            row.Step("SubFamilyID-Check");
            const std::int32_t subfamilyId =
                RoundToInt32(LeadingNumber(row["SubFamilyCode"].ToText()) + kSubfamilyKeyOffset);
            if (!services.families->Exists(subfamilyId)) {
                // Reported under the subfamilies' section: it is their import that fell short.
                row.LeaveOut("Não foi possível adicionar o Artigo '" + name +
                                 "' porque não existe a subfamília com o código '" +
                                 std::to_string(subfamilyId) + "'",
                             "SubFamílias");
                return;
            }

            row.Announce("Artigo: " + name);
            const std::string& prefix = row.RestaurantBeingImported().ItemIDPrefix;
            const std::string key = prefix.empty() ? restaurantItemId : prefix + restaurantItemId;
            // An existing item is updated, not replaced: what the host keeps beside the
            // restaurant's values (its cost, its notes) stays.
            std::optional<host::Item> existing;
            if (services.items->Exists(key)) existing = services.items->Get(key);
            // The host's item keys ignore letter case, so 'abc' would land on the host's 'ABC'
            // and overwrite another item. Such an item is left out and said so, which also keeps
            // the count equal to what the host holds.
            if (existing && existing->ItemID != key) {
                row.LeaveOut("Não foi possível adicionar o Artigo '" + name + "' porque o código '" +
                                 key + "' só difere nas maiúsculas e minúsculas do código '" +
                                 existing->ItemID + "' de um Artigo que já existe",
                             "Artigos");
                return;
            }
            const bool isNew = !existing.has_value();
            host::Item item = isNew ? host::Item{} : *existing;

            row.Step("ItemID");
            item.ItemID = key;
            row.Step("Description");
            item.Description = name;
            row.Step("ShortDescription");
            item.ShortDescription = CleanedOrEmpty(row["ShortDescription1"]);
            row.Step("TaxableGroupID");
            item.TaxableGroupID = row.Engine().GetTaxableGroupForRate(row["TaxRate"].ToDouble());
            row.Step("BarCode");
            item.BarCode = CleanedBeforeNullTest(row["BarCode"]);
            row.Step("ReadQuantityFromScale");
            item.ReadQuantityFromScale =
                services.utility->ParseNumber(row["ReadQuantityFromScale"].ToText(), ',') != 0;
            row.Step("UnitOfSaleID");
            item.UnitOfSaleID = item.ReadQuantityFromScale ? kWeighedUnitOfSale
                                                           : services.company->DefaultUnitOfSaleID();
            row.Step("SubFamilyID");
            item.FamilyID = subfamilyId;
            // Every restaurant item is stocked in the host, whatever the restaurant says.
            row.Step("StockManagement");
            item.StockManagement = true;
            row.Step("PriceLines");
            static constexpr std::array<const char*, 5> kPriceColumns = {
                "SalesPrice1", "SalesPrice2", "SalesPrice3", "SalesPrice4", "SalesPrice5"};
            for (int line = 1; line <= 5; ++line) {
                if (host::PriceLine* price = item.FindPriceLine(line)) {
                    // The restaurant keeps prices, VAT included, in hundredths.
                    price->PriceWithTax =
                        row.Engine().ParseHundredths(row[kPriceColumns[line - 1]].ToText());
                    price->PriceWithoutTax =
                        row.Engine().CalculateWithTaxableGroup(price->PriceWithTax,
                                                              item.TaxableGroupID);
                }
            }
            row.Step("SupplierID");
            item.SupplierID = row.RestaurantBeingImported().DefaultSupplierID;
            row.Step("ItemType");
            item.ItemType = kRestaurantItemType;

            row.Save(*services.items, item, key, isNew);
        });
}

}  // namespace kitra
