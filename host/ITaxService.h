#pragma once
// The host's tax service: which taxable group carries a rate, and what an amount is worth once
// a taxable group's tax is taken out of it (or put into it).
#include <cstdint>

#include "host/ICompanyContext.h"

namespace kitra::host {

enum class TaxCalculation {
    RemoveTax = 0,  // the amount includes tax: answer the amount without it
    AddTax = 1,     // the amount excludes tax: answer the amount with it
};

class ITaxService {
public:
    virtual ~ITaxService() = default;
    // The taxable group whose rate in the context is `rate` (percent); fails with an Error when
    // no group has that rate there.
    virtual std::int16_t TaxableGroupForRate(double rate, const TaxContext& context) const = 0;
    // The amount with the group's tax in the context taken out or put in, rounded as the host
    // rounds money; fails with an Error for a group that has no rate in the context.
    virtual double ValueWithTaxableGroup(double amount, std::int32_t taxableGroupID,
                                         const TaxContext& context,
                                         TaxCalculation calculation) const = 0;
};

}  // namespace kitra::host
