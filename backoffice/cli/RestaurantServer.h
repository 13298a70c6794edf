#pragma once
// A restaurant's database as the import reaches it: the ODBC connection string the run builds
// from the restaurant's settings, and what in those settings keeps a command from reaching the
// server they name. The commands that look at a restaurant without importing (check, reconcile)
// connect through here, so they see the server exactly as the next run will.
#include <string>
#include <vector>

#include "ado/Connection.h"
#include "backoffice/SettingsDocument.h"

namespace kitra::backoffice::cli {

// The connection string exactly as the run builds it.
std::string RestaurantConnectionString(const RestaurantSettings& restaurant);

// A connection value that would cut the connection string elsewhere, an import date that is not
// "yyyy-mm-dd hh:mm:ss": one text per problem, empty when the settings can reach the server.
std::vector<std::string> RestaurantSettingsProblems(const RestaurantSettings& restaurant);

// An open connection to the restaurant's database; fails with the driver's own reason.
ado::Connection ConnectToRestaurant(const RestaurantSettings& restaurant);

}  // namespace kitra::backoffice::cli
