// The commands that drive the connector component, and the commands on its log table.
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <ostream>
#include <sstream>

#include "backoffice/BackOffice.h"
#include "backoffice/RunLock.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/SettingsRecords.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/ComponentLoader.h"
#include "backoffice/cli/ConnectorSession.h"
#include "core/ComponentRegistry.h"
#include "core/DateTime.h"
#include "core/Error.h"
#include "backoffice/LogProblems.h"

namespace kitra::backoffice::cli {
namespace {

const char* YesNo(bool value) { return value ? "True" : "False"; }

DateTime ParseMoment(const std::string& text) {
    auto moment = ParseIsoDateTime(text);
    if (!moment) {
        throw UsageError("Data inválida: '" + text + "'. Use o formato \"aaaa-mm-dd hh:mm:ss\".");
    }
    return *moment;
}

bool LogTableExists(BackOffice& office) { return office.schema.TableExists("Kitra2Log"); }

// "1 erro", "2 erros", "0 erros".
std::string Counted(int count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace

int RunInfo(CommandContext& context) {
    ExpectArguments(context, 0, "info");
    ConnectorSession session(context, "info");
    host::IConnector& c = session.Connector();
    context.out << "ConnectorID: " << c.ConnectorID() << "\n"
                << "Description: " << c.Description() << "\n"
                << "Version: " << c.Version() << "\n"
                << "FunctionalLevel: " << c.FunctionalLevel() << "\n"
                << "HasUISetting: " << YesNo(c.HasUISetting()) << "\n"
                << "HasUITrace: " << YesNo(c.HasUITrace()) << "\n"
                << "HandleImportExport: " << YesNo(c.HandleImportExport()) << "\n"
                << "HandleReExport: " << YesNo(c.HandleReExport()) << "\n";
    return kExitOk;
}

int RunValidate(CommandContext& context) {
    ExpectArguments(context, 0, "validate");
    ConnectorSession session(context, "validate");
    bool valid = session.Connector().ValidateSettings();
    // What the connector's own rules let through but a run could not use.
    if (const auto stored = session.Office().settingsStore.StoredText(kSettingsKey1, kSettingsKey2)) {
        try {
            const SettingsDocument document = SettingsDocument::Parse(*stored);
            std::vector<std::string> problems = document.Problems();
            // The records the restaurants name that the back office lacks: a run refuses them.
            for (std::string& missing :
                 MissingRecordProblems(session.Office().GetDatabase(), document.Restaurants()))
                problems.push_back(std::move(missing));
            for (const std::string& problem : problems) {
                context.err << "kitra-host: " << problem << "\n";
                valid = false;
            }
        } catch (const Error&) {
            // Unreadable settings: the connector's validation has said so already.
        }
    }
    context.out << (valid ? "As configurações são válidas.\n" : "As configurações não são válidas.\n");
    return valid ? kExitOk : kExitFailure;
}

int RunResetData(CommandContext& context) {
    ExpectArguments(context, 0, "reset-data");
    RunLock lock(context.dataFolder, "'reset-data'");
    ConnectorSession session(context, "reset-data");
    session.Office().GetDatabase().EnsureWritable();
    session.Connector().ResetData();
    context.out << "O log de importações foi esvaziado.\n";
    return kExitOk;
}

int RunLog(CommandContext& context) {
    const std::string usage =
        "log list | log show latest|RESTAURANTE [\"aaaa-mm-dd hh:mm:ss\"] | log delete "
        "RESTAURANTE \"aaaa-mm-dd hh:mm:ss\"";
    if (context.arguments.empty()) throw UsageError("Uso: kitra-host " + usage);
    const std::string action = context.arguments.front();
    BackOffice office(context.dataFolder);
    if (action == "list") {
        ExpectArguments(context, 1, "log list");
        if (!LogTableExists(office)) return kExitOk;
        ado::Recordset rs = office.connection.Query(host::SqlStatement(
            "SELECT RestaurantID, ImportDate, Contents FROM Kitra2Log ORDER BY ImportDate DESC"));
        for (; !rs.Eof(); rs.MoveNext()) {
            const LogProblems problems =
                CountLogProblems(rs["Contents"].IsNull() ? std::string() : rs["Contents"].ToText());
            context.out << rs["RestaurantID"].ToText() << "\t"
                        << FormatIsoDateTime(rs["ImportDate"].ToDate()) << "\t"
                        << Counted(problems.errors, "erro", "erros") << ", "
                        << Counted(problems.warnings, "aviso", "avisos") << "\n";
        }
        return kExitOk;
    }
    if (action == "show" && context.arguments.size() == 2) {
        // The newest log of all ("latest") or of one restaurant.
        const std::string& which = context.arguments[1];
        const bool latest = which == "latest";
        const std::string missing = latest ? "O log de importações está vazio."
                                           : "Não existe registo de log do restaurante '" + which + "'.";
        if (!LogTableExists(office)) throw Error(missing);
        ado::Recordset rs = office.connection.Query(
            latest ? host::SqlStatement("SELECT Contents FROM Kitra2Log ORDER BY ImportDate DESC LIMIT 1")
                   : host::SqlStatement("SELECT Contents FROM Kitra2Log WHERE RestaurantID=? "
                                        "ORDER BY ImportDate DESC LIMIT 1",
                                        {Variant(which)}));
        if (rs.Eof()) throw Error(missing);
        context.out << (rs["Contents"].IsNull() ? std::string() : rs["Contents"].ToText());
        return kExitOk;
    }
    if (action != "show" && action != "delete") throw UsageError("Uso: kitra-host " + usage);
    ExpectArguments(context, 3, "log " + action + " RESTAURANTE \"aaaa-mm-dd hh:mm:ss\"");
    const std::string& restaurant = context.arguments[1];
    const DateTime moment = ParseMoment(context.arguments[2]);
    const host::SqlFields row{{"RestaurantID", restaurant}, {"ImportDate", Variant(moment)}};
    const std::string missing = "Não existe registo de log do restaurante '" + restaurant +
                                "' em " + FormatIsoDateTime(moment) + ".";
    if (!LogTableExists(office)) throw Error(missing);
    if (action == "show") {
        ado::Recordset rs = office.connection.Query(office.statements.Select("Kitra2Log", {"Contents"}, row));
        if (rs.Eof()) throw Error(missing);
        context.out << (rs["Contents"].IsNull() ? std::string() : rs["Contents"].ToText());
        return kExitOk;
    }
    if (office.connection.Execute(office.statements.Delete("Kitra2Log", row)) == 0) throw Error(missing);
    context.out << "Registo de log apagado.\n";
    return kExitOk;
}

int RunRegister(CommandContext& context) {
    if (context.arguments.size() > 1) throw UsageError("Uso: kitra-host register [MÓDULO]");
    const std::string path =
        context.arguments.empty() ? ConnectorModulePath() : context.arguments.front();
    ComponentModule module(std::filesystem::absolute(path).string());
    const host::HResult result = module.RegisterServer();
    if (result != host::kOk) throw Error("O componente recusou o registo.");
    context.out << "Componente registado: " << module.Path() << "\n";
    // The back office's module installed beside the connector's is the business layer's class
    // that the connector creates: it is registered with it.
    const std::string backOffice = host::BusinessLayerModuleBeside(module.Path());
    std::error_code missing;
    if (std::filesystem::is_regular_file(backOffice, missing)) {
        ComponentModule layer(backOffice);
        if (layer.RegisterServer() != host::kOk) throw Error("O back office recusou o registo.");
        context.out << "Componente registado: " << layer.Path() << "\n";
    }
    return kExitOk;
}

// The business layer's class goes with the connector's: its entry is removed directly, as the
// module's own unregistration does.
void UnregisterBusinessLayer(CommandContext& context) {
    if (UnregisterComponent(host::GuidToString(host::kCLSID_HostBusinessLayer))) {
        context.out << "Registo do back office anulado.\n";
    }
}

int RunUnregister(CommandContext& context) {
    ExpectArguments(context, 0, "unregister");
    UnregisterBusinessLayer(context);
    // A registered module that is gone (or no longer a component) cannot unregister itself:
    // its entry is removed from the registry directly.
    if (const auto entry = FindComponent(kConnectorProgId)) {
        std::error_code missing;
        if (!std::filesystem::is_regular_file(entry->modulePath, missing)) {
            UnregisterComponent(entry->clsid);
            context.out << "O módulo registado '" << entry->modulePath
                        << "' já não existe; o registo do componente foi anulado.\n";
            return kExitOk;
        }
    }
    ComponentModule module(ConnectorModulePath());
    const host::HResult result = module.UnregisterServer();
    if (result != host::kOk) throw Error("O componente recusou anular o registo.");
    context.out << "Registo do componente anulado.\n";
    return kExitOk;
}

}  // namespace kitra::backoffice::cli
