#pragma once
// The host's suppliers. Numeric keys are whole numbers (see ISalesmanService.h).
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct Supplier {
    double SupplierID = 0;
    std::string OrganizationName;
    std::string FederalTaxID;

    bool operator==(const Supplier&) const = default;
};

class ISupplierService : public IMasterData<Supplier, double> {};

}  // namespace kitra::host
