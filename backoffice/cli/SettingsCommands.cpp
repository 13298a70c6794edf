// kitra-host settings: the connector's settings text, loaded from a file only when it is one the
// import can use, shown with the passwords masked, deleted only when confirmed, and every
// replaced text kept in a history from which it can be restored.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>

#include <pugixml.hpp>

#include "backoffice/BackOffice.h"
#include "backoffice/RunLock.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/ConnectorSession.h"
#include "backoffice/cli/SettingsRefusals.h"
#include "core/DateTime.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

constexpr const char* kUsage =
    "settings load [--dates-from-file] FICHEIRO | settings set RESTAURANTE ATRIBUTO VALOR | "
    "settings show [--reveal] | settings delete --yes | settings history | settings restore N";

std::string ReadFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw Error("'" + path + "' é uma pasta, não um ficheiro.");
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Error("Não foi possível ler o ficheiro '" + path + "'.");
    try {
        return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    } catch (const std::ios_base::failure&) {
        // The library's own text names its internals; the reader needs the file's name.
        throw Error("Não foi possível ler o ficheiro '" + path + "' até ao fim.");
    }
}

// A settings text one element a line, indented, for a person to read; the stored text stays on
// one line, as the connector writes it.
std::string Indented(const std::string& text) {
    pugi::xml_document document;
    if (!document.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8))
        return text;
    std::ostringstream out;
    document.save(out, "  ", pugi::format_indent | pugi::format_no_declaration, pugi::encoding_utf8);
    std::string indented = out.str();
    while (!indented.empty() && indented.back() == '\n') indented.pop_back();
    return indented;
}

// Says why the text cannot be stored, after `refused`, when it has problems; false when it has
// none.
bool Refused(CommandContext& context, const std::string& refused, const SettingsDocument& document) {
    const auto problems = document.Problems();
    if (problems.empty()) return false;
    context.err << refused;
    for (const std::string& problem : problems) context.err << "  " << problem << "\n";
    return true;
}

// Stores a checked settings text through the connector, as a host does; when the connector
// keeps fewer restaurants than the text holds, it read something else than what was checked,
// and the previous text goes back. `what` names where the text came from, for the messages.
int StoreThroughConnector(CommandContext& context, ConnectorSession& session,
                          const std::string& xml, std::size_t restaurants,
                          const std::optional<std::string>& previous, const std::string& what) {
    ConnectorSettingsStore& store = session.Office().settingsStore;
    // The connector says only that it failed; a lock held by another program is said here.
    session.Office().GetDatabase().EnsureWritable();
    if (!session.Connector().LoadDefaults(xml)) {
        context.err << "kitra-host: o conector recusou as configurações.\n";
        return kExitFailure;
    }
    const auto stored = StoredRestaurants(store.StoredText(kSettingsKey1, kSettingsKey2));
    if (stored.size() != restaurants) {
        if (previous) {
            store.SetOrigin("settings load (reposição)");
            store.SaveText(kSettingsKey1, kSettingsKey2, *previous);
        }
        context.err << "kitra-host: o conector não leu as configurações " << what
                    << " como foram verificadas; as configurações anteriores foram repostas.\n";
        return kExitFailure;
    }
    return kExitOk;
}

// What a run would refuse in the settings just stored: they stay stored (the records they name
// may be created next, a document type chosen in the dialog), and each refusal is told now, as
// the run would tell it.
void TellImportRefusals(CommandContext& context, ConnectorSession& session, const std::string& xml) {
    const std::vector<std::string> refusals = ImportRefusals(session, xml);
    if (refusals.empty()) return;
    context.err << "kitra-host: aviso: a importação recusa estas configurações ('kitra-host execute' "
                   "não começa) enquanto:\n";
    for (const std::string& refusal : refusals) context.err << "  " << refusal << "\n";
}

int Load(CommandContext& context) {
    const bool datesFromFile = context.TakeFlag("--dates-from-file");
    ExpectArguments(context, 2, "settings load [--dates-from-file] FICHEIRO");
    const std::string& path = context.arguments[1];
    const std::string refused = "kitra-host: as configurações de '" + path +
                                "' foram recusadas; as configurações guardadas ficaram como estavam.\n";
    std::string xml;
    std::optional<SettingsDocument> document;
    try {
        xml = ReadFile(path);
        document = SettingsDocument::Parse(xml);
    } catch (const Error& error) {
        context.err << refused << "  " << error.Description() << "\n";
        return kExitFailure;
    }
    if (Refused(context, refused, *document)) return kExitFailure;
    for (const std::string& warning : document->Warnings())
        context.err << "kitra-host: aviso: " << warning << "\n";

    RunLock lock(context.dataFolder, "'settings load'");
    ConnectorSession session(context, "settings load");
    const auto previous = session.Office().settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    // What is stored of each restaurant the file also names stays: its import dates (unless
    // asked) and its password where the file has the mask of a shown text.
    std::vector<std::string> kept;
    try {
        std::optional<SettingsDocument> stored;
        if (previous) {
            try {
                stored = SettingsDocument::Parse(*previous);
            } catch (const Error&) {
                // Stored settings that cannot be read keep nothing: the file is taken whole.
            }
        }
        const SettingsDocument nothing = SettingsDocument::Parse("<KitraConnectorSetting/>");
        kept = document->KeepFromStored(stored ? *stored : nothing, datesFromFile);
    } catch (const Error& error) {
        context.err << refused << "  " << error.Description() << "\n";
        return kExitFailure;
    }
    const int status = StoreThroughConnector(context, session, document->Text(),
                                             document->Restaurants().size(), previous,
                                             "de '" + path + "'");
    if (status != kExitOk) return status;
    TellImportRefusals(context, session, document->Text());
    for (const std::string& line : kept) context.out << line << "\n";
    const std::size_t count = document->Restaurants().size();
    context.out << "Configurações guardadas (" << count << " restaurante" << (count == 1 ? "" : "s")
                << ").\n";
    return kExitOk;
}

// One attribute of one restaurant changed in the stored settings, checked as a load is checked
// and kept in the history as a load is.
int Set(CommandContext& context) {
    ExpectArguments(context, 4, "settings set RESTAURANTE ATRIBUTO VALOR");
    const std::string& restaurant = context.arguments[1];
    const std::string& attribute = context.arguments[2];
    const std::string& value = context.arguments[3];
    RunLock lock(context.dataFolder, "'settings set'");
    ConnectorSession session(context, "settings set");
    const auto previous = session.Office().settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    if (!previous) {
        context.err << "kitra-host: não há configurações guardadas; guarde-as primeiro com "
                       "'kitra-host settings load FICHEIRO'.\n";
        return kExitFailure;
    }
    const std::string refused =
        "kitra-host: a alteração foi recusada; as configurações guardadas ficaram como estavam.\n";
    std::optional<SettingsDocument> document;
    try {
        document = SettingsDocument::Parse(*previous);
        document->SetRestaurantAttribute(restaurant, attribute, value);
    } catch (const Error& error) {
        context.err << refused << "  " << error.Description() << "\n";
        return kExitFailure;
    }
    if (Refused(context, refused, *document)) return kExitFailure;
    const int status = StoreThroughConnector(context, session, document->Text(),
                                             document->Restaurants().size(), previous,
                                             "alteradas");
    if (status != kExitOk) return status;
    TellImportRefusals(context, session, document->Text());
    context.out << "Restaurante '" << restaurant << "': " << attribute << " = "
                << (attribute == "ServerPassword" ? std::string(kMaskedPassword) : value)
                << " (a versão anterior das configurações ficou no histórico).\n";
    return kExitOk;
}

int Show(CommandContext& context) {
    const bool reveal = context.TakeFlag("--reveal");
    ExpectArguments(context, 1, "settings show [--reveal]");
    BackOffice office(context.dataFolder);
    const auto stored = office.settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    if (!stored) {
        context.err << "kitra-host: não há configurações guardadas.\n";
        return kExitFailure;
    }
    if (reveal) {
        context.out << *stored << "\n";
        return kExitOk;
    }
    try {
        context.out << Indented(SettingsDocument::Parse(*stored).MaskedText()) << "\n";
    } catch (const Error& error) {
        context.err << "kitra-host: as configurações guardadas não se deixam ler ("
                    << error.Description()
                    << "); para as ver como estão, palavras-passe incluídas, use --reveal.\n";
        return kExitFailure;
    }
    return kExitOk;
}

int Delete(CommandContext& context) {
    const bool confirmed = context.TakeFlag("--yes");
    ExpectArguments(context, 1, "settings delete --yes");
    if (!confirmed) {
        context.err << "kitra-host: as configurações guardam também as datas da última importação "
                       "de cada restaurante; sem elas, a próxima importação não sabe de onde "
                       "continuar. Para apagar mesmo, use 'kitra-host settings delete --yes' (a "
                       "versão apagada fica em 'kitra-host settings history').\n";
        return kExitUsage;  // the command line lacks what the command needs
    }
    RunLock lock(context.dataFolder, "'settings delete'");
    ConnectorSession session(context, "settings delete");
    session.Office().GetDatabase().EnsureWritable();
    if (!session.Connector().Delete()) return kExitFailure;
    context.out << "Configurações apagadas.\n";
    return kExitOk;
}

int History(CommandContext& context) {
    ExpectArguments(context, 1, "settings history");
    BackOffice office(context.dataFolder);
    const auto versions = office.settingsStore.History(kSettingsKey1, kSettingsKey2);
    if (versions.empty()) {
        context.out << "Não há versões anteriores das configurações.\n";
        return kExitOk;
    }
    context.out << "N\tguardada em\tpor\tsubstituída em\tpor\trestaurantes\n";
    for (const SettingsVersion& version : versions) {
        std::string restaurants = "?";  // a text that cannot be read
        try {
            restaurants = std::to_string(SettingsDocument::Parse(version.xml).Restaurants().size());
        } catch (const Error&) {
        }
        context.out << version.id << "\t" << FormatIsoDateTime(version.storedDate) << "\t"
                    << (version.storedBy.empty() ? "-" : version.storedBy) << "\t"
                    << FormatIsoDateTime(version.replacedDate) << "\t" << version.replacedBy << "\t"
                    << restaurants << "\n";
    }
    return kExitOk;
}

int Restore(CommandContext& context) {
    ExpectArguments(context, 2, "settings restore N");
    const std::string& number = context.arguments[1];
    if (number.empty() || number.size() > 9 || number.find_first_not_of("0123456789") != std::string::npos)
        throw UsageError("N é o número de uma versão de 'kitra-host settings history': '" + number + "'.");
    RunLock lock(context.dataFolder, "'settings restore'");
    BackOffice office(context.dataFolder);
    const auto version = office.settingsStore.Version(kSettingsKey1, kSettingsKey2, std::stol(number));
    if (!version) {
        throw Error("Não há nenhuma versão " + number +
                    " das configurações; veja 'kitra-host settings history'.");
    }
    office.settingsStore.SetOrigin("settings restore " + number);
    office.settingsStore.SaveText(kSettingsKey1, kSettingsKey2, version->xml);
    context.out << "Reposta a versão " << number << " das configurações ("
                << StoredRestaurants(version->xml).size()
                << " restaurantes); as que estavam guardadas ficaram no histórico.\n";
    return kExitOk;
}

}  // namespace

int RunSettings(CommandContext& context) {
    if (context.arguments.empty()) throw UsageError(std::string("Uso: kitra-host ") + kUsage);
    const std::string action = context.arguments.front();
    if (action == "load") return Load(context);
    if (action == "set") return Set(context);
    if (action == "show") return Show(context);
    if (action == "delete") return Delete(context);
    if (action == "history") return History(context);
    if (action == "restore") return Restore(context);
    throw UsageError(std::string("Uso: kitra-host ") + kUsage);
}

}  // namespace kitra::backoffice::cli
