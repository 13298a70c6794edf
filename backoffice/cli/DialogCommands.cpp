// The commands that open the connector's dialogs in windows, through the windowed part of the
// program; they need a screen.
#include "backoffice/RunLock.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/ConnectorSession.h"
#include "backoffice/cli/Desktop.h"

namespace kitra::backoffice::cli {

int RunTrace(CommandContext& context) {
    if (!context.arguments.empty()) throw UsageError("Uso: kitra-host trace");
    Desktop desktop;
    ConnectorSession session(context, "trace", ProgressDetail::Normal, &desktop.MessageBoxes());
    session.Connector().ShowTrace();
    return kExitOk;
}

int RunConfig(CommandContext& context) {
    if (!context.arguments.empty()) throw UsageError("Uso: kitra-host config");
    Desktop desktop;
    // The settings change only while no run holds the back office.
    RunLock lock(context.dataFolder, "'config'");
    ConnectorSession session(context, "config", ProgressDetail::Normal, &desktop.MessageBoxes());
    if (!session.Connector().Config()) {
        context.out << "As configurações não foram alteradas.\n";
        return kExitFailure;
    }
    context.out << "Configurações guardadas.\n";
    return kExitOk;
}

}  // namespace kitra::backoffice::cli
