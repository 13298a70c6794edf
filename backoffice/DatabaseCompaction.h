#pragma once
// Compaction of the back office: VACUUM rewrites the file without its free pages, and the WAL
// checkpoints around it fold the journal back into the file and truncate it, so the file on
// disk really shrinks.
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
