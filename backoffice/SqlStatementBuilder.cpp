#include "backoffice/SqlStatementBuilder.h"

#include <fmt/format.h>

#include "core/DateTime.h"
#include "core/Text.h"

namespace kitra::backoffice {

using host::SqlField;
using host::SqlFields;
using host::SqlStatement;

bool SqlStatementBuilder::IsDateColumn(const std::string& table, const std::string& column) const {
    Statement type(database_, "SELECT type FROM pragma_table_info(?) WHERE name=? COLLATE NOCASE");
    type.Bind({Variant(table), Variant(column)});
    if (!type.Step()) return false;
    const std::string declared = FoldCase(type.ColumnText(0));
    return declared == "DATETIME" || declared == "DATE";
}

Variant SqlStatementBuilder::Stored(const std::string& table, const SqlField& field) const {
    const Variant& value = field.value;
    if (value.IsNull() || value.IsEmpty() || !IsDateColumn(table, field.column)) return value;
    if (value.GetType() == Variant::Type::Date) return Variant(FormatIsoDateTime(value.ToDate()));
    if (const std::string* text = value.AsString()) {
        if (auto date = ParseIsoDateTime(Trim(*text))) return Variant(FormatIsoDateTime(*date));
        if (auto date = ParseDatePattern(Trim(*text), generalDateForm_))
            return Variant(FormatIsoDateTime(*date));
        throw errors::TypeMismatch();
    }
    if (value.IsNumeric()) return Variant(FormatIsoDateTime(DateTime::FromSerial(value.ToDouble())));
    throw errors::TypeMismatch();
}

std::string SqlStatementBuilder::Where(const std::string& table, const SqlFields& conditions,
                                       std::vector<Variant>& parameters) const {
    std::string where;
    for (const SqlField& condition : conditions) {
        where += where.empty() ? " WHERE " : " AND ";
        where += QuoteIdentifier(condition.column);
        if (condition.value.IsNull() || condition.value.IsEmpty()) {
            where += " IS NULL";
        } else {
            where += "=?";
            parameters.push_back(Stored(table, condition));
        }
    }
    return where;
}

SqlStatement SqlStatementBuilder::Insert(const std::string& table, const SqlFields& values) const {
    if (values.empty())
        throw Error(fmt::format("Não há valores a inserir na tabela '{}'.", table));
    SqlStatement statement;
    std::string columns, placeholders;
    for (const SqlField& field : values) {
        columns += (columns.empty() ? "" : ",") + QuoteIdentifier(field.column);
        placeholders += placeholders.empty() ? "?" : ",?";
        statement.parameters.push_back(Stored(table, field));
    }
    statement.text =
        fmt::format("INSERT INTO {} ({}) VALUES ({})", QuoteIdentifier(table), columns, placeholders);
    return statement;
}

SqlStatement SqlStatementBuilder::Update(const std::string& table, const SqlFields& values,
                                         const SqlFields& conditions) const {
    if (values.empty())
        throw Error(fmt::format("Não há valores a alterar na tabela '{}'.", table));
    SqlStatement statement;
    std::string assignments;
    for (const SqlField& field : values) {
        assignments += (assignments.empty() ? "" : ",") + QuoteIdentifier(field.column) + "=?";
        statement.parameters.push_back(Stored(table, field));
    }
    const std::string quotedTable = QuoteIdentifier(table);
    statement.text = fmt::format("UPDATE {} SET {}{}", quotedTable, assignments,
                                 Where(table, conditions, statement.parameters));
    return statement;
}

SqlStatement SqlStatementBuilder::Delete(const std::string& table,
                                         const SqlFields& conditions) const {
    SqlStatement statement;
    const std::string quotedTable = QuoteIdentifier(table);
    statement.text =
        fmt::format("DELETE FROM {}{}", quotedTable, Where(table, conditions, statement.parameters));
    return statement;
}

SqlStatement SqlStatementBuilder::Select(const std::string& table,
                                         const std::vector<std::string>& columns,
                                         const SqlFields& conditions) const {
    SqlStatement statement;
    std::string list;
    for (const std::string& column : columns)
        list += (list.empty() ? "" : ",") + QuoteIdentifier(column);
    const std::string quotedTable = QuoteIdentifier(table);
    statement.text = fmt::format("SELECT {} FROM {}{}", list.empty() ? "*" : list, quotedTable,
                                 Where(table, conditions, statement.parameters));
    return statement;
}

}  // namespace kitra::backoffice
