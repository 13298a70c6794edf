// kitra-host execute: one import run, under the back office's run lock, and an exit code and
// error output that say whether it worked. The connector moves every restaurant's import dates
// to the present moment even when an importer failed, so a failure that only shows in the log
// would be passed over for good; the run's own log rows are read back to tell each failed
// restaurant apart, with what to do about it.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <ostream>
#include <set>

#include "backoffice/RunLock.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/ConnectorSession.h"
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

// The first line of a restaurant's log that reports an error; empty when there is none.
std::string FirstErrorLine(const std::string& contents) {
    std::size_t start = 0;
    while (start < contents.size()) {
        std::size_t end = contents.find('\n', start);
        if (end == std::string::npos) end = contents.size();
        std::string line = contents.substr(start, end - start);
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
        if (line.find("## Erro ##") != std::string::npos) return line;
        start = end + 1;
    }
    return {};
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

}  // namespace

// A group of the run's records is committed when it holds this many records or is this old.
constexpr int kRecordsPerCommit = 500;
constexpr int kMillisecondsPerCommit = 200;

// The records per commit in force: $KITRA_HOST_RECORDS_PER_COMMIT when it holds a whole number
// from 1 (every record committed at once, as the services do outside a run) up, else the above.
int RecordsPerCommit() {
    return static_cast<int>(
        WholeNumberFromEnvironment("KITRA_HOST_RECORDS_PER_COMMIT", kRecordsPerCommit, 1, 1000000));
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
    std::vector<RestaurantSettings> restaurants;
    std::string unreadable;  // why the stored settings cannot be read, when they cannot
    try {
        restaurants = SettingsDocument::Parse(*stored).Restaurants();
    } catch (const Error& error) {
        unreadable = error.Description();
    }
    office.GetDatabase().EnsureWritable();
    RequireUsableLogFolder(office);

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
        std::string problem, when;
        const auto rows = runRows.find(restaurant.name);
        if (rows != runRows.end()) {
            when = rows->second.back().first;
            problem = FirstErrorLine(rows->second.back().second);
        } else if (unsaved.contains(restaurant.name)) {
            continue;  // said above, with where its log is
        } else if (ended) {
            problem = "a importação não deixou registo de log deste restaurante.";
        } else {
            continue;  // not reached: the run ended before it
        }
        if (problem.empty()) continue;
        ++failed;
        context.err << "kitra-host: o restaurante '" << restaurant.name
                    << "' teve erros: " << problem << "\n";
        if (problem.find("Não foi possível estabelecer comunicação") != std::string::npos) {
            context.err << "  A razão dada pelo servidor ou pelo controlador ODBC: kitra-host check\n";
        }
        if (!when.empty()) {
            context.err << "  Log completo: kitra-host log show '" << restaurant.name << "' '"
                        << when << "'\n";
        }
        context.err << "  As datas de importação já avançaram; para importar de novo o que falhou, "
                       "recue-as:\n  kitra-host state set '"
                    << restaurant.name << "' --entities '" << restaurant.importDateEntities
                    << "' --transactions '" << restaurant.importDateTransactions << "'\n";
    }
    if (!unreadable.empty()) {
        // The connector reads such a text as empty settings and saves them; the text itself was
        // kept in the settings history when they were saved.
        context.err << "kitra-host: as configurações guardadas não se deixavam ler (" << unreadable
                    << "): nenhum restaurante foi importado e a importação guardou configurações "
                       "vazias. A versão anterior está em 'kitra-host settings history'; "
                       "reponha-a com 'kitra-host settings restore N' e corrija-a.\n";
        return ended ? kExitAttention : kExitFailure;
    }
    if (!ended) {
        // The dates are saved with the settings after the last restaurant; what fails after
        // that (the compaction of the back office) leaves them saved.
        if (office.settingsStore.StoredText(kSettingsKey1, kSettingsKey2) != stored) {
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
