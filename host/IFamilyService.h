#pragma once
// The host's item families: one tree in one table. A top-level family has parent 0; a child
// keeps its parent's key and description and its full path ("Bebidas\Sumos").
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct Family {
    double FamilyID = 0;
    std::string Description;
    std::string Description2;
    std::string FullPath;
    double ParentFamilyID = 0;
    std::string ParentDescription;
    double Discount = 0;                  // percent given on the family's items
    std::string UnitOfSaleID;             // the unit its items are sold in unless told otherwise
    double MaximumDiscountPercent = 100;  // the most discount a sale may give on its items

    bool operator==(const Family&) const = default;
};

class IFamilyService : public IMasterData<Family, double> {};

}  // namespace kitra::host
