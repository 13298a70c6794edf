#pragma once
// The host's sales zones: where customers are, for taxes and currency.
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

namespace zone_type {
inline constexpr std::int16_t kNational = 0;
inline constexpr std::int16_t kEuropeanUnion = 1;
inline constexpr std::int16_t kOutsideEuropeanUnion = 2;
}  // namespace zone_type

struct SalesZone {
    std::int32_t SalesZoneID = 0;
    std::string Description;
    std::string CountryID;
    std::int32_t TaxRegionID = 0;
    std::string CurrencyID;
    std::int16_t ZoneType = zone_type::kNational;

    bool operator==(const SalesZone&) const = default;
};

class ISalesZoneService : public IMasterData<SalesZone, std::int32_t> {};

}  // namespace kitra::host
