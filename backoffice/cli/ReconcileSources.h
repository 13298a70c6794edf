#pragma once
// The two sides reconcile compares, each read into the form the back office keeps documents
// in: the restaurant's transactions, cash movements and receipts (with reconcile's own SELECT
// statements, joined as the import's statements join them, so that both see the same rows),
// converted as the import converts them; and the back office's documents of the restaurant's
// series.
#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "ado/Connection.h"
#include "backoffice/Database.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/cli/Reconciliation.h"

namespace kitra::backoffice::cli::reconcile {

// The document's own date the comparison is limited to, both ends included, as
// "yyyy-mm-dd hh:mm:ss"; an empty end is open.
struct Period {
    std::string from;
    std::string to;
};

// The document types of the settings' root, which the settings of each restaurant do not carry.
DocumentTypes DocumentTypesOf(const SettingsDocument& settings);

// The customers and salesmen the back office has: a document of another customer or salesman is
// imported with 0.
struct KnownCodes {
    std::set<std::int32_t> customers;
    std::set<std::int32_t> salesmen;
};
KnownCodes ReadKnownCodes(const Database& database);

// The credit sales of the series that receipts are weighed against, whatever their date.
CreditSales ReadCreditSales(const Database& database, const DocumentTypes& types, const std::string& series);

using Records = std::array<std::vector<Record>, 3>;  // by Kind

Records ReadRestaurant(ado::Connection& connection, const DocumentTypes& types,
                       const Period& period, const KnownCodes& known);
Records ReadBackOffice(const Database& database, const DocumentTypes& types,
                       const std::string& series, const Period& period);

// The import's own rules for the restaurant's document numbers and salesman uids
// (core/RestaurantCodes.h), in the back office's whole numbers: a number that does not fit is 0.
std::int32_t NumberFromDocumentId(const std::string& documentId);
std::int32_t SalesmanFromUid(std::int32_t code);

}  // namespace kitra::backoffice::cli::reconcile
