// kitra-host state: each restaurant's two import dates, the moments from which its next import
// selects what changed, shown and moved (back after a failed run, or forward to skip data).
// 'execute' starts each restaurant one second before its last import began, for each date that
// import left as it is; the table shows that too.
#include <ostream>

#include "backoffice/BackOffice.h"
#include "backoffice/RestaurantImports.h"
#include "backoffice/RunLock.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/DateArgument.h"
#include "core/DateTime.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

constexpr const char* kSetUsage =
    "state set RESTAURANTE [--entities DATA] [--transactions DATA] (DATA: \"aaaa-mm-dd hh:mm:ss\" ou "
    "aaaa-mm-dd)";

SettingsDocument StoredSettings(BackOffice& office) {
    const auto stored = office.settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    if (!stored) {
        throw Error("Não há configurações guardadas. Guarde-as com 'kitra-host settings load FICHEIRO'.");
    }
    try {
        return SettingsDocument::Parse(*stored);
    } catch (const Error& error) {
        throw Error("As configurações guardadas não se deixam ler (" + error.Description() +
                    "). Veja 'kitra-host settings history' para repor uma versão anterior.");
    }
}

std::optional<std::string> DateOption(CommandContext& context, const std::string& name) {
    const auto value = context.TakeOption(name);
    if (!value) return std::nullopt;
    const auto moment = ParseDateArgument(*value);
    if (!moment) {
        throw UsageError("Data inválida em " + name + ": '" + *value + "'. Use a forma " +
                         kDateArgumentForms +
                         ", por exemplo \"2024-01-05 10:00:00\" ou 2024-01-05 (00:00:00).");
    }
    return moment;
}

// The stored dates, the second the restaurant's last import by this host began, and where the
// next import starts: one second before it for each date that import left as it is.
void Print(std::ostream& out, BackOffice& office, const std::vector<RestaurantSettings>& restaurants) {
    out << "Restaurante\tEntidades\tTransacções\tInício da importação anterior\tPróxima importação "
           "desde\n";
    const RestaurantImports imports(office.GetDatabase());
    for (const RestaurantSettings& r : restaurants) {
        const std::optional<RestaurantImport> last = imports.Last(r.name);
        const NextImportDates next = NextImportFrom(r, last);
        out << r.name << "\t" << r.importDateEntities << "\t" << r.importDateTransactions << "\t"
            << (last ? FormatIsoDateTime(last->startedAt) : std::string("-")) << "\t"
            << (next.entities == next.transactions
                    ? next.entities
                    : "entidades " + next.entities + ", transacções " + next.transactions)
            << "\n";
    }
}

int Set(CommandContext& context) {
    const auto entities = DateOption(context, "--entities");
    const auto transactions = DateOption(context, "--transactions");
    ExpectArguments(context, 2, kSetUsage);
    if (!entities && !transactions) {
        throw UsageError(std::string("Indique --entities, --transactions ou as duas. Uso: kitra-host ") +
                         kSetUsage);
    }
    const std::string& name = context.arguments[1];
    RunLock lock(context.dataFolder, "'state set'");
    BackOffice office(context.dataFolder);
    SettingsDocument settings = StoredSettings(office);
    // Names compare as the import compares them: 'centro' is the restaurant stored as 'Centro'.
    const std::string stored = settings.SetImportDates(name, entities, transactions);
    office.settingsStore.SetOrigin("state set " + stored);
    office.settingsStore.SaveText(kSettingsKey1, kSettingsKey2, settings.Text());
    for (const RestaurantSettings& r : settings.Restaurants()) {
        if (r.name != stored) continue;
        context.out << "Datas de importação de '" << stored << "': entidades " << r.importDateEntities
                    << ", transacções " << r.importDateTransactions << ".\n";
        break;
    }
    return kExitOk;
}

}  // namespace

int RunState(CommandContext& context) {
    if (!context.arguments.empty() && context.arguments.front() == "set") return Set(context);
    ExpectArguments(context, 0, "state | kitra-host " + std::string(kSetUsage));
    BackOffice office(context.dataFolder);
    Print(context.out, office, StoredSettings(office).Restaurants());
    return kExitOk;
}

}  // namespace kitra::backoffice::cli
