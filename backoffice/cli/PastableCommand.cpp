#include "backoffice/cli/PastableCommand.h"

#include <system_error>

namespace kitra::backoffice::cli {
namespace {

std::string& Invocation() {
    static std::string program = "kitra-host";
    return program;
}

std::filesystem::path Absolute(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path absolute = std::filesystem::absolute(path, error);
    if (error) return path;
    // "./kitra-data" and "a/../b" print as the folder they are.
    return absolute.lexically_normal();
}

}  // namespace

void SetProgramInvocation(const std::string& argv0) {
    if (argv0.empty()) return;
    Invocation() = argv0.find('/') == std::string::npos ? argv0 : Absolute(argv0).string();
}

const std::string& ProgramForCommands() { return Invocation(); }

std::string ShellWord(const std::string& word) {
    bool plain = !word.empty();
    for (char c : word) {
        const bool safe = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                          c == '-' || c == '_' || c == '.' || c == '/' || c == ',' || c == ':' ||
                          c == '=' || c == '+' || c == '@';
        if (!safe) {
            plain = false;
            break;
        }
    }
    if (plain) return word;
    std::string quoted = "'";
    for (char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

std::string PastableCommand(const std::filesystem::path& dataFolder,
                            const std::vector<std::string>& words) {
    std::string command = ShellWord(ProgramForCommands()) + " --data " +
                          ShellWord(Absolute(dataFolder).string());
    for (const std::string& word : words) command += " " + ShellWord(word);
    return command;
}

}  // namespace kitra::backoffice::cli
