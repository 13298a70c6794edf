#pragma once
// The commands of the kitra-host program. Each command is one entry of the table in
// Commands.cpp and one function; the dispatcher (KitraHost.cpp) parses the options common to
// all, picks the command by name and turns its errors into messages and exit codes.
#include <filesystem>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace kitra::backoffice::cli {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;  // the command could not do its work
inline constexpr int kExitUsage = 2;    // the command line was wrong

// A mistake in the command line; the dispatcher prints it with a pointer to the help.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct CommandContext {
    std::filesystem::path dataFolder;
    std::vector<std::string> arguments;  // what follows the command's name, options removed
    std::istream* in = nullptr;          // null when nobody can answer questions
    std::ostream& out;
    std::ostream& err;
};

struct Command {
    std::string name;
    std::string arguments;  // as shown in the help, e.g. "" or "NOME"
    std::string summary;    // one line, shown in the help
    int (*run)(CommandContext& context);
};

// Every command, in the order the help lists them.
const std::vector<Command>& AllCommands();

int RunInit(CommandContext& context);
int RunInfo(CommandContext& context);
int RunSettings(CommandContext& context);
int RunValidate(CommandContext& context);
int RunExecute(CommandContext& context);
int RunLog(CommandContext& context);
int RunTrace(CommandContext& context);
int RunConfig(CommandContext& context);
int RunResetData(CommandContext& context);
int RunRegister(CommandContext& context);
int RunUnregister(CommandContext& context);

}  // namespace kitra::backoffice::cli
