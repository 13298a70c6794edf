#pragma once
// The host's SQL statement builder: composes statements on one table from column names and
// values. Values are bound as parameters, never written into the text; table and column names
// must be plain identifiers (a letter or "_", then letters, digits or "_") and are quoted.
// A condition list is a conjunction of equalities; a null value stands for "IS NULL"; an empty
// list matches every row. A value for a date column may be a date, or a text in the form
// "yyyy-mm-dd hh:mm:ss" or in the host's general date form.
#include <string>
#include <vector>

#include "host/SqlStatement.h"

namespace kitra::host {

class ISqlStatementBuilder {
public:
    virtual ~ISqlStatementBuilder() = default;
    virtual SqlStatement Insert(const std::string& table, const SqlFields& values) const = 0;
    virtual SqlStatement Update(const std::string& table, const SqlFields& values,
                                const SqlFields& conditions) const = 0;
    virtual SqlStatement Delete(const std::string& table, const SqlFields& conditions) const = 0;
    // The columns named (all of them when the list is empty) of the rows that meet the conditions.
    virtual SqlStatement Select(const std::string& table, const std::vector<std::string>& columns,
                                const SqlFields& conditions) const = 0;
};

}  // namespace kitra::host
