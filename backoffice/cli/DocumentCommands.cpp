// kitra-host document | cash-movement | receipt: taking out by hand what only the back office
// has (reconcile prints the command for each such record), and showing a document's history.
// Voiding keeps the document, marked void, out of every total; removing takes it and all that
// hangs off it away. Either keeps the version taken out in the document's history, and either
// is refused while an import runs or while another document refers to it.
#include <ostream>

#include "backoffice/BackOffice.h"
#include "backoffice/DocumentRemoval.h"
#include "backoffice/RunLock.h"
#include "backoffice/cli/Command.h"
#include "core/Clock.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

std::string Usage(DocumentGroup group) {
    return std::string(GroupCommand(group)) + " void|remove|history TIPO SÉRIE/NÚMERO";
}

int Run(CommandContext& context, DocumentGroup group) {
    if (context.arguments.empty()) throw UsageError("Uso: kitra-host " + Usage(group));
    const std::string action = context.arguments.front();
    if (action != "void" && action != "remove" && action != "history")
        throw UsageError("Uso: kitra-host " + Usage(group));
    ExpectArguments(context, 3, Usage(group));
    DocumentIdentity identity;
    try {
        identity = ParseDocumentIdentity(context.arguments[1], context.arguments[2]);
    } catch (const Error& error) {
        throw UsageError(error.Description());
    }
    const std::string name =
        identity.type + " " + identity.series + "/" + std::to_string(identity.number);
    if (action == "history") {
        BackOffice office(context.dataFolder);
        const std::vector<DocumentEvent> events = DocumentHistory(office.GetDatabase(), identity);
        if (events.empty()) {
            context.out << "O histórico de " << name << " está vazio.\n";
            return kExitOk;
        }
        for (const DocumentEvent& event : events) {
            const char* what = event.event == "replaced" ? "substituído"
                               : event.event == "voided" ? "anulado"
                                                         : "removido";
            context.out << event.date << " " << what << "; a versão anterior:\n" << event.version;
            if (!event.version.empty() && event.version.back() != '\n') context.out << "\n";
        }
        return kExitOk;
    }
    const TakeOut how = action == "void" ? TakeOut::Void : TakeOut::Remove;
    RunLock lock(context.dataFolder, "'" + std::string(GroupCommand(group)) + " " + action + "'");
    BackOffice office(context.dataFolder);
    office.GetDatabase().EnsureWritable();
    const bool changed =
        TakeOutDocument(office.GetDatabase(), group, identity, how, SystemClock().Now());
    std::string what = GroupName(group);
    what[0] = static_cast<char>(what[0] - 'a' + 'A');
    if (!changed) {
        context.out << what << " " << name << " já estava anulado; nada mudou.\n";
        return kExitOk;
    }
    context.out << what << " " << name << (how == TakeOut::Void ? " foi anulado" : " foi removido")
                << "; a versão anterior ficou no histórico ('kitra-host " << GroupCommand(group)
                << " history " << name << "').\n";
    return kExitOk;
}

}  // namespace

int RunDocument(CommandContext& context) { return Run(context, DocumentGroup::Document); }
int RunCashMovement(CommandContext& context) { return Run(context, DocumentGroup::CashMovement); }
int RunReceipt(CommandContext& context) { return Run(context, DocumentGroup::Receipt); }

}  // namespace kitra::backoffice::cli
