#pragma once
// The host's items, keyed by text. Every item has the five price lines 1 to 5, each a price
// with tax and the same price without it.
#include <array>
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct PriceLine {
    int LineNumber = 0;  // 1 to 5
    double PriceWithTax = 0;
    double PriceWithoutTax = 0;

    bool operator==(const PriceLine&) const = default;
};

struct Item {
    std::string ItemID;
    std::string Description;
    std::string ShortDescription;
    std::int16_t TaxableGroupID = 0;
    std::string BarCode;
    // Sold by weight: its quantity comes from a scale (in thousandths from a restaurant).
    bool ReadQuantityFromScale = false;
    std::string UnitOfSaleID;
    std::int32_t FamilyID = 0;
    bool StockManagement = false;
    std::array<PriceLine, 5> PriceLines{{{1}, {2}, {3}, {4}, {5}}};
    double SupplierID = 0;
    std::int16_t ItemType = 0;
    // Kept by the back office's users; an import that updates the item leaves them as they are.
    double CostPrice = 0;  // what one unit costs to buy, without VAT
    std::string Notes;

    // Price line `number` (1 to 5), or nullptr for any other number.
    PriceLine* FindPriceLine(int number) {
        return number >= 1 && number <= 5 ? &PriceLines[number - 1] : nullptr;
    }

    bool operator==(const Item&) const = default;
};

class IItemService : public IMasterData<Item, std::string> {};

}  // namespace kitra::host
