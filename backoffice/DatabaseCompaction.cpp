#include "backoffice/DatabaseCompaction.h"

namespace kitra::backoffice {

void DatabaseCompaction::CompactDatabase() {
    database_.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
    database_.Exec("VACUUM");
    database_.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
}

}  // namespace kitra::backoffice
