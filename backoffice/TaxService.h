#pragma once
// The back office's tax service over the taxable groups' regional rates. A price without tax
// is price / (1 + rate / 100), a price with tax is price * (1 + rate / 100), both rounded to
// cents (RoundMoney). Rates compare within a millionth of a percent, so 6.5 stored and 6.5
// computed match; when two groups have the same rate the lower key wins.
#include "backoffice/Database.h"
#include "host/ITaxService.h"

namespace kitra::backoffice {

class TaxService final : public host::ITaxService {
public:
    explicit TaxService(Database& database) : database_(database) {}
    std::int16_t TaxableGroupForRate(double rate, const host::TaxContext& context) const override;
    double ValueWithTaxableGroup(double amount, std::int32_t taxableGroupID,
                                 const host::TaxContext& context,
                                 host::TaxCalculation calculation) const override;

private:
    Database& database_;
};

// The taxable group's rate in the tax context; fails with an Error naming both when it has none.
double TaxableGroupRate(const Database& database, std::int32_t taxableGroupID,
                        const host::TaxContext& context);

}  // namespace kitra::backoffice
