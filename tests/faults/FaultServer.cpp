#include "tests/faults/FaultServer.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "tests/support/Process.h"

extern char** environ;

namespace kitra::test {
namespace {

using namespace std::chrono_literals;

std::string FolderFromEnvironment() {
    const char* folder = std::getenv("KITRA_FAULTS_MARIADB_DIR");
    if (folder == nullptr || *folder == '\0') {
        throw std::runtime_error(
            "KITRA_FAULTS_MARIADB_DIR is not set: run the fault tests through ctest (fixture "
            "\"mariadb_faults\"), or start a server with tools/mariadb start DIR and set it to DIR");
    }
    return folder;
}

std::string ValueIn(const std::string& envFile, const std::string& key) {
    std::ifstream in(envFile);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind(key + "=", 0) == 0) return line.substr(key.size() + 1);
    }
    throw std::runtime_error(envFile + " has no " + key);
}

bool Alive(pid_t pid) { return pid > 0 && kill(pid, 0) == 0; }

// Whether every thread of the process is stopped. A stop signal reaches each thread only when
// that thread next runs, so on a busy machine a thread may still answer a statement just after
// kill() returned.
bool EveryThreadStopped(pid_t pid) {
    std::error_code error;
    const std::filesystem::path tasks = "/proc/" + std::to_string(pid) + "/task";
    bool any = false;
    for (const auto& task : std::filesystem::directory_iterator(tasks, error)) {
        std::ifstream in(task.path() / "stat");
        std::string stat;
        std::getline(in, stat);
        // The state follows the command's closing parenthesis: "pid (comm) S ...".
        const std::size_t close = stat.rfind(')');
        if (close == std::string::npos || close + 2 >= stat.size()) continue;
        const char state = stat[close + 2];
        if (state != 'T' && state != 't') return false;
        any = true;
    }
    return any && !error;
}

}  // namespace

FaultServer::FaultServer() : folder_(FolderFromEnvironment()) { Ensure(); }

FaultServer::~FaultServer() {
    ReleaseLock();
    if (frozen_) Resume();
}

void FaultServer::Read() {
    const std::string envFile = folder_ + "/mariadb.env";
    info_ = MariaDbServer::FromFile(envFile);
    pid_ = static_cast<pid_t>(std::stol(ValueIn(envFile, "KITRA_MARIADB_PID")));
}

void FaultServer::WaitUntilGone() const {
    for (int i = 0; i < 300 && Alive(pid_); ++i) std::this_thread::sleep_for(20ms);
    if (Alive(pid_)) throw std::runtime_error("the fault server outlived SIGKILL");
}

void FaultServer::Ensure() {
    if (frozen_) Resume();
    if (pid_ == 0) Read();
    if (killed_) WaitUntilGone();
    if (Alive(pid_)) return;
    const ProcessResult started = RunProcess(
        {KITRA_MARIADB_SCRIPT, "start", "--port", std::to_string(info_.port), folder_});
    if (started.exitCode != 0) {
        throw std::runtime_error("the fault server did not start again: " + started.err);
    }
    Read();
    killed_ = false;
}

void FaultServer::Kill() {
    killed_ = true;
    kill(pid_, SIGKILL);
    frozen_ = false;
    WaitUntilGone();
}

void FaultServer::Freeze() {
    kill(pid_, SIGSTOP);
    frozen_ = true;
    for (int i = 0; i < 500 && !EveryThreadStopped(pid_); ++i) std::this_thread::sleep_for(10ms);
    if (!EveryThreadStopped(pid_)) throw std::runtime_error("the fault server did not stop");
}

void FaultServer::Resume() {
    kill(pid_, SIGCONT);
    frozen_ = false;
}

void FaultServer::HoldTableLock(const std::string& database, const std::string& table) {
    ReleaseLock();
    const std::vector<std::string> words = {
        "mariadb", "--defaults-file=" + info_.clientConfig, database, "-e",
        "LOCK TABLES `" + table + "` WRITE; DO SLEEP(600);"};
    std::vector<char*> argv;
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    if (posix_spawnp(&lockHolder_, "mariadb", nullptr, nullptr, argv.data(), environ) != 0) {
        lockHolder_ = 0;
        throw std::runtime_error("cannot start the mariadb client");
    }
    // The lock is held once that client sleeps.
    MariaDbClient client(info_);
    for (int i = 0; i < 300; ++i) {
        if (client.QueryValue("SELECT COUNT(*) FROM information_schema.processlist"
                              " WHERE info LIKE 'DO SLEEP(600)%'") != "0") {
            return;
        }
        std::this_thread::sleep_for(20ms);
    }
    throw std::runtime_error("the table lock was not taken");
}

void FaultServer::ReleaseLock() {
    if (lockHolder_ == 0) return;
    kill(lockHolder_, SIGKILL);
    int status = 0;
    waitpid(lockHolder_, &status, 0);
    lockHolder_ = 0;
    // The server notices a client gone in the middle of a SLEEP only seconds later, and holds
    // its lock until then; a running server lets go of it at once.
    if (frozen_ || killed_ || !Alive(pid_)) return;
    MariaDbClient client(info_);
    for (const auto& row : client.Query("SELECT id FROM information_schema.processlist"
                                        " WHERE info LIKE 'DO SLEEP(600)%'")) {
        try {
            client.Execute("KILL " + row.at(0));
        } catch (const std::exception&) {
            // It went on its own in the meantime.
        }
    }
}

bool FaultServer::WaitForStatementOnLock(const std::string& table) const {
    // Asked over a connection of its own rather than through the mariadb client: a client
    // process per question is slow on a loaded machine, and the statement must be caught while
    // it still waits.
    ado::Connection watcher(RestaurantConnectionString(info_.host, "information_schema",
                                                       info_.rootUser, info_.rootPassword,
                                                       std::to_string(info_.port)));
    watcher.Open();
    const std::string question =
        "SELECT COUNT(*) AS waiting FROM information_schema.processlist WHERE state LIKE "
        "'%lock%' AND info LIKE '%FROM " + table + "%' AND id <> CONNECTION_ID()";
    for (int i = 0; i < 3000; ++i) {
        ado::Recordset waiting;
        waiting.Open(question, watcher);
        if (waiting.Field("waiting").ToInt32() > 0) return true;
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

}  // namespace kitra::test
