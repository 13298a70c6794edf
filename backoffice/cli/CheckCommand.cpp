// kitra-host check: what the next import will meet, without importing anything. For each
// restaurant: whether its server can be reached with its settings (and the driver's own reason
// when not), how far the server's clock is from the back office's (changes are selected with a
// strict "later than" on the server's ModifyDate while the import dates come from this
// machine's clock, so a skew loses or repeats changes), and how many rows each importer would
// select now (the import's own statements, counted). Then the settings' own validity, and
// whether others may read the back office (it keeps the restaurants' passwords).
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <ostream>
#include <sstream>

#include <fmt/format.h>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "backoffice/BackOffice.h"
#include "backoffice/PrivateFiles.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/SettingsRecords.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/JsonText.h"
#include "backoffice/cli/ConnectorSession.h"
#include "backoffice/cli/RestaurantServer.h"
#include "core/Clock.h"
#include "core/DateTime.h"
#include "core/Error.h"
#include "restaurant/Statements.h"

namespace kitra::backoffice::cli {
namespace {

// A skew up to this many seconds is the ordinary drift of two clocks and the time a query takes.
constexpr long kClockSkewTolerance = 5;

struct Importer {
    const char* name;  // as the run's summary names it
    const char* key;   // in the JSON output
    bool masterData;   // selected since the entity date; else since the transaction date
    std::string (*statement)(std::string_view date);
};

const Importer kImporters[] = {
    {"Vendedores", "salesmen", true, &restaurant::SalesmenStatement},
    {"Clientes", "customers", true, &restaurant::CustomersStatement},
    {"Famílias", "families", true, &restaurant::FamiliesStatement},
    {"SubFamílias", "subfamilies", true, &restaurant::SubfamiliesStatement},
    {"Artigos", "items", true, &restaurant::ItemsStatement},
    {"Transacções", "transactions", false, &restaurant::SaleDocumentsStatement},
    {"Mov.Caixa", "cashMovements", false, &restaurant::CashMovementsStatement},
    {"Recibos", "receipts", false, &restaurant::ReceiptsStatement},
};

struct RestaurantCheck {
    std::string name;
    bool reachable = false;
    std::string connectionError;
    std::optional<long> clockSkew;  // server minus back office, in seconds
    std::vector<std::optional<long>> pending;  // per importer; nothing when it could not be counted
    std::vector<std::string> problems;
    std::vector<std::string> warnings;
};

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// The import's statement turned into one that counts its rows: the same FROM and WHERE, without
// the order. A grouped statement counts its groups.
std::string CountingStatement(const std::string& select) {
    const std::string lower = Lower(select);
    const std::size_t from = lower.find(" from ");
    std::size_t order = lower.rfind(" order by ");
    if (from == std::string::npos) throw Error("A instrução não tem FROM: " + select);
    if (order == std::string::npos || order < from) order = select.size();
    const std::string body = select.substr(from, order - from);
    const std::size_t group = Lower(body).find(" group by ");
    if (group == std::string::npos) return "SELECT COUNT(*)" + body;
    // The grouping key is a name the select list gives to an expression: keep that one item.
    const std::string key = body.substr(group + 10);
    const std::string list = select.substr(0, from);
    const std::size_t item = list.rfind(",", list.rfind(" " + key));
    const std::string expression = list.substr(item == std::string::npos ? 7 : item + 1);
    return "SELECT COUNT(*) FROM (SELECT " + expression + body + ") AS pending";
}

void CheckServer(const RestaurantSettings& settings, RestaurantCheck& check) {
    ado::Connection connection;
    try {
        connection = ConnectToRestaurant(settings);
    } catch (const std::exception& error) {
        check.connectionError = DescriptionOf(error);
        check.problems.push_back("Não foi possível ligar ao servidor: " + check.connectionError);
        return;
    }
    check.reachable = true;
    try {
        ado::Recordset now;
        now.Open("SELECT DATE_FORMAT(NOW(),'%Y-%m-%d %H:%i:%s') AS ServerNow", connection);
        const auto server = ParseIsoDateTime(now["ServerNow"].ToText());
        const DateTime here = SystemClock().Now();
        if (server) {
            check.clockSkew = std::lround((server->ToSerial() - here.ToSerial()) * 86400.0);
            if (std::labs(*check.clockSkew) > kClockSkewTolerance) {
                check.warnings.push_back(fmt::format(
                    "O relógio do servidor ({}) está {} s {} do da retaguarda ({}): as datas de "
                    "importação vêm do relógio da retaguarda e as alterações são escolhidas pela "
                    "data do servidor, por isso podem perder-se ou repetir-se alterações. Acerte os "
                    "relógios (e os fusos horários).",
                    FormatIsoDateTime(*server), std::labs(*check.clockSkew),
                    *check.clockSkew > 0 ? "adiantado" : "atrasado", FormatIsoDateTime(here)));
            }
        }
    } catch (const std::exception& error) {
        check.problems.push_back("Não foi possível ler o relógio do servidor: " + DescriptionOf(error));
    }
    for (const Importer& importer : kImporters) {
        const std::string& date =
            importer.masterData ? settings.importDateEntities : settings.importDateTransactions;
        std::optional<long> count;
        if (IsIsoDateTime(date)) {
            try {
                ado::Recordset rows;
                rows.Open(CountingStatement(importer.statement(date)), connection);
                count = static_cast<long>(rows.Field(std::size_t{0}).ToDouble());
            } catch (const std::exception& error) {
                check.problems.push_back(std::string("Não foi possível contar ") + importer.name +
                                         ": " + DescriptionOf(error));
            }
        }
        check.pending.push_back(count);
    }
    connection.Close();
}

RestaurantCheck Check(const RestaurantSettings& settings) {
    RestaurantCheck check;
    check.name = settings.name;
    check.problems = RestaurantSettingsProblems(settings);
    if (!check.problems.empty()) {
        check.pending.assign(std::size(kImporters), std::nullopt);
        return check;  // such values would not reach the server they name
    }
    CheckServer(settings, check);
    if (check.pending.empty()) check.pending.assign(std::size(kImporters), std::nullopt);
    return check;
}

std::string JsonList(const std::vector<std::string>& texts) {
    std::string list = "[";
    for (const std::string& text : texts) list += (list.size() > 1 ? "," : "") + Json(text);
    return list + "]";
}

void PrintJson(std::ostream& out, bool ok, bool settingsValid, const std::vector<RestaurantCheck>& checks,
               const std::vector<std::string>& accessWarnings) {
    out << "{\"ok\":" << (ok ? "true" : "false")
        << ",\"settingsValid\":" << (settingsValid ? "true" : "false") << ",\"restaurants\":[";
    for (std::size_t r = 0; r < checks.size(); ++r) {
        const RestaurantCheck& c = checks[r];
        out << (r ? "," : "") << "{\"name\":" << Json(c.name)
            << ",\"reachable\":" << (c.reachable ? "true" : "false")
            << ",\"connectionError\":" << (c.connectionError.empty() ? "null" : Json(c.connectionError))
            << ",\"clockSkewSeconds\":" << (c.clockSkew ? std::to_string(*c.clockSkew) : "null")
            << ",\"pending\":{";
        for (std::size_t i = 0; i < std::size(kImporters); ++i) {
            out << (i ? "," : "") << "\"" << kImporters[i].key << "\":"
                << (c.pending[i] ? std::to_string(*c.pending[i]) : "null");
        }
        out << "},\"problems\":" << JsonList(c.problems) << ",\"warnings\":" << JsonList(c.warnings) << "}";
    }
    out << "],\"backOfficeWarnings\":" << JsonList(accessWarnings) << "}\n";
}

void PrintTable(std::ostream& out, bool settingsValid, const std::vector<RestaurantCheck>& checks) {
    out << "Restaurante\tLigação\tRelógio";
    for (const Importer& importer : kImporters) out << "\t" << importer.name;
    out << "\n";
    for (const RestaurantCheck& c : checks) {
        out << c.name << "\t" << (c.reachable ? "ok" : "FALHOU") << "\t"
            << (c.clockSkew ? fmt::format("{:+d} s", *c.clockSkew) : std::string("-"));
        for (const auto& count : c.pending) out << "\t" << (count ? std::to_string(*count) : "-");
        out << "\n";
    }
    for (const RestaurantCheck& c : checks) {
        for (const std::string& problem : c.problems) out << c.name << ": ERRO: " << problem << "\n";
        for (const std::string& warning : c.warnings) out << c.name << ": AVISO: " << warning << "\n";
    }
    out << (settingsValid ? "As configurações são válidas.\n"
                          : "ERRO: as configurações não são válidas ('kitra-host validate').\n");
}

}  // namespace

int RunCheck(CommandContext& context) {
    const bool json = context.TakeFlag("--json");
    ExpectArguments(context, 0, "check [--json]");
    ConnectorSession session(context, "check");
    const auto stored = session.Office().settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    if (!stored) {
        context.err << "kitra-host: não há configurações guardadas. Guarde-as com 'kitra-host "
                       "settings load FICHEIRO'.\n";
        return kExitFailure;
    }
    std::vector<RestaurantCheck> checks;
    bool settingsValid = session.Connector().ValidateSettings();
    try {
        const SettingsDocument document = SettingsDocument::Parse(*stored);
        for (const std::string& problem : document.Problems()) {
            context.err << "kitra-host: " << problem << "\n";
            settingsValid = false;
        }
        const std::vector<RestaurantSettings> restaurants = document.Restaurants();
        for (const RestaurantSettings& restaurant : restaurants) {
            checks.push_back(Check(restaurant));
            // The records it names that the back office lacks: a run would not start.
            for (const std::string& missing :
                 MissingRecordProblems(session.Office().GetDatabase(), {restaurant})) {
                const std::string who = "Restaurante '" + restaurant.name + "': ";
                checks.back().problems.push_back(missing.starts_with(who) ? missing.substr(who.size())
                                                                          : missing);
                settingsValid = false;
            }
        }
    } catch (const Error& error) {
        context.err << "kitra-host: as configurações guardadas não se deixam ler: "
                    << error.Description() << "\n";
        settingsValid = false;
    }
    const std::vector<std::string> accessWarnings = AccessWarnings(context.dataFolder);
    bool ok = settingsValid && accessWarnings.empty();
    for (const RestaurantCheck& c : checks) ok = ok && c.problems.empty() && c.warnings.empty();
    if (json) {
        PrintJson(context.out, ok, settingsValid, checks, accessWarnings);
    } else {
        PrintTable(context.out, settingsValid, checks);
        for (const std::string& warning : accessWarnings) context.out << "AVISO: " << warning << "\n";
    }
    return ok ? kExitOk : kExitAttention;
}

}  // namespace kitra::backoffice::cli
