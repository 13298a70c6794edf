#pragma once
// Runs a program and collects what it wrote: how tests drive the mariadb client, the generator
// and the project's scripts.
#include <string>
#include <vector>

namespace kitra::test {

struct ProcessResult {
    int exitCode = -1;  // the exit status, or 128 + signal number
    std::string out;
    std::string err;
};

// Runs argv[0] (searched in PATH) with the arguments; stdin reads the file when one is given,
// else nothing. Fails with std::runtime_error only when the program cannot be started.
ProcessResult RunProcess(const std::vector<std::string>& argv, const std::string& stdinFile = {});

// A file in the temporary folder, removed with its owner.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& contents = {});
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::string& Path() const { return path_; }
    std::string Read() const;

private:
    std::string path_;
};

std::string ReadFile(const std::string& path);

}  // namespace kitra::test
