#pragma once
// The back office's schema catalogue: tables that components define for themselves (the import
// log table, for one) are created from ADO-typed definitions.
//   202 (text of n characters) -> NVARCHAR(n) with a CHECK on the length, as the type promises
//   203 (long text)            -> NTEXT
//   7   (date and time)        -> DATETIME, kept as "yyyy-mm-dd hh:mm:ss" text
//   2, 3 (integers)            -> SMALLINT, INTEGER;  5 -> DOUBLE;  11 -> BOOLEAN (0 or 1)
// A primary-key index becomes the table's PRIMARY KEY constraint under the index's name, and
// its columns are NOT NULL; other indexes become CREATE [UNIQUE] INDEX.
// SQLite takes no parameters in CREATE statements, so only checked identifiers (quoted) and
// the sizes (whole numbers) are written into them.
#include "backoffice/Database.h"
#include "host/ISchemaCatalogue.h"

namespace kitra::backoffice {

class SchemaCatalogue final : public host::ISchemaCatalogue {
public:
    explicit SchemaCatalogue(Database& database) : database_(database) {}
    bool TableExists(const std::string& name) const override;
    void AppendTable(const host::TableDefinition& table) override;

private:
    Database& database_;
};

}  // namespace kitra::backoffice
