#pragma once
// The commands of the kitra-host program. Each command is one entry of the table in
// Commands.cpp and one function; the dispatcher (KitraHost.cpp) parses the options common to
// all, picks the command by name and turns its errors into messages and exit codes.
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace kitra::backoffice::cli {

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailure = 1;  // the command could not do its work
inline constexpr int kExitUsage = 2;    // the command line was wrong
// The run reached its end, but some restaurant had errors or could not be reached (execute);
// something needs attention (check); a restaurant and the back office differ (reconcile).
inline constexpr int kExitAttention = 3;

// A mistake in the command line; the dispatcher prints it with a pointer to the help.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct CommandContext {
    std::filesystem::path dataFolder;
    // What follows the command's name, without the program's own options; the command's own
    // options ("--yes", "--json", "--entities DATE", ...) are still among them until taken.
    std::vector<std::string> arguments;
    std::istream* in = nullptr;          // null when nobody can answer questions
    std::ostream& out;
    std::ostream& err;

    // Removes the flag from the arguments; whether it was there.
    bool TakeFlag(const std::string& flag);
    // Removes "--name VALUE" or "--name=VALUE" from the arguments and gives the value.
    std::optional<std::string> TakeOption(const std::string& name);
};

// Fails with the usage when the arguments are not `count` plain words (an option the command
// did not take is a mistake too).
void ExpectArguments(const CommandContext& context, std::size_t count, const std::string& usage);

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
int RunState(CommandContext& context);
int RunCheck(CommandContext& context);
int RunReconcile(CommandContext& context);
int RunRegister(CommandContext& context);
int RunUnregister(CommandContext& context);
int RunReport(CommandContext& context);
int RunSeries(CommandContext& context);
// Taking out by hand what only the back office has (DocumentCommands.cpp).
int RunDocument(CommandContext& context);
int RunCashMovement(CommandContext& context);
int RunReceipt(CommandContext& context);

// The back office's own records (RecordCommands.cpp, CompanyCommand.cpp).
int RunDocumentType(CommandContext& context);
int RunTender(CommandContext& context);
int RunTaxableGroup(CommandContext& context);
int RunWarehouse(CommandContext& context);
int RunWorkstation(CommandContext& context);
int RunSupplier(CommandContext& context);
int RunCompany(CommandContext& context);

}  // namespace kitra::backoffice::cli
