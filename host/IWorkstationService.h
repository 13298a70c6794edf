#pragma once
// The host's workstations (the points of sale that documents are stamped with).
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct Workstation {
    std::int16_t WorkstationID = 0;
    std::string Description;
    // Where the documents made at the workstation move stock unless told otherwise.
    std::int16_t WarehouseID = 1;

    bool operator==(const Workstation&) const = default;
};

class IWorkstationService : public IMasterData<Workstation, std::int16_t> {};

}  // namespace kitra::host
