#pragma once
// The back office's schema: its tables, created and upgraded by the program. The version lives
// in the file (PRAGMA user_version); each upgrade step is one script, run in one transaction.
// Every table is described for users in docs/backoffice-schema.md.
#include <string>
#include <vector>

#include "backoffice/Database.h"

namespace kitra::backoffice {

// The version this program writes; an older file is upgraded when it is opened.
inline constexpr int kSchemaVersion = 8;

// Brings the file up to kSchemaVersion, all steps or none. Fails with an Error for a file of a
// newer version than this program knows.
void UpgradeSchema(Database& database);

// The tables of the current schema, by name, in alphabetical order.
std::vector<std::string> SchemaTables();

}  // namespace kitra::backoffice
