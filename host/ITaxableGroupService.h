#pragma once
// The host's taxable groups (VAT classes). A group has one rate per tax region: the normal
// rate is 23 % on the mainland and lower in the Azores and Madeira.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/ICompanyContext.h"
#include "host/IMasterData.h"

namespace kitra::host {

struct TaxableGroupRate {
    std::string CountryID;
    std::int32_t TaxRegionID = 0;
    double Rate = 0;  // percent

    bool operator==(const TaxableGroupRate&) const = default;
};

struct TaxableGroup {
    std::int16_t TaxableGroupID = 0;
    std::string Description;
    std::vector<TaxableGroupRate> Rates;  // saved whole: a save replaces the group's rates

    // The group's rate in the context, if it has one there.
    std::optional<double> RateIn(const TaxContext& context) const {
        for (const auto& r : Rates) {
            if (r.CountryID == context.CountryID && r.TaxRegionID == context.TaxRegionID)
                return r.Rate;
        }
        return std::nullopt;
    }

    bool operator==(const TaxableGroup&) const = default;
};

class ITaxableGroupService : public IMasterData<TaxableGroup, std::int16_t> {};

}  // namespace kitra::host
