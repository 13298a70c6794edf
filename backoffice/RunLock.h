#pragma once
// The lock a back office's import run holds from its start to its end: a lock file beside
// backoffice.sqlite, locked with flock(). A second run refuses at once instead of importing the
// same restaurants again, and the commands that change the connector's settings or its log
// (whose changes a run in progress would overwrite when it saves its own) refuse too. The
// system lets go of the lock when the process ends, however it ends.
#include <filesystem>
#include <string>

namespace kitra::backoffice {

inline constexpr const char* kRunLockFileName = "backoffice.run-lock";

class RunLock {
public:
    // Takes the lock of the back office in `dataFolder` without waiting; fails with an Error
    // that says a run holds it (and which process) when another program has it. `what` is the
    // command that asks, for the message: "a importação", "'settings load'", ...
    RunLock(const std::filesystem::path& dataFolder, const std::string& what);
    ~RunLock();
    RunLock(const RunLock&) = delete;
    RunLock& operator=(const RunLock&) = delete;

private:
    int descriptor_ = -1;
};

}  // namespace kitra::backoffice
