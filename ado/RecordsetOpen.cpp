// Recordset::Open for the restaurant database: the ODBC half of the recordset, kept apart from
// its in-memory half so that the host database's recordsets need no ODBC.
#include <utility>

#include "ado/Connection.h"
#include "ado/Odbc.h"
#include "ado/Recordset.h"
#include "core/Error.h"

namespace kitra::ado {

void Recordset::Open(const std::string& statement, Connection& connection) {
    if (open_) throw Error("Operation is not allowed when the object is open.", 3705);
    odbc::ResultRows result = connection.ReadAll(statement);
    *this = FromColumns(std::move(result.columns), std::move(result.values));
    position_ = 0;
    open_ = true;
}

}  // namespace kitra::ado
