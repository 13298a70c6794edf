#include "backoffice/TaxableGroupService.h"

namespace kitra::backoffice {

using namespace host;

TaxableGroupService::TaxableGroupService(Database& database)
    : MasterDataTable(database, {"taxable_groups",
                                 "a taxa de IVA",
                                 MapColumn("TaxableGroupID", &TaxableGroup::TaxableGroupID),
                                 {MapColumn("Description", &TaxableGroup::Description)},
                                 {"taxable_group_rates"}}) {}

void TaxableGroupService::SaveChildren(const TaxableGroup& group, const Variant& key) {
    Statement clear(database_, "DELETE FROM taxable_group_rates WHERE TaxableGroupID=?");
    clear.Bind({key}).Run();
    Statement insert(database_,
                     "INSERT INTO taxable_group_rates (TaxableGroupID, CountryID, TaxRegionID, "
                     "Rate) VALUES (?,?,?,?)");
    for (const TaxableGroupRate& rate : group.Rates) {
        insert.Reset();
        insert.Bind({key, Variant(rate.CountryID), Variant(rate.TaxRegionID), Variant(rate.Rate)})
            .Run();
    }
}

void TaxableGroupService::LoadChildren(TaxableGroup& group, const Variant& key) const {
    Statement rates(database_,
                    "SELECT CountryID, TaxRegionID, Rate FROM taxable_group_rates "
                    "WHERE TaxableGroupID=? ORDER BY CountryID, TaxRegionID");
    rates.Bind({key});
    group.Rates.clear();
    while (rates.Step()) {
        group.Rates.push_back(
            {rates.ColumnText(0), rates.Column(1).ToInt32(), rates.Column(2).ToDouble()});
    }
}

}  // namespace kitra::backoffice
