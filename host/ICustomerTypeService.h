#pragma once
// The host's customer types: a class of customers and the price line they pay.
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct CustomerType {
    std::int32_t CustomerTypeID = 0;
    std::string Description;
    std::int16_t PriceLineID = 1;

    bool operator==(const CustomerType&) const = default;
};

class ICustomerTypeService : public IMasterData<CustomerType, std::int32_t> {};

}  // namespace kitra::host
