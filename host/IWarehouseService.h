#pragma once
// The host's warehouses (stock locations).
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct Warehouse {
    std::int16_t WarehouseID = 0;
    std::string Description;

    bool operator==(const Warehouse&) const = default;
};

class IWarehouseService : public IMasterData<Warehouse, std::int16_t> {};

}  // namespace kitra::host
