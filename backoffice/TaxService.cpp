#include "backoffice/TaxService.h"

#include <fmt/format.h>

#include "backoffice/Money.h"
#include "core/Numbers.h"

namespace kitra::backoffice {

std::int16_t TaxService::TaxableGroupForRate(double rate, const host::TaxContext& context) const {
    Statement group(database_,
                    "SELECT TaxableGroupID FROM taxable_group_rates "
                    "WHERE CountryID=? AND TaxRegionID=? AND abs(Rate-?)<1e-6 "
                    "ORDER BY TaxableGroupID LIMIT 1");
    group.Bind({Variant(context.CountryID), Variant(context.TaxRegionID), Variant(rate)});
    if (!group.Step()) {
        throw Error(fmt::format("Não existe nenhuma taxa de IVA de {}% na região fiscal {}/{}.",
                                FormatHostNumber(rate), context.CountryID, context.TaxRegionID));
    }
    return group.Column(0).ToInt16();
}

double TaxService::ValueWithTaxableGroup(double amount, std::int32_t taxableGroupID,
                                         const host::TaxContext& context,
                                         host::TaxCalculation calculation) const {
    const double factor = 1.0 + TaxableGroupRate(database_, taxableGroupID, context) / 100.0;
    return RoundMoney(calculation == host::TaxCalculation::RemoveTax ? amount / factor
                                                                     : amount * factor);
}

double TaxableGroupRate(const Database& database, std::int32_t taxableGroupID,
                        const host::TaxContext& context) {
    Statement rate(database,
                   "SELECT Rate FROM taxable_group_rates "
                   "WHERE TaxableGroupID=? AND CountryID=? AND TaxRegionID=?");
    rate.BindValues(taxableGroupID, context.CountryID, context.TaxRegionID);
    if (!rate.Step()) {
        throw Error(fmt::format("A taxa de IVA {} não tem valor na região fiscal {}/{}.",
                                taxableGroupID, context.CountryID, context.TaxRegionID));
    }
    return rate.Column(0).ToDouble();
}

}  // namespace kitra::backoffice
