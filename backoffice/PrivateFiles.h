#pragma once
// The back office keeps every restaurant's database password, the import logs and the books: its
// data folder and everything made in it are for the owner's eyes only (folders 0700, files 0600),
// whatever the umask of the process that makes them. Also what `check` says about an existing
// back office that others can read.
#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace kitra::backoffice {

// While it lives, files and folders the process makes are its owner's only (umask 077); the
// former umask comes back after. SQLite gives the -wal and -shm files the database's own mode,
// and the connector writes its log files with the process's umask, so this covers them too.
class OwnerOnlyFiles {
public:
    OwnerOnlyFiles();
    ~OwnerOnlyFiles();
    OwnerOnlyFiles(const OwnerOnlyFiles&) = delete;
    OwnerOnlyFiles& operator=(const OwnerOnlyFiles&) = delete;

private:
    mode_t former_;
};

// Makes the folder (and the missing ones above it) with mode 0700; a folder that was already
// there keeps its mode. Throws Error with `what` naming the folder ("a pasta de dados").
void MakePrivateFolder(const std::filesystem::path& folder, const std::string& what);

// Sets a file the back office made to 0600; an error is ignored (the file is the process's own,
// so only a file system without modes refuses, and there modes mean nothing).
void MakePrivateFile(const std::filesystem::path& file);

// One warning per part of the back office in the data folder (the folder, the database and its
// -wal and -shm, the log folder, the run lock) that the group or others may read or write, each
// with a command that closes it; the parts that are not there are left out. The database and
// the -wal and -shm files SQLite keeps beside it while it is open are one part, closed by one
// command that works whether those two are still there when it is pasted or not.
std::vector<std::string> AccessWarnings(const std::filesystem::path& dataFolder);

}  // namespace kitra::backoffice
