#include "backoffice/DatabaseCompaction.h"

#include <string>

namespace kitra::backoffice {

namespace {
// VACUUM rewrites the whole file, which costs as much as the file is large: it is worth it only
// when at least this share of the pages is free.
constexpr double kFreeShareWorthReclaiming = 0.10;

int PragmaValue(Database& database, const char* pragma) {
    Statement value(database, pragma);
    return value.Step() ? value.Column(0).ToInt32() : 0;
}
}  // namespace

void DatabaseCompaction::CompactDatabase() {
    // The compaction runs outside any transaction: the records grouped so far are committed.
    database_.CommitGroup();
    database_.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
    const int pages = PragmaValue(database_, "PRAGMA page_count");
    const int free = PragmaValue(database_, "PRAGMA freelist_count");
    if (pages > 0 && free >= kFreeShareWorthReclaiming * pages) {
        // VACUUM builds the new file as temporary data: on disk, not in memory, however large
        // the back office is. The connection keeps its temporary data in files, unless the
        // library's journal setting was refused (Database::Database).
        const int kept = PragmaValue(database_, "PRAGMA temp_store");
        database_.Exec("PRAGMA temp_store=FILE");
        const std::string back = "PRAGMA temp_store=" + std::to_string(kept);
        try {
            database_.Exec("VACUUM");
        } catch (...) {
            database_.Exec(back);
            throw;
        }
        database_.Exec(back);
        database_.Exec("PRAGMA wal_checkpoint(TRUNCATE)");
    }
}

}  // namespace kitra::backoffice
