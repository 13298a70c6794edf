#include "backoffice/cli/Command.h"

namespace kitra::backoffice::cli {

const std::vector<Command>& AllCommands() {
    static const std::vector<Command> commands = {
        {"init", "", "Cria uma retaguarda nova na pasta de dados, com uma empresa de exemplo.",
         &RunInit},
    };
    return commands;
}

}  // namespace kitra::backoffice::cli
