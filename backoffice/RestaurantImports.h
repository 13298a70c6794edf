#pragma once
// Each restaurant's last import as the host ran it: the second it began and the import dates it
// left. The connector moves a restaurant's dates to the moment its import ends, cut to the
// second, and the next import selects only what changed strictly later; a change made while the
// import went on (after its statement had read the rows) or in the second it ended would never
// be selected again. So the host starts each restaurant's next import from one second before the
// last one began: what changed meanwhile comes again and replaces its earlier version (imports
// are exact, so what did not change is saved as it was). Kept in table restaurant_imports.
#include <optional>
#include <string>

#include "backoffice/Database.h"
#include "backoffice/SettingsDocument.h"
#include "core/DateTime.h"

namespace kitra::backoffice {

struct RestaurantImport {
    std::string name;
    DateTime startedAt;            // the second its import began
    std::string entitiesLeft;      // the ImportDateEntities that import left
    std::string transactionsLeft;  // the ImportDateTransactions that import left
};

// The two dates a restaurant's next import selects from.
struct NextImportDates {
    std::string entities;
    std::string transactions;
};

class RestaurantImports {
public:
    explicit RestaurantImports(Database& database) : database_(database) {}

    // The restaurant's last import (names compared as the import compares them); nothing when
    // the host has run none.
    std::optional<RestaurantImport> Last(const std::string& restaurant) const;
    // Keeps `import` as the restaurant's last one, replacing the one before.
    void Record(const RestaurantImport& import);

private:
    Database& database_;
};

// Where the restaurant's next import starts: each of its dates that is still the one its last
// import left goes back to one second before that import began; a date moved since (by 'state
// set' or a load with --dates-from-file) is the administrator's and stays, and a date is never
// moved forward.
NextImportDates NextImportFrom(const RestaurantSettings& restaurant,
                               const std::optional<RestaurantImport>& last);

// One second before the moment, "yyyy-mm-dd hh:mm:ss".
std::string SecondBefore(const DateTime& moment);

}  // namespace kitra::backoffice
