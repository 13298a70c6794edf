#include "backoffice/cli/KitraHost.h"

#include <cstdlib>
#include <optional>
#include <ostream>

#include "backoffice/cli/Command.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

constexpr const char* kProgram = "kitra-host";

void PrintHelp(std::ostream& out) {
    out << "Uso: " << kProgram << " [--data PASTA] COMANDO [ARGUMENTOS]\n"
        << "     " << kProgram << " --help\n\n"
        << "A retaguarda de referência: uma base de dados SQLite (" << "backoffice.sqlite"
        << ") numa pasta de dados.\n\n"
        << "Comandos:\n";
    for (const Command& command : AllCommands()) {
        std::string head = command.name + (command.arguments.empty() ? "" : " " + command.arguments);
        // A long head gets the summary on the next line, under the other summaries.
        if (head.size() < 14) {
            head.resize(14, ' ');
        } else {
            head += "\n" + std::string(16, ' ');
        }
        out << "  " << head << " " << command.summary << "\n";
    }
    out << "  help           Mostra esta ajuda.\n\n"
        << "Opções:\n"
        << "  --data PASTA   A pasta de dados. Sem esta opção: a variável de ambiente\n"
        << "                 KITRA_HOST_DATA, ou então ./kitra-data.\n"
        << "  -h, --help     Mostra esta ajuda.\n";
}

const Command* FindCommand(const std::string& name) {
    for (const Command& command : AllCommands()) {
        if (command.name == name) return &command;
    }
    return nullptr;
}

// When arguments[i] is one of the command's own options, moves it and its value to `taken`
// (advancing i past the value) and answers true.
bool TakeCommandOption(const Command& command, const std::vector<std::string>& arguments,
                       std::size_t& i, std::vector<std::string>& taken) {
    const std::string& argument = arguments[i];
    for (const std::string& option : command.valueOptions) {
        if (argument == option) {
            if (i + 1 >= arguments.size() || arguments[i + 1].empty())
                throw UsageError("Falta o valor depois de '" + option + "'.");
            taken.push_back(option);
            taken.push_back(arguments[++i]);
            return true;
        }
        if (argument.rfind(option + "=", 0) == 0) {
            taken.push_back(option);
            taken.push_back(argument.substr(option.size() + 1));
            return true;
        }
    }
    return false;
}

struct CommandLine {
    bool help = false;
    std::optional<std::string> dataFolder;
    std::optional<std::string> command;
    std::vector<std::string> arguments;
};

// Options may stand before or after the command; "--" ends them.
CommandLine Parse(const std::vector<std::string>& arguments) {
    CommandLine line;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (!optionsEnded && argument == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && (argument == "-h" || argument == "--help")) {
            line.help = true;
        } else if (!optionsEnded && argument == "--data") {
            if (i + 1 >= arguments.size() || arguments[i + 1].empty())
                throw UsageError("Falta a pasta depois de '--data'.");
            line.dataFolder = arguments[++i];
        } else if (!optionsEnded && argument.rfind("--data=", 0) == 0) {
            line.dataFolder = argument.substr(7);
            if (line.dataFolder->empty()) throw UsageError("Falta a pasta depois de '--data='.");
        } else if (const Command* command = line.command ? FindCommand(*line.command) : nullptr;
                   !optionsEnded && command != nullptr && TakeCommandOption(*command, arguments, i,
                                                                            line.arguments)) {
            // The command's own option and its value, passed on.
        } else if (!optionsEnded && argument.size() > 1 && argument[0] == '-') {
            throw UsageError("Opção desconhecida: '" + argument + "'.");
        } else if (!line.command) {
            line.command = argument;
        } else {
            line.arguments.push_back(argument);
        }
    }
    return line;
}

}  // namespace

std::string DefaultDataFolder() {
    const char* environment = std::getenv("KITRA_HOST_DATA");
    if (environment != nullptr && *environment != '\0') return environment;
    return "./kitra-data";
}

int RunKitraHost(const std::vector<std::string>& arguments, std::istream* in, std::ostream& out,
                 std::ostream& err) {
    try {
        const CommandLine line = Parse(arguments);
        if (line.help || line.command == "help") {
            PrintHelp(out);
            return kExitOk;
        }
        if (!line.command) throw UsageError("Falta o comando.");
        const Command* command = FindCommand(*line.command);
        if (command == nullptr) throw UsageError("Comando desconhecido: '" + *line.command + "'.");
        CommandContext context{line.dataFolder.value_or(DefaultDataFolder()), line.arguments, in,
                               out, err};
        return command->run(context);
    } catch (const UsageError& error) {
        err << kProgram << ": " << error.what() << "\n"
            << "Use '" << kProgram << " --help' para ver os comandos e as opções.\n";
        return kExitUsage;
    } catch (const Error& error) {
        err << kProgram << ": " << error.Description() << "\n";
        return kExitFailure;
    } catch (const std::exception& error) {
        err << kProgram << ": " << error.what() << "\n";
        return kExitFailure;
    }
}

}  // namespace kitra::backoffice::cli
