#pragma once
// Compaction of the host database: gives back the space that deleted rows left behind.
namespace kitra::host {

class IDatabaseCompaction {
public:
    virtual ~IDatabaseCompaction() = default;
    // Rewrites the database file compactly. Can take a while on a large database.
    virtual void CompactDatabase() = 0;
};

}  // namespace kitra::host
