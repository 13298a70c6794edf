#pragma once
// The host's shared database connection: the one connection through which components run
// statements on the host database. Every statement commits on its own.
#include "ado/Recordset.h"
#include "host/SqlStatement.h"

namespace kitra::host {

class IHostConnection {
public:
    virtual ~IHostConnection() = default;
    // Runs a statement that returns no rows; answers how many rows it changed.
    virtual long Execute(const SqlStatement& statement) = 0;
    // Runs a query and reads every row into an open, client-side recordset.
    virtual ado::Recordset Query(const SqlStatement& statement) = 0;
};

}  // namespace kitra::host
