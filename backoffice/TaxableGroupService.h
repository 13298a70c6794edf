#pragma once
// The back office's taxable groups: one row in `taxable_groups` and one row per tax region in
// `taxable_group_rates`, replaced together by a save.
#include "backoffice/MasterDataTable.h"
#include "host/ITaxableGroupService.h"

namespace kitra::backoffice {

class TaxableGroupService final : public MasterDataTable<host::ITaxableGroupService> {
public:
    explicit TaxableGroupService(Database& database);

protected:
    void SaveChildren(const host::TaxableGroup& group, const Variant& key) override;
    void LoadChildren(host::TaxableGroup& group, const Variant& key) const override;
};

}  // namespace kitra::backoffice
