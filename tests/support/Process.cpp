#include "tests/support/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace kitra::test {

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TemporaryFile::TemporaryFile(const std::string& contents) {
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/kitra-test-XXXXXX";
    const int fd = mkstemp(pattern.data());
    if (fd < 0) throw std::runtime_error("cannot create a temporary file: " + std::string(std::strerror(errno)));
    path_ = pattern;
    std::size_t written = 0;
    while (written < contents.size()) {
        const ssize_t n = write(fd, contents.data() + written, contents.size() - written);
        if (n <= 0) {
            close(fd);
            throw std::runtime_error("cannot write " + path_);
        }
        written += static_cast<std::size_t>(n);
    }
    close(fd);
}

TemporaryFile::~TemporaryFile() { unlink(path_.c_str()); }

std::string TemporaryFile::Read() const { return ReadFile(path_); }

ProcessResult RunProcess(const std::vector<std::string>& argv, const std::string& stdinFile) {
    if (argv.empty()) throw std::runtime_error("RunProcess: no program given");
    // Output goes to files rather than pipes: nothing can block however much a program writes.
    TemporaryFile out, err;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO,
                                     stdinFile.empty() ? "/dev/null" : stdinFile.c_str(),
                                     O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.Path().c_str(),
                                     O_WRONLY | O_TRUNC, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.Path().c_str(),
                                     O_WRONLY | O_TRUNC, 0);
    std::vector<char*> args;
    for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    pid_t pid = 0;
    const int rc = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) {
        throw std::runtime_error("cannot start " + argv[0] + ": " + std::strerror(rc));
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) throw std::runtime_error("waitpid failed for " + argv[0]);
    }
    ProcessResult result;
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.out = out.Read();
    result.err = err.Read();
    return result;
}

}  // namespace kitra::test
