#include "backoffice/SchemaCatalogue.h"

#include <algorithm>
#include <set>

#include <fmt/format.h>

#include "core/Text.h"

namespace kitra::backoffice {
namespace {

using host::ColumnDefinition;
using host::IndexDefinition;
using host::TableDefinition;
namespace ado_type = host::ado_type;

std::string ColumnType(const ColumnDefinition& column) {
    switch (column.type) {
        case ado_type::kVarWChar:
            if (column.size <= 0) {
                throw Error(fmt::format("A coluna '{}' precisa de um tamanho maior do que 0.",
                                        column.name));
            }
            return fmt::format("NVARCHAR({:d}) CHECK (length({}) <= {:d})", column.size,
                               QuoteIdentifier(column.name), column.size);
        case ado_type::kLongVarWChar:
            return "NTEXT";
        case ado_type::kDate:
            return "DATETIME";
        case ado_type::kSmallInt:
            return "SMALLINT";
        case ado_type::kInteger:
            return "INTEGER";
        case ado_type::kDouble:
            return "DOUBLE";
        case ado_type::kBoolean:
            return "BOOLEAN";
        default:
            throw Error(fmt::format("O tipo {:d} da coluna '{}' não é suportado.", column.type,
                                    column.name));
    }
}

std::string ColumnList(const IndexDefinition& index) {
    std::string list;
    for (const auto& column : index.columns) list += (list.empty() ? "" : ",") + QuoteIdentifier(column);
    return list;
}

}  // namespace

bool SchemaCatalogue::TableExists(const std::string& name) const {
    Statement exists(database_,
                     "SELECT 1 FROM sqlite_schema WHERE type='table' AND name=? COLLATE NOCASE");
    exists.Bind({Variant(name)});
    return exists.Step();
}

void SchemaCatalogue::AppendTable(const TableDefinition& table) {
    const std::string tableName = QuoteIdentifier(table.name);
    if (table.columns.empty())
        throw Error(fmt::format("A tabela '{}' não tem colunas.", table.name));

    std::set<std::string> columnNames;
    for (const auto& column : table.columns) {
        QuoteIdentifier(column.name);
        if (!columnNames.insert(FoldCase(column.name)).second)
            throw Error(fmt::format("A coluna '{}' aparece duas vezes.", column.name));
    }
    const IndexDefinition* primaryKey = nullptr;
    for (const auto& index : table.indexes) {
        QuoteIdentifier(index.name);
        if (index.columns.empty())
            throw Error(fmt::format("O índice '{}' não tem colunas.", index.name));
        for (const auto& column : index.columns) {
            if (!columnNames.count(FoldCase(column)))
                throw Error(fmt::format("O índice '{}' usa a coluna '{}', que a tabela não tem.",
                                        index.name, column));
        }
        if (index.primaryKey) {
            if (primaryKey != nullptr)
                throw Error(fmt::format("A tabela '{}' só pode ter uma chave primária.", table.name));
            primaryKey = &index;
        }
    }
    const auto inPrimaryKey = [&](const std::string& column) {
        return primaryKey != nullptr &&
               std::any_of(primaryKey->columns.begin(), primaryKey->columns.end(),
                           [&](const std::string& key) { return EqualsNoCase(key, column); });
    };

    std::string create = fmt::format("CREATE TABLE {} (", tableName);
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        const auto& column = table.columns[i];
        create += fmt::format("{}{} {}{}", i == 0 ? "" : ", ", QuoteIdentifier(column.name),
                              ColumnType(column), inPrimaryKey(column.name) ? " NOT NULL" : "");
    }
    if (primaryKey != nullptr) {
        create += fmt::format(", CONSTRAINT {} PRIMARY KEY ({})", QuoteIdentifier(primaryKey->name),
                              ColumnList(*primaryKey));
    }
    create += ")";

    Transaction transaction(database_);
    if (TableExists(table.name))
        throw Error(fmt::format("A tabela '{}' já existe.", table.name));
    database_.Exec(create);
    for (const auto& index : table.indexes) {
        if (index.primaryKey) continue;
        database_.Exec(fmt::format("CREATE {}INDEX {} ON {} ({})", index.unique ? "UNIQUE " : "",
                                   QuoteIdentifier(index.name), tableName, ColumnList(index)));
    }
    transaction.Commit();
}

}  // namespace kitra::backoffice
