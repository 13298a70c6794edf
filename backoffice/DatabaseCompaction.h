#pragma once
// Compaction of the back office: the WAL checkpoint folds the journal back into the file and
// truncates it; when a tenth of the file or more is free pages, VACUUM rewrites it without them
// (and a second checkpoint truncates the journal again), so the file on disk really shrinks. A
// file with fewer free pages is left as it is: rewriting it would cost as much as the file is
// large and give back almost nothing.
#include "backoffice/Database.h"
#include "host/IDatabaseCompaction.h"

namespace kitra::backoffice {

class DatabaseCompaction final : public host::IDatabaseCompaction {
public:
    explicit DatabaseCompaction(Database& database) : database_(database) {}
    void CompactDatabase() override;

private:
    Database& database_;
};

}  // namespace kitra::backoffice
