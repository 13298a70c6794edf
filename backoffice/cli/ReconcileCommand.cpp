// kitra-host reconcile: each restaurant's documents, cash movements and receipts against what
// the back office keeps of them, over a period of the documents' own dates. It reads the
// restaurant (only SELECT, over the connection the import uses) and the back office, shows per
// kind how many there are and what they are worth on each side, then each record that is on one
// side only or differs, the `state set` command that makes the next run import them again, and
// for each record only the back office has, the command that takes it out.
#include <algorithm>
#include <optional>
#include <ostream>

#include <fmt/format.h>

#include "backoffice/BackOffice.h"
#include "backoffice/RestaurantImports.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/JsonText.h"
#include "backoffice/cli/PastableCommand.h"
#include "backoffice/cli/ReconcileSources.h"
#include "backoffice/cli/Reconciliation.h"
#include "backoffice/cli/RestaurantServer.h"
#include "core/DateTime.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

using namespace reconcile;

constexpr const char* kUsage = "reconcile [RESTAURANTE] [--from DATA] [--to DATA] [--json] [--all]";
// Differences shown per restaurant unless --all.
constexpr std::size_t kShownDifferences = 20;

struct RestaurantResult {
    std::string name;
    std::string series;
    std::string importDate;
    DocumentTypes types;
    bool readable = false;
    std::string error;
    Outcome outcome;
};

// "aaaa-mm-dd" (the whole day) or "aaaa-mm-dd hh:mm:ss".
std::string PeriodBound(const std::string& option, const std::string& text, bool endOfDay) {
    if (auto moment = ParseIsoDateTime(text)) return FormatIsoDateTime(*moment);
    if (text.size() == 10) {
        if (auto day = ParseIsoDateTime(text + (endOfDay ? " 23:59:59" : " 00:00:00")))
            return FormatIsoDateTime(*day);
    }
    throw UsageError("A data de '" + option + "' deve ter a forma aaaa-mm-dd ou \"aaaa-mm-dd "
                     "hh:mm:ss\": '" + text + "'.");
}

RestaurantResult ReconcileRestaurant(const RestaurantSettings& settings, const DocumentTypes& types,
                                     const KnownCodes& known, const Database& database,
                                     const Period& period) {
    RestaurantResult result;
    result.name = settings.name;
    result.series = settings.series;
    result.importDate = settings.importDateTransactions;
    result.types = types;
    const std::vector<std::string> problems = RestaurantSettingsProblems(settings);
    if (!problems.empty()) {
        for (const std::string& problem : problems) result.error += (result.error.empty() ? "" : " ") + problem;
        return result;  // such values would not reach the server they name
    }
    ado::Connection connection;
    try {
        connection = ConnectToRestaurant(settings);
    } catch (const std::exception& error) {
        result.error = "Não foi possível ligar ao servidor: " + DescriptionOf(error);
        return result;
    }
    Records restaurant;
    try {
        restaurant = ReadRestaurant(connection, types, period, known);
        connection.Close();
    } catch (const std::exception& error) {
        result.error = "Não foi possível ler o restaurante: " + DescriptionOf(error);
        return result;
    }
    result.readable = true;
    Records backOffice = ReadBackOffice(database, types, result.series, period);
    const CreditSales creditSales = ReadCreditSales(database, types, result.series);
    for (Kind kind : kKinds) {
        const auto k = static_cast<std::size_t>(kind);
        Reconcile(kind, std::move(restaurant[k]), std::move(backOffice[k]), result.series,
                  result.importDate, creditSales, result.outcome);
    }
    DecideRewind(result.outcome);
    return result;
}

std::vector<std::string> RewindCommands(const CommandContext& context, const RestaurantResult& r) {
    if (!r.outcome.rewindTo) return {};
    return {PastableCommand(context.dataFolder, {"state", "set", r.name, "--transactions", *r.outcome.rewindTo}),
            PastableCommand(context.dataFolder, {"execute"})};
}

// The command that takes out of the back office a record that only it has: the restaurant
// does not have it (any more), so no import ever takes it out.
std::optional<std::string> RemovalCommand(const CommandContext& context, const Difference& d,
                                          const std::string& series) {
    if (d.restaurant || !d.backOffice || d.backOffice->key == 0) return std::nullopt;
    const char* command = d.kind == Kind::CashMovements ? "cash-movement"
                          : d.kind == Kind::Receipts    ? "receipt"
                                                        : "document";
    return PastableCommand(context.dataFolder,
                           {command, "remove", d.backOffice->type,
                            series + "/" + std::to_string(d.backOffice->number)});
}

// The credit sales a receipt settles, by their back-office names: "FAC EXT/3, FAC EXT/4".
std::string CreditSaleNames(const std::vector<std::int32_t>& numbers, const std::string& type,
                            const std::string& series) {
    if (numbers.empty()) return "nenhuma venda a crédito";
    std::string list;
    for (std::int32_t n : numbers) list += fmt::format("{}{} {}/{}", list.empty() ? "" : ", ", type, series, n);
    return list;
}

// What differs, in words.
std::string Description(const Difference& d, const DocumentTypes& types, const std::string& series) {
    std::vector<std::string> parts;
    const Record* r = d.restaurant ? &*d.restaurant : nullptr;
    const Record* b = d.backOffice ? &*d.backOffice : nullptr;
    for (const std::string& what : d.differs) {
        if (what == "missing") {
            std::string text = "falta na retaguarda (total " + Money(r->cents);
            if (d.kind == Kind::Documents && r->voided) text += ", anulado";
            if (d.kind == Kind::CashMovements && !r->group.empty()) text += ", " + r->group;
            if (d.kind == Kind::Receipts) text += ", liquida " + CreditSaleNames(r->settles, types.creditSale, series);
            parts.push_back(text + ")");
        } else if (what == "onlyInBackOffice") {
            parts.push_back("só na retaguarda (total " + Money(b->cents) + ")");
        } else if (what == "total") {
            parts.push_back("total: restaurante " + Money(r->cents) + ", retaguarda " + Money(b->cents));
        } else if (what == "state") {
            parts.push_back(std::string("estado: restaurante ") + (r->voided ? "anulado" : "normal") +
                            ", retaguarda " + (b->voided ? "anulado" : "normal"));
        } else if (what == "date") {
            parts.push_back("data: restaurante " + r->date + ", retaguarda " + b->date);
        } else if (what == "customer") {
            parts.push_back(fmt::format("cliente: restaurante {}, retaguarda {}", r->customer, b->customer));
        } else if (what == "salesman") {
            parts.push_back(fmt::format("vendedor: restaurante {}, retaguarda {}", r->salesman, b->salesman));
        } else if (what == "settlements") {
            parts.push_back("liquida: restaurante " + CreditSaleNames(r->settles, types.creditSale, series) +
                            ", retaguarda " + CreditSaleNames(b->settles, types.creditSale, series));
        }
    }
    std::string text;
    for (const std::string& part : parts) text += (text.empty() ? "" : "; ") + part;
    if (d.pending) text += " (pendente: a próxima importação escolhe-o)";
    if (!d.obstacle.empty()) text += " (" + d.obstacle + ")";
    return text;
}

std::string SourceText(const Difference& d) {
    if (!d.restaurant) return "-";
    const Record& r = *d.restaurant;
    if (d.kind == Kind::Documents)
        return r.source + (r.selectedBy.empty() ? "" : ", alterado em " + r.selectedBy);
    return r.source;
}

void PrintText(std::ostream& out, std::ostream& err, const CommandContext& context,
               const std::vector<RestaurantResult>& results, const Period& period, bool all) {
    if (period.from.empty() && period.to.empty()) {
        out << "Período: tudo\n";
    } else if (period.to.empty()) {
        out << "Período: de " << period.from << " em diante\n";
    } else if (period.from.empty()) {
        out << "Período: até " << period.to << "\n";
    } else {
        out << "Período: de " << period.from << " a " << period.to << "\n";
    }
    for (const RestaurantResult& r : results) {
        out << "\nRestaurante " << r.name << " (série " << (r.series.empty() ? "-" : r.series) << ")\n";
        if (!r.readable) {
            out << "Não foi possível comparar: " << r.error << "\n";
            err << "kitra-host: " << r.name << ": ERRO: " << r.error << "\n";
            continue;
        }
        const Outcome& o = r.outcome;
        out << fmt::format("{:<12}{:>12}{:>14}{:>12}{:>14}{:>9}{:>11}\n", "Tipo", "Restaurante", "Total",
                           "Retaguarda", "Total", "Diferem", "Pendentes");
        for (Kind kind : kKinds) {
            const KindSummary& s = o.Summary(kind);
            out << fmt::format("{:<12}{:>12}{:>14}{:>12}{:>14}{:>9}{:>11}\n", KindName(kind),
                               s.restaurantCount, Money(s.restaurantCents), s.backOfficeCount,
                               Money(s.backOfficeCents), s.differing - s.pending, s.pending);
        }
        bool anyDay = false;
        for (Kind kind : kKinds) {
            for (const auto& [day, totals] : o.Summary(kind).days) {
                if (!anyDay) out << "Dias que diferem:\n";
                anyDay = true;
                out << fmt::format("{:<12}{:<12}{:<20} restaurante {} / {}, retaguarda {} / {}\n",
                                   KindName(kind), day.first.empty() ? "sem data" : day.first,
                                   day.second, totals.restaurantCount, Money(totals.restaurantCents),
                                   totals.backOfficeCount, Money(totals.backOfficeCents));
            }
        }
        if (o.differences.empty()) {
            out << "Tudo igual.\n";
            continue;
        }
        out << "Diferenças:\n";
        const std::size_t shown = all ? o.differences.size() : std::min(o.differences.size(), kShownDifferences);
        for (std::size_t i = 0; i < shown; ++i) {
            const Difference& d = o.differences[i];
            out << fmt::format("{:<12}{:<12}{}  [{}]  {}\n", KindName(d.kind),
                               d.day.empty() ? "sem data" : d.day, d.identity, SourceText(d),
                               Description(d, r.types, r.series));
        }
        if (shown < o.differences.size()) {
            out << "... e mais " << o.differences.size() - shown
                << " (--all mostra todas as diferenças).\n";
        }
        std::vector<std::string> removals;
        for (std::size_t i = 0; i < shown; ++i) {
            if (auto command = RemovalCommand(context, o.differences[i], r.series))
                removals.push_back(std::move(*command));
        }
        if (!removals.empty()) {
            out << "Para tirar da retaguarda o que só ela tem (importar de novo não o tira; veja "
                   "antes se o restaurante o tem com outra data ou outro total, abaixo ou acima):\n";
            for (const std::string& command : removals) out << "  " << command << "\n";
        }
        const bool stops = std::any_of(o.differences.begin(), o.differences.end(), [](const Difference& d) {
            return d.restaurant && !d.restaurant->unimportable.empty();
        });
        if (stops) {
            out << "Corrija primeiro no restaurante o que a importação não consegue guardar: a "
                   "importação pára nesse registo.\n";
        }
        const std::vector<std::string> rewind = RewindCommands(context, r);
        if (!rewind.empty()) {
            out << "Para importar de novo o que falta ou difere, recue a data das transacções de '"
                << r.name << "' e importe:\n";
            for (const std::string& command : rewind) out << "  " << command << "\n";
        } else if (o.Unresolved() > 0) {
            out << "Recuar as datas não resolve estas diferenças.\n";
        }
    }
}

std::string JsonOrNull(const std::string& text) { return text.empty() ? "null" : Json(text); }

std::string JsonMoney(std::int64_t cents) {
    std::string text = Money(cents);
    std::replace(text.begin(), text.end(), ',', '.');
    return text;
}

std::string JsonNumbers(const std::vector<std::int32_t>& numbers) {
    std::string list = "[";
    for (std::size_t i = 0; i < numbers.size(); ++i) list += (i ? "," : "") + std::to_string(numbers[i]);
    return list + "]";
}

std::string JsonRecord(Kind kind, const std::optional<Record>& record) {
    if (!record) return "null";
    const Record& r = *record;
    std::string json = "{\"date\":" + JsonOrNull(r.date) + ",\"total\":" + JsonMoney(r.cents) +
                       ",\"customer\":" + std::to_string(r.customer) +
                       ",\"salesman\":" + std::to_string(r.salesman);
    if (r.key != 0) json += ",\"number\":" + std::to_string(r.number);
    if (kind == Kind::Documents) json += std::string(",\"voided\":") + (r.voided ? "true" : "false");
    if (kind == Kind::CashMovements) json += ",\"comment\":" + Json(r.comment);
    if (kind == Kind::Receipts) json += ",\"settles\":" + JsonNumbers(r.settles);
    if (r.key == 0) json += ",\"source\":" + Json(r.source) + ",\"selectedBy\":" + JsonOrNull(r.selectedBy);
    return json + "}";
}

void PrintJson(std::ostream& out, const CommandContext& context, const std::vector<RestaurantResult>& results,
               const Period& period, bool all, bool ok) {
    out << "{\"ok\":" << (ok ? "true" : "false") << ",\"period\":{\"from\":" << JsonOrNull(period.from)
        << ",\"to\":" << JsonOrNull(period.to) << "},\"restaurants\":[";
    for (std::size_t i = 0; i < results.size(); ++i) {
        const RestaurantResult& r = results[i];
        const Outcome& o = r.outcome;
        out << (i ? "," : "") << "{\"name\":" << Json(r.name) << ",\"series\":" << Json(r.series)
            << ",\"readable\":" << (r.readable ? "true" : "false") << ",\"error\":" << JsonOrNull(r.error);
        out << ",\"summaries\":{";
        for (Kind kind : kKinds) {
            const KindSummary& s = o.Summary(kind);
            out << (kind == kKinds.front() ? "" : ",") << "\"" << KindKey(kind) << "\":{"
                << "\"restaurantCount\":" << s.restaurantCount
                << ",\"restaurantTotal\":" << JsonMoney(s.restaurantCents)
                << ",\"backOfficeCount\":" << s.backOfficeCount
                << ",\"backOfficeTotal\":" << JsonMoney(s.backOfficeCents)
                << ",\"differing\":" << s.differing - s.pending << ",\"pending\":" << s.pending
                << ",\"days\":[";
            bool first = true;
            for (const auto& [day, totals] : s.days) {
                out << (first ? "" : ",") << "{\"day\":" << JsonOrNull(day.first);
                if (kind == Kind::CashMovements) out << ",\"movementType\":" << Json(day.second);
                out << ",\"restaurantCount\":" << totals.restaurantCount
                    << ",\"restaurantTotal\":" << JsonMoney(totals.restaurantCents)
                    << ",\"backOfficeCount\":" << totals.backOfficeCount
                    << ",\"backOfficeTotal\":" << JsonMoney(totals.backOfficeCents) << "}";
                first = false;
            }
            out << "]}";
        }
        out << "},\"differences\":[";
        const std::size_t shown = all ? o.differences.size() : std::min(o.differences.size(), kShownDifferences);
        for (std::size_t d = 0; d < shown; ++d) {
            const Difference& difference = o.differences[d];
            out << (d ? "," : "") << "{\"kind\":\"" << KindKey(difference.kind)
                << "\",\"day\":" << JsonOrNull(difference.day)
                << ",\"identity\":" << Json(difference.identity) << ",\"differs\":[";
            for (std::size_t w = 0; w < difference.differs.size(); ++w)
                out << (w ? "," : "") << Json(difference.differs[w]);
            out << "],\"restaurant\":" << JsonRecord(difference.kind, difference.restaurant)
                << ",\"backOffice\":" << JsonRecord(difference.kind, difference.backOffice)
                << ",\"pending\":" << (difference.pending ? "true" : "false")
                << ",\"obstacle\":" << JsonOrNull(difference.obstacle)
                << ",\"remove\":" << JsonOrNull(RemovalCommand(context, difference, r.series).value_or(""))
                << ",\"description\":" << Json(Description(difference, r.types, r.series)) << "}";
        }
        const std::vector<std::string> rewind = RewindCommands(context, r);
        out << "],\"differencesLeftOut\":" << o.differences.size() - shown
            << ",\"rewind\":" << (rewind.empty() ? "null" : Json(rewind.front())) << "}";
    }
    out << "]}\n";
}

}  // namespace

int RunReconcile(CommandContext& context) {
    const bool json = context.TakeFlag("--json");
    const bool all = context.TakeFlag("--all");
    Period period;
    if (const auto from = context.TakeOption("--from")) period.from = PeriodBound("--from", *from, false);
    if (const auto to = context.TakeOption("--to")) period.to = PeriodBound("--to", *to, true);
    if (!period.from.empty() && !period.to.empty() && period.from > period.to)
        throw UsageError("O período termina antes de começar: --from " + period.from + ", --to " + period.to + ".");
    ExpectArguments(context, std::min<std::size_t>(context.arguments.size(), 1), kUsage);

    BackOffice office(context.dataFolder);
    const auto stored = office.settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    if (!stored) {
        context.err << "kitra-host: não há configurações guardadas. Guarde-as com 'kitra-host "
                       "settings load FICHEIRO'.\n";
        return kExitFailure;
    }
    std::vector<RestaurantSettings> restaurants;
    DocumentTypes types;
    try {
        const SettingsDocument settings = SettingsDocument::Parse(*stored);
        restaurants = settings.Restaurants();
        types = DocumentTypesOf(settings);
    } catch (const Error& error) {
        context.err << "kitra-host: as configurações guardadas não se deixam ler: " << error.Description() << "\n";
        return kExitFailure;
    }
    if (!context.arguments.empty()) {
        const std::string& wanted = context.arguments.front();
        std::string names;
        for (const RestaurantSettings& r : restaurants) names += (names.empty() ? "'" : ", '") + r.name + "'";
        std::erase_if(restaurants, [&](const RestaurantSettings& r) { return r.name != wanted; });
        if (restaurants.empty()) {
            context.err << "kitra-host: não há nenhum restaurante '" << wanted
                        << "' nas configurações guardadas" << (names.empty() ? "." : " (há " + names + ").")
                        << "\n";
            return kExitFailure;
        }
    }
    // A record is pending when the next run selects it, and the next run starts one second
    // before the last one began.
    const RestaurantImports imports(office.GetDatabase());
    for (RestaurantSettings& restaurant : restaurants)
        restaurant.importDateTransactions = NextImportFrom(restaurant, imports.Last(restaurant.name)).transactions;
    const KnownCodes known = ReadKnownCodes(office.GetDatabase());
    std::vector<RestaurantResult> results;
    for (const RestaurantSettings& restaurant : restaurants)
        results.push_back(ReconcileRestaurant(restaurant, types, known, office.GetDatabase(), period));

    bool unreadable = false, differs = false;
    for (const RestaurantResult& r : results) {
        unreadable = unreadable || !r.readable;
        differs = differs || r.outcome.Unresolved() > 0;
    }
    if (json) {
        PrintJson(context.out, context, results, period, all, !unreadable && !differs);
    } else {
        PrintText(context.out, context.err, context, results, period, all);
    }
    return unreadable ? kExitFailure : differs ? kExitAttention : kExitOk;
}

}  // namespace kitra::backoffice::cli
