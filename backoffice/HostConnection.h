#pragma once
// The back office's shared connection as components see it: statements with bound values on
// the back office's one SQLite connection.
#include "backoffice/Database.h"
#include "host/IHostConnection.h"

namespace kitra::backoffice {

class HostConnection final : public host::IHostConnection {
public:
    explicit HostConnection(Database& database) : database_(database) {}
    long Execute(const host::SqlStatement& statement) override;
    ado::Recordset Query(const host::SqlStatement& statement) override;

private:
    Database& database_;
};

}  // namespace kitra::backoffice
