#include "backoffice/ItemService.h"

namespace kitra::backoffice {

using namespace host;

ItemService::ItemService(Database& database)
    : MasterDataTable(database,
                      {"items",
                       "o artigo",
                       MapColumn("ItemID", &Item::ItemID),
                       {MapColumn("Description", &Item::Description),
                        MapColumn("ShortDescription", &Item::ShortDescription),
                        MapColumn("TaxableGroupID", &Item::TaxableGroupID),
                        MapColumn("BarCode", &Item::BarCode),
                        MapColumn("ReadQuantityFromScale", &Item::ReadQuantityFromScale),
                        MapColumn("UnitOfSaleID", &Item::UnitOfSaleID),
                        MapColumn("FamilyID", &Item::FamilyID),
                        MapColumn("StockManagement", &Item::StockManagement),
                        MapColumn("SupplierID", &Item::SupplierID),
                        MapColumn("ItemType", &Item::ItemType),
                        MapColumn("CostPrice", &Item::CostPrice),
                        MapColumn("Notes", &Item::Notes)},
                       {"item_prices"}}) {}

void ItemService::SaveChildren(const Item& item, const Variant& key) {
    // The five lines are always written whole, so a line never keeps a price from a former
    // version of the item that the caller did not see.
    Statement upsert(database_,
                     "INSERT INTO item_prices (ItemID, PriceLineID, PriceWithTax, PriceWithoutTax) "
                     "VALUES (?,?,?,?) ON CONFLICT (ItemID, PriceLineID) DO UPDATE SET "
                     "PriceWithTax=excluded.PriceWithTax, PriceWithoutTax=excluded.PriceWithoutTax");
    for (int line = 1; line <= 5; ++line) {
        const PriceLine& price = item.PriceLines[line - 1];
        upsert.Reset();
        upsert.Bind({key, Variant(static_cast<std::int32_t>(line)), Variant(price.PriceWithTax),
                     Variant(price.PriceWithoutTax)})
            .Run();
    }
}

void ItemService::LoadChildren(Item& item, const Variant& key) const {
    Statement prices(database_,
                     "SELECT PriceLineID, PriceWithTax, PriceWithoutTax FROM item_prices "
                     "WHERE ItemID=? ORDER BY PriceLineID");
    prices.Bind({key});
    while (prices.Step()) {
        if (PriceLine* line = item.FindPriceLine(prices.Column(0).ToInt32())) {
            line->PriceWithTax = prices.Column(1).ToDouble();
            line->PriceWithoutTax = prices.Column(2).ToDouble();
        }
    }
}

}  // namespace kitra::backoffice
