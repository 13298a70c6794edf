#pragma once
// The back office's items: one row in `items` and five price lines in `item_prices`, written
// together in the save's one transaction.
#include "backoffice/MasterDataTable.h"
#include "host/IItemService.h"

namespace kitra::backoffice {

class ItemService final : public MasterDataTable<host::IItemService> {
public:
    explicit ItemService(Database& database);

protected:
    void SaveChildren(const host::Item& item, const Variant& key) override;
    void LoadChildren(host::Item& item, const Variant& key) const override;
};

}  // namespace kitra::backoffice
