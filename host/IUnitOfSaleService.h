#pragma once
// The host's units of sale ("UN", "KG").
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct UnitOfSale {
    std::string UnitOfSaleID;
    std::string Description;

    bool operator==(const UnitOfSale&) const = default;
};

class IUnitOfSaleService : public IMasterData<UnitOfSale, std::string> {};

}  // namespace kitra::host
