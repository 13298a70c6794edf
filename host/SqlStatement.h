#pragma once
// A statement for the host database: SQL text with "?" placeholders and the values bound to
// them, in order. Values never become part of the text.
#include <string>
#include <vector>

#include "core/Variant.h"

namespace kitra::host {

struct SqlStatement {
    std::string text;
    std::vector<Variant> parameters;

    SqlStatement() = default;
    // A fixed statement with no values, e.g. "DELETE FROM Kitra2Log".
    SqlStatement(std::string sql) : text(std::move(sql)) {}
    SqlStatement(std::string sql, std::vector<Variant> values)
        : text(std::move(sql)), parameters(std::move(values)) {}
};

// A column and a value: a value to write, or an equality that a row must meet.
struct SqlField {
    std::string column;
    Variant value;
};

using SqlFields = std::vector<SqlField>;

}  // namespace kitra::host
