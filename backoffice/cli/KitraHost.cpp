#include "backoffice/cli/KitraHost.h"

#include <cstdlib>
#include <optional>
#include <sstream>
#include <ostream>

#include "backoffice/PrivateFiles.h"
#include "backoffice/cli/Command.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

constexpr const char* kProgram = "kitra-host";

// Characters, not bytes: an accented letter takes one column.
std::size_t Columns(const std::string& text) {
    std::size_t columns = 0;
    for (char c : text) columns += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return columns;
}

// A command's summary in lines of at most 80 columns, each under the one before; the first
// starts where every summary starts.
std::string Wrapped(const std::string& summary) {
    constexpr std::size_t kWidth = 80, kIndent = 17;
    std::string text, word;
    std::size_t column = kIndent;
    std::istringstream words(summary);
    while (words >> word) {
        if (column > kIndent && column + 1 + Columns(word) > kWidth) {
            text += "\n" + std::string(kIndent, ' ');
            column = kIndent;
        } else if (column > kIndent) {
            text += ' ';
            ++column;
        }
        text += word;
        column += Columns(word);
    }
    return text;
}

void PrintHelp(std::ostream& out) {
    out << "Uso: " << kProgram << " [--data PASTA] COMANDO [ARGUMENTOS]\n"
        << "     " << kProgram << " --help\n\n"
        << "A retaguarda de referência: uma base de dados SQLite (" << "backoffice.sqlite"
        << ")\nnuma pasta de dados.\n\n"
        << "Comandos:\n";
    for (const Command& command : AllCommands()) {
        std::string head = command.name + (command.arguments.empty() ? "" : " " + command.arguments);
        // A long head gets the summary on the next line, under the other summaries.
        if (head.size() < 14) {
            head.resize(14, ' ');
        } else {
            head += "\n" + std::string(16, ' ');
        }
        out << "  " << head << " " << Wrapped(command.summary) << "\n";
    }
    out << "  help           Mostra esta ajuda.\n\n"
        << "Opções:\n"
        << "  --data PASTA   A pasta de dados. Sem esta opção: a variável de ambiente\n"
        << "                 KITRA_HOST_DATA, ou então ./kitra-data.\n"
        << "  -h, --help     Mostra esta ajuda.\n\n"
        << "Códigos de saída:\n"
        << "  0  tudo correu bem.\n"
        << "  1  o comando não conseguiu fazer o seu trabalho (em 'execute': a importação não\n"
        << "     começou, por configurações que não podem importar, ou não chegou ao fim; as\n"
        << "     datas de importação não foram guardadas).\n"
        << "  2  a linha de comandos está errada.\n"
        << "  3  'execute' chegou ao fim mas algum restaurante teve erros ou não foi alcançado\n"
        << "     (cada um é dito no stderr); 'check' encontrou algo a corrigir; 'reconcile'\n"
        << "     encontrou diferenças entre um restaurante e a retaguarda.\n";
}

// One command's help: its line of use and what it does.
void PrintCommandHelp(std::ostream& out, const Command& command) {
    out << "Uso: " << kProgram << " [--data PASTA] " << command.name
        << (command.arguments.empty() ? "" : " " + command.arguments) << "\n\n"
        << std::string(17, ' ') << Wrapped(command.summary) << "\n\n"
        << "Todos os comandos, as opções e os códigos de saída: " << kProgram << " --help\n";
}

const Command* FindCommand(const std::string& name) {
    for (const Command& command : AllCommands()) {
        if (command.name == name) return &command;
    }
    return nullptr;
}

struct CommandLine {
    bool help = false;
    std::optional<std::string> dataFolder;
    std::optional<std::string> command;
    std::vector<std::string> arguments;
};

// The program's options may stand before or after the command; "--" ends them. Other options
// after the command are the command's own, and the command refuses those it does not know.
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
        } else if (!optionsEnded && !line.command && argument.size() > 1 && argument[0] == '-') {
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
        if (line.help && line.command) {
            if (const Command* command = FindCommand(*line.command)) {
                PrintCommandHelp(out, *command);
                return kExitOk;
            }
        }
        if (line.help || line.command == "help") {
            PrintHelp(out);
            return kExitOk;
        }
        if (!line.command) throw UsageError("Falta o comando.");
        const Command* command = FindCommand(*line.command);
        if (command == nullptr) throw UsageError("Comando desconhecido: '" + *line.command + "'.");
        CommandContext context{line.dataFolder.value_or(DefaultDataFolder()), line.arguments, in,
                               out, err};
        // Whatever a command makes in the data folder (the database's -wal and -shm, the run's
        // log files, the logs kept because they could not be stored) is the owner's only.
        const OwnerOnlyFiles ownerOnly;
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
