#pragma once
// The back office's SQL statement builder. Besides quoting names and binding values, it
// writes every value meant for a date column in the one form the back office stores dates in,
// "yyyy-mm-dd hh:mm:ss", whether it came as a date, as such a text, or as a text in the general
// date form: a date compares equal however the caller wrote it.
#include <string>

#include "backoffice/Database.h"
#include "host/ISqlStatementBuilder.h"

namespace kitra::backoffice {

class SqlStatementBuilder final : public host::ISqlStatementBuilder {
public:
    SqlStatementBuilder(Database& database, std::string generalDateForm)
        : database_(database), generalDateForm_(std::move(generalDateForm)) {}

    host::SqlStatement Insert(const std::string& table, const host::SqlFields& values) const override;
    host::SqlStatement Update(const std::string& table, const host::SqlFields& values,
                              const host::SqlFields& conditions) const override;
    host::SqlStatement Delete(const std::string& table,
                              const host::SqlFields& conditions) const override;
    host::SqlStatement Select(const std::string& table, const std::vector<std::string>& columns,
                              const host::SqlFields& conditions) const override;

private:
    // The value as it is bound for that column of that table.
    Variant Stored(const std::string& table, const host::SqlField& field) const;
    // " WHERE a=? AND b IS NULL", adding the values it binds.
    std::string Where(const std::string& table, const host::SqlFields& conditions,
                      std::vector<Variant>& parameters) const;
    bool IsDateColumn(const std::string& table, const std::string& column) const;

    Database& database_;
    std::string generalDateForm_;
};

}  // namespace kitra::backoffice
