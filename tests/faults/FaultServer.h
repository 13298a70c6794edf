#pragma once
// The fault suite's own private MariaDB server (ctest fixture "mariadb_faults"), which a test may
// kill, freeze and resume without disturbing the server that the rest of the suite shares. A
// test that leaves it dead or frozen does not harm the next: Ensure brings it back on its port.
#include <sys/types.h>

#include <atomic>
#include <string>

#include "tests/support/MariaDbServer.h"

namespace kitra::test {

class FaultServer {
public:
    FaultServer();
    // Resumes a frozen server and lets go of any table lock still held.
    ~FaultServer();
    FaultServer(const FaultServer&) = delete;
    FaultServer& operator=(const FaultServer&) = delete;

    // Starts the server again (same folder, same port) when it is not running, and resumes it
    // when it is frozen.
    void Ensure();

    const MariaDbServer& Info() const { return info_; }

    // SIGKILL, as a crash or a pulled plug: returns once the process is gone.
    void Kill();
    // SIGSTOP: the process keeps its sockets but answers nothing until Resume (SIGCONT).
    void Freeze();
    void Resume();

    // Holds a write lock on the table from another connection, so that the next statement that
    // reads it waits on the server with its query sent; released by ReleaseLock.
    void HoldTableLock(const std::string& database, const std::string& table);
    void ReleaseLock();
    // Waits until a statement of the connector waits for that lock (at most 30 s).
    bool WaitForStatementOnLock(const std::string& table) const;

private:
    void Read();
    // Waits until a killed process is gone (at most 6 s).
    void WaitUntilGone() const;

    std::string folder_;
    MariaDbServer info_;
    pid_t pid_ = 0;
    std::atomic<bool> frozen_ = false;
    // Set by Kill, which a test may call from another thread: Ensure then waits for the old
    // process to be gone before it starts a new one.
    std::atomic<bool> killed_ = false;
    pid_t lockHolder_ = 0;
};

}  // namespace kitra::test
