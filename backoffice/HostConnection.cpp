#include "backoffice/HostConnection.h"

namespace kitra::backoffice {

long HostConnection::Execute(const host::SqlStatement& statement) {
    Statement prepared(database_, statement.text);
    prepared.Bind(statement.parameters).Run();
    return database_.Changes();
}

ado::Recordset HostConnection::Query(const host::SqlStatement& statement) {
    Statement prepared(database_, statement.text);
    prepared.Bind(statement.parameters);
    return prepared.ReadAll();
}

}  // namespace kitra::backoffice
