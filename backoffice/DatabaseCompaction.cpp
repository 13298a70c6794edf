#include "backoffice/DatabaseCompaction.h"

namespace kitra::backoffice {

void DatabaseCompaction::CompactDatabase() {
    // The compaction runs outside any transaction: the records grouped so far are committed.
    database_.CommitGroup();
    database_.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
    database_.Exec("VACUUM");
    database_.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
}

}  // namespace kitra::backoffice
