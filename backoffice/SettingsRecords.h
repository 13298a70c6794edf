#pragma once
// What each restaurant's settings name in the back office: the document series its documents
// are numbered in, the workstation they are saved on, the warehouses their lines and stock go
// to and the supplier its items are given. An import over a record the back office lacks either
// stops at its first document ("Não existe a série") with the dates moved past what it left
// behind, or saves thousands of documents on a workstation or in a warehouse that is not there;
// so the host checks them before a run, and says which restaurant, attribute and record.
#include <string>
#include <vector>

#include "backoffice/Database.h"
#include "backoffice/SettingsDocument.h"

namespace kitra::backoffice {

// One text per record a restaurant names that the back office does not have (or, for a series,
// has inactive); empty when every one exists. A waste warehouse of 0 is none: the import does
// not use it.
std::vector<std::string> MissingRecordProblems(const Database& database,
                                               const std::vector<RestaurantSettings>& restaurants);

}  // namespace kitra::backoffice
