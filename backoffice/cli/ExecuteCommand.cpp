// kitra-host execute: one import run, under the back office's run lock, and an exit code and
// error output that say whether it worked. The connector moves every restaurant's import dates
// to the present moment even when an importer failed, so a failure that only shows in the log
// would be passed over for good; the run's own log rows are read back to tell each failed
// restaurant apart, with what to do about it, and each restaurant whose records were left out.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string_view>
#include <thread>

#include "backoffice/LogProblems.h"
#include "backoffice/RestaurantImports.h"
#include "backoffice/RunLock.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/ConnectorSession.h"
#include "backoffice/cli/PastableCommand.h"
#include "backoffice/cli/SettingsRefusals.h"
#include "core/Clock.h"
#include "core/DateTime.h"
#include "core/Environment.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

using LogKey = std::pair<std::string, std::string>;  // restaurant, "yyyy-mm-dd hh:mm:ss"

// The import log's rows written at or after `since`, with their contents.
std::map<LogKey, std::string> LogRowsSince(BackOffice& office, const std::string& since) {
    std::map<LogKey, std::string> rows;
    if (!office.schema.TableExists("Kitra2Log")) return rows;
    ado::Recordset rs = office.connection.Query(host::SqlStatement(
        "SELECT RestaurantID, ImportDate, Contents FROM Kitra2Log WHERE ImportDate >= ?",
        {Variant(since)}));
    for (; !rs.Eof(); rs.MoveNext()) {
        rows[{rs["RestaurantID"].ToText(), FormatIsoDateTime(rs["ImportDate"].ToDate())}] =
            rs["Contents"].IsNull() ? std::string() : rs["Contents"].ToText();
    }
    return rows;
}

// What an importer's error line says: "<step> - ## Erro ## ao importar a tabela de X. Y: <record>
// : <stage> - <reason>". Lines of another form (a server that could not be reached) give
// nothing.
struct StoppedStep {
    std::string step, record, stage, reason;
};
std::optional<StoppedStep> StoppedStepOf(const std::string& line) {
    constexpr std::string_view kError = " - ## Erro ## ao importar a tabela de ";
    const std::size_t error = line.find(kError);
    if (error == std::string::npos) return std::nullopt;
    StoppedStep stopped;
    stopped.step = line.substr(0, error);
    const std::size_t recordStart = line.find(": ", error + kError.size());
    const std::size_t stageStart = line.find(" : ", recordStart == std::string::npos ? error : recordStart);
    if (recordStart == std::string::npos || stageStart == std::string::npos) return std::nullopt;
    stopped.record = line.substr(recordStart + 2, stageStart - recordStart - 2);
    const std::size_t reasonStart = line.find(" - ", stageStart + 3);
    if (reasonStart == std::string::npos) return std::nullopt;
    stopped.stage = line.substr(stageStart + 3, reasonStart - stageStart - 3);
    stopped.reason = line.substr(reasonStart + 3);
    return stopped;
}

// Whether an importer stopped on a value of the restaurant's own record (a NULL where a value
// must be, a text where a number must be) rather than on the back office or the connection.
bool CauseIsInTheRestaurantData(const StoppedStep& stopped) {
    for (const char* sign : {"Invalid use of Null", "Type mismatch", "Overflow", "não é um número",
                             "não é uma data"}) {
        if (stopped.reason.find(sign) != std::string::npos) return true;
    }
    return false;
}

// Tells on stderr what a restaurant's log says went wrong, and how to bring in what was left
// behind: the records after the one that stopped a step were not imported, and the dates have
// moved past them.
void TellFailedRestaurant(CommandContext& context, const RestaurantSettings& restaurant,
                          const std::vector<std::string>& errors, const std::string& when) {
    bool noServer = false, inData = false;
    for (std::size_t i = 0; i < errors.size(); ++i) {
        const std::string& line = errors[i];
        const std::optional<StoppedStep> stopped = StoppedStepOf(line);
        if (!stopped) {
            if (i > 0) context.err << "  " << line << "\n";  // the first is on the line above
            noServer = noServer || line.find("Não foi possível estabelecer comunicação") != std::string::npos;
            continue;
        }
        context.err << "  O passo '" << stopped->step << "' parou no registo '" << stopped->record
                    << "' (etapa '" << stopped->stage << "'): " << stopped->reason
                    << "\n  Os registos seguintes desse passo não foram importados.\n";
        if (CauseIsInTheRestaurantData(*stopped)) {
            inData = true;
            context.err << "  A causa está nos dados do restaurante: corrija esse registo no "
                           "restaurante e depois recue as datas (abaixo).\n";
        }
    }
    if (noServer) {
        context.err << "  Para ver a razão dada pelo servidor ou pelo controlador ODBC:\n    "
                    << PastableCommand(context.dataFolder, {"check"}) << "\n";
    }
    if (!when.empty()) {
        context.err << "  Log completo:\n    "
                    << PastableCommand(context.dataFolder, {"log", "show", restaurant.name, when})
                    << "\n";
    }
    context.err << "  Para ver o que ficou por importar:\n    "
                << PastableCommand(context.dataFolder, {"reconcile", restaurant.name}) << "\n";
    context.err << "  As datas de importação já avançaram; para importar de novo o que falhou"
                << (inData ? ", depois de corrigido," : "") << " recue-as:\n    "
                << PastableCommand(context.dataFolder,
                                   {"state", "set", restaurant.name, "--entities",
                                    restaurant.importDateEntities, "--transactions",
                                    restaurant.importDateTransactions})
                << "\n";
}

// The log folder holds each restaurant's log while it is imported and the logs the back office
// could not store. A run without it would end at its first log line, so the run does not start;
// a missing folder is made.
void RequireUsableLogFolder(const BackOffice& office) {
    const std::string notStarted =
        " A importação não começou: nada foi importado e as datas de importação ficaram como "
        "estavam.";
    std::string folder;
    try {
        folder = office.application.LogFolder();
    } catch (const Error& error) {
        throw Error(error.Description() + notStarted);
    }
    const std::filesystem::path probe = std::filesystem::path(folder) / ".kitra-host-teste";
    const int descriptor = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        throw Error("Não é possível escrever na pasta de registos '" + folder + "': " +
                    std::strerror(errno) + "." + notStarted);
    }
    ::close(descriptor);
    ::unlink(probe.c_str());
}

// A restaurant's log file stays in the log folder only while its restaurant is imported; one
// found before a run was left by a run that was killed. Its text is stored as that import's log
// row (marked as cut short), or, when it cannot be, kept under the name of the logs the back
// office could not store; either way stderr names it, because what that import did not reach
// needs a look.
void StoreLogsOfKilledRuns(CommandContext& context, BackOffice& office) {
    std::filesystem::path folder;
    try {
        folder = office.application.LogFolder();
    } catch (const Error&) {
        return;  // RequireUsableLogFolder says why
    }
    std::error_code error;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        if (!entry.is_regular_file(error) || !name.ends_with(".txt") ||
            name.ends_with(kUnsavedLogSuffix))
            continue;
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        // <restaurant><yyyymmdd_hhmmss>.txt
        const std::string name = file.stem().string();
        if (name.size() <= 15) continue;
        const std::string stamp = name.substr(name.size() - 15);
        const std::string restaurant = name.substr(0, name.size() - 15);
        std::string moment;
        if (stamp[8] != '_') continue;
        moment = stamp.substr(0, 4) + "-" + stamp.substr(4, 2) + "-" + stamp.substr(6, 2) + " " +
                 stamp.substr(9, 2) + ":" + stamp.substr(11, 2) + ":" + stamp.substr(13, 2);
        if (!IsIsoDateTime(moment)) continue;
        std::ifstream in(file, std::ios::binary);
        std::string contents((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        contents += "\r\n # A importação foi interrompida antes do fim deste restaurante; este log "
                    "foi guardado pela importação seguinte. #\r\n";
        try {
            if (!office.schema.TableExists("Kitra2Log"))
                throw Error("a tabela de log ainda não existe.");
            office.connection.Execute(host::SqlStatement(
                "INSERT INTO Kitra2Log (RestaurantID, Contents, ImportDate) VALUES (?,?,?)",
                {Variant(restaurant), Variant(contents), Variant(moment)}));
            std::filesystem::remove(file, error);
            context.err << "kitra-host: a importação do restaurante '" << restaurant << "' de "
                        << moment << " foi interrompida antes do fim; o seu log foi guardado:\n    "
                        << PastableCommand(context.dataFolder, {"log", "show", restaurant, moment})
                        << "\n  Veja o que ficou por importar:\n    "
                        << PastableCommand(context.dataFolder, {"reconcile", restaurant}) << "\n";
        } catch (const std::exception& failure) {
            std::filesystem::path kept = file;
            kept.replace_filename(name + kUnsavedLogSuffix);
            std::filesystem::rename(file, kept, error);
            context.err << "kitra-host: a importação do restaurante '" << restaurant << "' de "
                        << moment << " foi interrompida antes do fim; o seu log não pôde ser "
                        << "guardado (" << DescriptionOf(failure) << ") e ficou em '"
                        << (error ? file : kept).string() << "'.\n  Veja o que ficou por importar:\n    "
                        << PastableCommand(context.dataFolder, {"reconcile", restaurant}) << "\n";
        }
    }
}

// A run starts no earlier than the second after the last one logged: a restaurant's log row
// is keyed by its restaurant and the second its import ended, and a run right after another
// could end a restaurant in that same second, and its row would not be stored. A last row more
// than a few seconds ahead of the clock is a clock set back, not a run just ended: no wait.
void WaitPastTheLastLoggedSecond(BackOffice& office) {
    if (!office.schema.TableExists("Kitra2Log")) return;
    ado::Recordset rs = office.connection.Query(
        host::SqlStatement("SELECT ImportDate FROM Kitra2Log ORDER BY ImportDate DESC LIMIT 1"));
    if (rs.Eof() || rs["ImportDate"].IsNull()) return;
    const DateTime last = rs["ImportDate"].ToDate();
    const DateTime now = SystemClock().Now();
    if (now > last || last.ToSerial() - now.ToSerial() > 3.0 / 86400) return;
    while (SystemClock().Now() <= last) std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

// Keeps, for each restaurant whose dates the run moved, the second its import began and the
// dates it left: where its next run starts.
void RecordRestaurantImports(CommandContext& context, BackOffice& office, RestaurantImports& imports,
                             const std::vector<RestaurantSettings>& before,
                             const std::string& runSettings,
                             const std::map<std::string, DateTime>& began) {
    const auto after = office.settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    if (!after || *after == runSettings) return;  // the run saved no dates
    for (const RestaurantSettings& restaurant : StoredRestaurants(after)) {
        const auto start = began.find(restaurant.name);
        if (start == began.end()) continue;
        const auto was = std::find_if(before.begin(), before.end(), [&](const RestaurantSettings& r) {
            return r.name == restaurant.name;
        });
        if (was != before.end() && was->importDateEntities == restaurant.importDateEntities &&
            was->importDateTransactions == restaurant.importDateTransactions)
            continue;
        try {
            imports.Record({restaurant.name, start->second, restaurant.importDateEntities,
                            restaurant.importDateTransactions});
        } catch (const std::exception& failure) {
            context.err << "kitra-host: aviso: não foi possível guardar o início da importação de '"
                        << restaurant.name << "' (" << DescriptionOf(failure)
                        << "); a próxima importação começa nas datas que esta deixou.\n";
        }
    }
}

}  // namespace

// A group of the run's records is committed when it holds this many records or is this old.
// Each commit writes again every page the group touched, and a document touches the same few
// thousand index pages as the one before it (lines and stock by item, documents by customer):
// groups of seconds write each of them once where groups of a tenth of a second wrote them
// dozens of times. Another program that writes meanwhile waits at most about this long, well
// within its busy time-out.
constexpr int kRecordsPerCommit = 20000;
constexpr int kMillisecondsPerCommit = 5000;

// The records per commit in force: $KITRA_HOST_RECORDS_PER_COMMIT when it holds a whole number
// from 1 (every record committed at once, as the services do outside a run) up, else the above.
int RecordsPerCommit() {
    return static_cast<int>(
        WholeNumberFromEnvironment("KITRA_HOST_RECORDS_PER_COMMIT", kRecordsPerCommit, 1, 1000000));
}

// How long a run's writes wait for another program's lock on the back office: 15 minutes, or
// $KITRA_HOST_RUN_BUSY_TIMEOUT_MS. An interactive command gives up after the connection's busy
// time-out (30 s); a run has time, and a write that gives up ends its importer with the rest
// of its records left behind.
constexpr int kRunBusyTimeoutMilliseconds = 15 * 60 * 1000;

int RunBusyTimeoutMilliseconds() {
    return static_cast<int>(WholeNumberFromEnvironment(
        "KITRA_HOST_RUN_BUSY_TIMEOUT_MS", kRunBusyTimeoutMilliseconds, 0, INT_MAX));
}

int RunExecute(CommandContext& context) {
    ProgressDetail detail = ProgressDetail::Normal;
    const bool quiet = context.TakeFlag("--quiet");
    const bool verbose = context.TakeFlag("--verbose");
    if (quiet && verbose) throw UsageError("Escolha '--quiet' ou '--verbose', não os dois.");
    if (quiet) detail = ProgressDetail::Quiet;
    if (verbose) detail = ProgressDetail::Verbose;
    ExpectArguments(context, 0, "execute [--quiet|--verbose]");

    RunLock lock(context.dataFolder, "a importação");
    ConnectorSession session(context, "execute", detail);
    BackOffice& office = session.Office();
    const auto stored = office.settingsStore.StoredText(kSettingsKey1, kSettingsKey2);
    if (!stored) {
        context.err << "kitra-host: não há configurações guardadas; nada foi importado. Guarde-as "
                       "com 'kitra-host settings load FICHEIRO'.\n";
        return kExitFailure;
    }
    const std::string notStarted =
        "kitra-host: a importação não começou: nada foi importado e as datas de importação "
        "ficaram como estavam.";
    std::vector<RestaurantSettings> restaurants;
    try {
        restaurants = SettingsDocument::Parse(*stored).Restaurants();
    } catch (const Error& error) {
        // The connector would read such a text as empty settings and save them over it.
        context.err << "kitra-host: as configurações guardadas não se deixam ler ("
                    << error.Description() << ").\n"
                    << notStarted << " Uma versão anterior está em 'kitra-host settings history'; "
                    << "reponha-a com 'kitra-host settings restore N' e corrija-a.\n";
        return kExitFailure;
    }
    // Settings that cannot import are refused before the connector runs, never half-way: caught
    // in the run, a restaurant sharing a series would replace another's documents, a document
    // type not chosen would leave its documents out as warnings and a record the back office
    // lacks would stop the documents or take them in without it, each time with the dates moved
    // past what was left.
    std::vector<std::string> refusals = SharedSeriesProblems(restaurants);
    for (std::string& refusal : ImportRefusals(session, *stored)) refusals.push_back(std::move(refusal));
    if (!refusals.empty()) {
        for (const std::string& refusal : refusals) context.err << "kitra-host: " << refusal << "\n";
        context.err << notStarted << " Corrija as configurações ("
                    << PastableCommand(context.dataFolder, {"settings", "load", "FICHEIRO"}) << " ou "
                    << PastableCommand(context.dataFolder, {"settings", "set", "RESTAURANTE", "ATRIBUTO", "VALOR"})
                    << ") ou crie o que falta na retaguarda.\n";
        return kExitFailure;
    }
    std::ostream& err = context.err;
    office.GetDatabase().SetBusyWait(RunBusyTimeoutMilliseconds(), [&err](int waited, int most) {
        err << "kitra-host: a retaguarda está bloqueada por outro programa; a importação espera que "
               "ele termine a escrita (" << waited << " s de no máximo " << most << " s).\n";
        err.flush();
    });
    office.GetDatabase().EnsureWritable();
    RequireUsableLogFolder(office);
    StoreLogsOfKilledRuns(context, office);
    WaitPastTheLastLoggedSecond(office);

    // Each restaurant starts again from one second before its last import began, so that what
    // changed while that import went on, or in the second it ended, comes again.
    RestaurantImports imports(office.GetDatabase());
    std::string runSettings = *stored;  // what the connector is given to start from
    {
        SettingsDocument document = SettingsDocument::Parse(*stored);
        bool moved = false;
        for (RestaurantSettings& restaurant : restaurants) {
            const std::optional<RestaurantImport> last = imports.Last(restaurant.name);
            const NextImportDates next = NextImportFrom(restaurant, last);
            if (next.entities == restaurant.importDateEntities &&
                next.transactions == restaurant.importDateTransactions)
                continue;
            document.SetImportDates(restaurant.name, next.entities, next.transactions);
            if (detail != ProgressDetail::Quiet) {
                context.out << "Restaurante '" << restaurant.name << "': as datas de importação "
                            << "recuam para " << SecondBefore(last->startedAt)
                            << ", um segundo antes do início da importação anterior ("
                            << FormatIsoDateTime(last->startedAt)
                            << "), para que o que mudou durante ela venha de novo.\n";
            }
            restaurant.importDateEntities = next.entities;
            restaurant.importDateTransactions = next.transactions;
            moved = true;
        }
        if (moved) {
            runSettings = document.Text();
            office.settingsStore.SetOrigin("execute (início da importação anterior)");
            office.settingsStore.SaveText(kSettingsKey1, kSettingsKey2, runSettings);
            office.settingsStore.SetOrigin("execute");
        }
    }
    // The second each restaurant's import begins, as the run announces it.
    std::map<std::string, DateTime> began;
    session.Notifier().statusSeen = [&began](const std::string& text) {
        constexpr std::string_view kStarting = "A integrar Restaurante: ";
        if (text.starts_with(kStarting))
            began.emplace(text.substr(kStarting.size()), SystemClock().Now());
    };

    // The run's rows are those written since a minute before its start that were not there
    // before it (the run before may have written one in the same second).
    const DateTime start = SystemClock().Now();
    const std::string since = FormatIsoDateTime(DateTime::FromSerial(start.ToSerial() - 60.0 / 86400));
    const auto before = LogRowsSince(office, since);
    {
        // The run's records are committed in groups: a commit per record is most of what saving
        // a small record costs. Another program that writes to the back office meanwhile waits
        // at most about the group's time.
        GroupedCommits grouped(office.GetDatabase(), RecordsPerCommit(), kMillisecondsPerCommit);
        session.Connector().Execute();
        grouped.End();
    }
    session.Notifier().statusSeen = nullptr;
    RecordRestaurantImports(context, office, imports, restaurants, runSettings, began);
    std::map<std::string, std::vector<std::pair<std::string, std::string>>> runRows;  // by restaurant
    for (auto& [key, contents] : LogRowsSince(office, since)) {
        if (!before.contains(key)) runRows[key.first].push_back({key.second, contents});
    }
    std::map<std::string, const UnsavedLogRow*> unsaved;
    for (const UnsavedLogRow& row : office.connection.UnsavedLogRows()) {
        unsaved[row.restaurant] = &row;
        context.err << "kitra-host: o registo de log do restaurante '" << row.restaurant
                    << "' não foi guardado na retaguarda: " << row.reason << "\n";
        if (!row.file.empty())
            context.err << "  O texto do log ficou em '" << row.file << "'.\n";
    }

    const bool ended = session.RunEnded();
    int failed = 0;
    for (const RestaurantSettings& restaurant : restaurants) {
        std::vector<std::string> errors;
        std::string when;
        const auto rows = runRows.find(restaurant.name);
        const auto notStored = unsaved.find(restaurant.name);
        if (rows != runRows.end()) {
            when = rows->second.back().first;
            errors = ErrorLines(rows->second.back().second);
        } else if (notStored != unsaved.end()) {
            // Said above, with where its text is; its errors are told here all the same.
            errors = ErrorLines(notStored->second->contents);
            if (errors.empty()) {
                if (!ended) continue;  // the run ended before the dates were saved
                context.err << "kitra-host: o restaurante '" << restaurant.name
                            << "' foi importado, mas o seu log não foi guardado (acima).\n";
                continue;
            }
        } else if (ended) {
            errors = {"a importação não deixou registo de log deste restaurante."};
        } else {
            continue;  // not reached: the run ended before it
        }
        if (errors.empty()) continue;
        ++failed;
        context.err << "kitra-host: o restaurante '" << restaurant.name
                    << "' teve erros: " << errors.front() << "\n";
        TellFailedRestaurant(context, restaurant, errors, when);
    }
    // Records left out do not fail a run, but only the log tells of them otherwise.
    for (const RestaurantSettings& restaurant : restaurants) {
        const auto rows = runRows.find(restaurant.name);
        if (rows == runRows.end()) continue;
        const std::vector<std::string> warnings = WarningLines(rows->second.back().second);
        if (warnings.empty()) continue;
        context.err << "kitra-host: o restaurante '" << restaurant.name << "' teve "
                    << (warnings.size() == 1
                            ? std::string("1 aviso (registo deixado de fora): ")
                            : std::to_string(warnings.size()) +
                                  " avisos (registos deixados de fora); o primeiro: ")
                    << warnings.front() << ". Log completo: "
                    << PastableCommand(context.dataFolder,
                                       {"log", "show", restaurant.name, rows->second.back().first})
                    << "\n";
    }
    if (!ended) {
        // The dates are saved with the settings after the last restaurant; what fails after
        // that (the compaction of the back office) leaves them saved.
        if (office.settingsStore.StoredText(kSettingsKey1, kSettingsKey2) != runSettings) {
            context.err << "kitra-host: a importação não chegou ao fim, mas todos os restaurantes "
                           "foram importados e as novas datas de importação foram guardadas. "
                           "Veja a mensagem acima.\n";
            return kExitAttention;
        }
        context.err << "kitra-host: a importação não chegou ao fim; as novas datas de importação "
                       "não foram guardadas. Veja a mensagem acima e 'kitra-host log list'.\n";
        return kExitFailure;
    }
    return failed > 0 || !unsaved.empty() ? kExitAttention : kExitOk;
}

}  // namespace kitra::backoffice::cli
