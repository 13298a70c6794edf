#include <ostream>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/Command.h"

namespace kitra::backoffice::cli {

int RunInit(CommandContext& context) {
    if (!context.arguments.empty())
        throw UsageError("O comando 'init' não aceita argumentos: '" + context.arguments.front() + "'.");
    BackOffice::Create(context.dataFolder);
    context.out << "Retaguarda criada em '" << BackOffice::FileIn(context.dataFolder).string()
                << "'.\n";
    return kExitOk;
}

}  // namespace kitra::backoffice::cli
