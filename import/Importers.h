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

// Master data, in the order the run calls them: families come before their subfamilies and
// subfamilies before their items, so that what arrives together arrives whole.
bool ImportSalesmen(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant);
bool ImportCustomers(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant);
bool ImportFamilies(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant);
bool ImportSubfamilies(KitraExecutioner& engine, ado::Connection& connection,
                       Restaurant& restaurant);
bool ImportItems(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant);

// Documents: sales, credit sales and stock documents with their lines and payments.
bool ImportSaleDocuments(KitraExecutioner& engine, ado::Connection& connection,
                         Restaurant& restaurant);
// Cash drawer movements of their own: cash entrances, withdrawals and payments on account.
bool ImportCashMovements(KitraExecutioner& engine, ado::Connection& connection,
                         Restaurant& restaurant);
// Customer receipts that settle credit sales in the customer's current account.
bool ImportReceipts(KitraExecutioner& engine, ado::Connection& connection, Restaurant& restaurant);

// A restaurant subfamily's key in the host's family table is its code plus this, which keeps
// subfamilies apart from families there: subfamily 7 is host family 10007.
inline constexpr double kSubfamilyKeyOffset = 10000;

}  // namespace kitra
