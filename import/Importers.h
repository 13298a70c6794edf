#pragma once
// The importers a run calls for each restaurant, in their fixed order: master data first
// (salesmen, customers, families, subfamilies, items), then documents (sale documents, cash
// movements, receipts). Each takes the restaurant's not-yet-opened connection and its
// definition, opens the connection itself, and answers whether it ran to its end.
#include <vector>

#include "ado/Connection.h"
#include "settings/Restaurant.h"

namespace kitra {

class KitraExecutioner;

using ImporterFunction = bool (*)(KitraExecutioner& engine, ado::Connection& connection,
                                  Restaurant& restaurant);

struct ImporterStep {
    const char* name;
    ImporterFunction run;
    bool masterData;  // a failure sets the entity flag; otherwise the transaction flag
};

// The importers built so far, in run order.
const std::vector<ImporterStep>& ImporterOrder();

}  // namespace kitra
