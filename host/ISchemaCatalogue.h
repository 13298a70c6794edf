#pragma once
// The host database's schema catalogue: which tables exist, and new tables described by their
// columns (with ADO type codes) and indexes.
#include <string>
#include <vector>

namespace kitra::host {

// The ADO type codes a column definition may carry.
namespace ado_type {
inline constexpr int kSmallInt = 2;       // 16-bit integer
inline constexpr int kInteger = 3;        // 32-bit integer
inline constexpr int kDouble = 5;         // double-precision number
inline constexpr int kDate = 7;           // date and time, to the second
inline constexpr int kBoolean = 11;
inline constexpr int kVarWChar = 202;     // text of at most `size` characters
inline constexpr int kLongVarWChar = 203; // text of any length
}  // namespace ado_type

struct ColumnDefinition {
    std::string name;
    int type = ado_type::kVarWChar;
    int size = 0;  // characters, for kVarWChar; ignored otherwise
};

struct IndexDefinition {
    std::string name;
    std::vector<std::string> columns;  // in key order
    bool primaryKey = false;           // at most one per table; its columns may not be empty
    bool unique = false;
};

struct TableDefinition {
    std::string name;
    std::vector<ColumnDefinition> columns;  // in table order
    std::vector<IndexDefinition> indexes;
};

class ISchemaCatalogue {
public:
    virtual ~ISchemaCatalogue() = default;
    // True when a table of that name exists (names compare without regard to letter case).
    virtual bool TableExists(const std::string& name) const = 0;
    // Creates the table with its columns and indexes, all or nothing; fails with an Error when
    // the table exists or the definition is not valid.
    virtual void AppendTable(const TableDefinition& table) = 0;
};

}  // namespace kitra::host
