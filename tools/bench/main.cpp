// kitra-bench: measures one import run against its floors and keeps the figures as CSV.
// ./kitra bench drives it; see the usage below and docs/performance.md.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "ado/DriverRegistration.h"
#include "core/Environment.h"
#include "core/Error.h"
#include "import/DocumentReadAhead.h"
#include "tools/bench/Bench.h"

namespace {

using namespace kitra::bench;

constexpr const char* kUsage =
    "usage:\n"
    "  kitra-bench import --host-program PATH --data DIR --factor X --csv FILE --settings XML\n"
    "                     --server HOST --port N --database NAME --user USER --password PASS\n"
    "                     [--runs N] [--restaurant NAME] [--server-pid PID]\n"
    "                     [--since \"yyyy-mm-dd hh:mm:ss\"]\n"
    "      N runs (3 unless told), in turns, of: the fetch floor (the import's statements, the\n"
    "      documents' lines and payments read ahead as the import reads them), 'PATH --data DIR\n"
    "      execute' from the back office as DIR holds it now (what it brought counted against\n"
    "      the restaurant, by the settings XML for restaurant NAME, 'Medida' unless told), and\n"
    "      the write floor over what it wrote; then the statements one after another (latency)\n"
    "      and a re-import after rewinding NAME's dates; the processor time of each, and of the\n"
    "      restaurant's server (PID); appends every run to FILE; exits 1 when a count differs\n"
    "  kitra-bench turns --host-program PATH --csv FILE\n"
    "                    --small-data DIR --small-factor X --large-data DIR --large-factor Y\n"
    "                    [--turns N] [--server-pid PID]\n"
    "      runs the imports of the two factors in turns (X, Y, X, ... Y, X: N runs of Y, 1 unless\n"
    "      told), each from its back office as DIR holds it now, with the processor time of the\n"
    "      import and of the restaurant's server (PID); appends each run to FILE\n"
    "  kitra-bench summary --csv FILE\n"
    "      the verdict over FILE: for each factor the medians of its runs, the import against\n"
    "      its floor (the larger of fetch and write) and against the floors' processor time,\n"
    "      the re-import against the import, the counts against the restaurant's and the peak\n"
    "      memory; between two factors how time grows with the data; for runs in turns, each\n"
    "      larger run against the smaller ones on either side of it; exits 1 when a goal is\n"
    "      missed or a figure is missing, with the reasons\n";

// The goals the import is held to on the machine the bench runs on.
// The import within 1.15 times its floor: the larger of the fetch (read ahead as the import
// reads) and the write, since the import saves while its further connections read.
constexpr double kFloorRatioGoal = 1.15;
// The import's own processor time within 1.3 times the fetch floor's and the write floor's
// together: a change that costs processor time shows even when the other core hides it.
constexpr double kCpuRatioGoal = 1.3;
// Everything imported again after a full rewind within twice the first import's time.
constexpr double kReimportGoal = 2.0;
constexpr double kPeakRssGoalMegabytes = 300;
constexpr double kGrowthGoal = 1.1;  // time grows at most 1.1 times as fast as the data
// From the bench size to a restaurant's whole history, measured in turns: the larger factor's
// time grows at most 1.05 times as fast as the data (factor 10 in 10.5 times factor 1's time).
constexpr double kTurnsGrowthGoal = 1.05;

struct Arguments {
    std::map<std::string, std::string> options;

    const std::string& Required(const std::string& name) const {
        auto found = options.find(name);
        if (found == options.end()) throw std::invalid_argument("missing " + name);
        return found->second;
    }
    std::string Or(const std::string& name, const std::string& fallback) const {
        auto found = options.find(name);
        return found == options.end() ? fallback : found->second;
    }
};

Arguments Parse(int argc, char** argv, int first) {
    Arguments arguments;
    for (int i = first; i < argc; ++i) {
        const std::string name = argv[i];
        if (!name.starts_with("--") || i + 1 >= argc)
            throw std::invalid_argument("unexpected argument: " + name);
        arguments.options[name] = argv[++i];
    }
    return arguments;
}

double RatePerSecond(double rows, double seconds) { return seconds > 0 ? rows / seconds : 0; }

// One line of the CSV: factor, part, statements, rows, seconds, peak RSS (MB).
void AppendCsv(std::ostream& csv, const std::string& factor, const std::string& part,
               long statements, double rows, double seconds, double rssMegabytes) {
    csv << factor << ',' << '"' << part << '"' << ',' << statements << ',' << fmt::format("{:.0f}", rows)
        << ',' << fmt::format("{:.3f}", seconds) << ',' << fmt::format("{:.1f}", rssMegabytes) << '\n';
}

int RunsWanted(const Arguments& arguments) {
    const std::string text = arguments.Or("--runs", "3");
    const std::optional<long> runs = kitra::WholeNumberWithin(text.c_str(), 1, 20);
    if (!runs) throw std::invalid_argument("--runs must be a whole number from 1 to 20, not " + text);
    return static_cast<int>(*runs);
}

// One import run: 'HOST --data DATA execute', its output kept in DATA/bench-run.txt.
RunResult MeasureImport(const std::string& host, const std::string& data,
                        std::optional<long> serverPid = std::nullopt) {
    return MeasureRun({host, "--data", data, "execute"}, data + "/bench-run.txt", serverPid);
}

// Says that a run failed and where its output is; the bench's exit code.
int ImportFailed(const RunResult& run, const std::string& data) {
    std::cerr << fmt::format("the import ended with exit code {} (its output is in {}/bench-run.txt)\n",
                             run.exitCode, data);
    return 1;
}

std::optional<long> ServerPid(const Arguments& arguments) {
    const std::string pid = arguments.Or("--server-pid", "");
    if (pid.empty()) return std::nullopt;
    const std::optional<long> number = kitra::WholeNumberWithin(pid.c_str(), 1, 1L << 30);
    if (!number) throw std::invalid_argument("--server-pid must be a process id, not " + pid);
    return number;
}

// The kinds of records the bench counts on both sides, as the CSV names them.
constexpr std::pair<const char*, long ImportCounts::*> kCountedKinds[] = {
    {"documents", &ImportCounts::documents},         {"lines", &ImportCounts::lines},
    {"payments", &ImportCounts::payments},           {"cash movements", &ImportCounts::cashMovements},
    {"receipts", &ImportCounts::receipts},
};

// The back office's counts against the restaurant's, kept in the CSV (`import count: <kind>`,
// `restaurant count: <kind>`); true when every kind matches. A difference is printed with the
// figures on stderr.
bool CheckCounts(std::ostream& csv, const std::string& factor, const std::string& what, const ImportCounts& restaurant,
                 const ImportCounts& backOffice) {
    bool same = true;
    std::string differences;
    for (const auto& [kind, member] : kCountedKinds) {
        AppendCsv(csv, factor, fmt::format("{} count: {}", what, kind), 0, static_cast<double>(backOffice.*member), 0, 0);
        if (restaurant.*member != backOffice.*member) {
            same = false;
            differences += fmt::format("  {}: the restaurant holds {}, the back office {}\n", kind, restaurant.*member,
                                       backOffice.*member);
        }
    }
    if (!same) std::cerr << fmt::format("factor {}: the {} brought other counts than the restaurant holds:\n{}", factor, what, differences);
    return same;
}

// Says what one measured run took, as soon as it has ended.
std::string CpuText(double client, double server, bool serverKnown) {
    return serverKnown ? fmt::format("cpu {:.1f} s + server {:.1f} s", client, server) : fmt::format("cpu {:.1f} s", client);
}

// The phase of a run as its summary names its count ("Movimentos Caixa" reports "Mov.Caixa").
std::optional<long> ReportedFor(const RunResult& run, const std::string& phase) {
    const std::string label = phase == "Movimentos Caixa" ? "Mov.Caixa" : phase;
    for (const auto& [name, count] : run.reported) {
        if (name == label) return count;
    }
    return std::nullopt;
}

// The import and its floors, in alternating runs: for each run the parallel fetch floor, the
// import from the fresh back office (its counts checked against the restaurant's) and the write
// floor over what it wrote; then the sequential fetch (the round trip's latency) and a re-import
// of everything after a full rewind. Every figure goes to the CSV; the summary takes the medians.
int Import(const Arguments& arguments) {
    const std::string host = arguments.Required("--host-program");
    const std::string data = arguments.Required("--data");
    const std::string factor = arguments.Required("--factor");
    const std::string csvFile = arguments.Required("--csv");
    const std::string settingsFile = arguments.Required("--settings");
    const std::string restaurantName = arguments.Or("--restaurant", "Medida");
    const int runs = RunsWanted(arguments);
    const std::optional<long> serverPid = ServerPid(arguments);

    FetchFloorOptions fetchOptions;
    fetchOptions.server = arguments.Required("--server");
    fetchOptions.port = arguments.Required("--port");
    fetchOptions.database = arguments.Required("--database");
    fetchOptions.user = arguments.Required("--user");
    fetchOptions.password = arguments.Required("--password");
    fetchOptions.entityImportDate = fetchOptions.transactionImportDate =
        arguments.Or("--since", "2000-01-01 00:00:00");
    fetchOptions.serverPid = serverPid;
    const ImportMapping mapping = ReadImportMapping(settingsFile, restaurantName);
    fetchOptions.mappedDocumentTypes = mapping.documentTypes;
    const FetchMode parallel{kitra::DocumentReadAheadConnections(), kitra::kDocumentReadAheadWindow};
    const std::string backOfficeFile = data + "/backoffice.sqlite";

    std::ofstream csv(csvFile, std::ios::app);
    std::cout << fmt::format("factor {}: {} run{} each of the fetch floor ({} further connections, {} ahead), the "
                             "import and the write floor, in turns\n",
                             factor, runs, runs == 1 ? "" : "s", parallel.furtherConnections, parallel.window)
              << std::flush;
    const FreshBackOffice fresh(data);
    std::vector<RunResult> imports;
    FetchResult lastFetch;
    std::optional<ImportCounts> restaurantCounts;
    bool countsMatch = true;
    for (int run = 1; run <= runs; ++run) {
        const FetchResult fetch = MeasureFetchFloor(fetchOptions, parallel);
        long fetchStatements = 0, fetchRows = 0;
        for (const FetchKind& kind : fetch.kinds) {
            fetchStatements += kind.statements;
            fetchRows += kind.rows;
        }
        AppendCsv(csv, factor, fmt::format("fetch run {}", run), fetchStatements, static_cast<double>(fetchRows),
                  fetch.seconds, 0);
        AppendCsv(csv, factor, fmt::format("fetch run {} cpu", run), 0, 0, fetch.cpuSeconds, 0);
        if (serverPid) AppendCsv(csv, factor, fmt::format("fetch run {} server cpu", run), 0, 0, fetch.serverCpuSeconds, 0);
        std::cout << fmt::format("  run {} of {}: fetch floor {:.1f} s, {}\n", run, runs, fetch.seconds,
                                 CpuText(fetch.cpuSeconds, fetch.serverCpuSeconds, serverPid.has_value()))
                  << std::flush;
        lastFetch = fetch;

        if (run > 1) fresh.Restore();
        RunResult result = MeasureImport(host, data, serverPid);
        if (result.exitCode != 0) return ImportFailed(result, data);
        const double rss = static_cast<double>(result.peakRssKilobytes) / 1024.0;
        const std::optional<long> documents = ReportedFor(result, "Transacções");
        AppendCsv(csv, factor, fmt::format("import run {}", run), 0, static_cast<double>(documents.value_or(0)),
                  result.wallSeconds, rss);
        AppendCsv(csv, factor, fmt::format("import run {} cpu", run), 0, 0, result.cpuSeconds, 0);
        if (serverPid) AppendCsv(csv, factor, fmt::format("import run {} server cpu", run), 0, 0, result.serverCpuSeconds, 0);
        std::cout << fmt::format("  run {} of {}: import {:.1f} s, {}, peak RSS {:.0f} MB\n", run, runs,
                                 result.wallSeconds,
                                 CpuText(result.cpuSeconds, result.serverCpuSeconds, serverPid.has_value()), rss)
                  << std::flush;
        // The restaurant's side once: it does not change between runs.
        if (!restaurantCounts) {
            restaurantCounts = CountRestaurant(fetchOptions, mapping, backOfficeFile);
            for (const auto& [kind, member] : kCountedKinds) {
                AppendCsv(csv, factor, fmt::format("restaurant count: {}", kind), 0,
                          static_cast<double>((*restaurantCounts).*member), 0, 0);
            }
        }
        countsMatch = CheckCounts(csv, factor, fmt::format("import run {}", run), *restaurantCounts,
                                  CountBackOffice(backOfficeFile, mapping)) && countsMatch;

        const WriteResult write = MeasureWriteFloor(backOfficeFile, data + "/write-floor.sqlite");
        AppendCsv(csv, factor, fmt::format("write run {}", run), 1, static_cast<double>(write.rows), write.seconds, 0);
        AppendCsv(csv, factor, fmt::format("write run {} cpu", run), 0, 0, write.cpuSeconds, 0);
        std::cout << fmt::format("  run {} of {}: write floor {:.1f} s, cpu {:.1f} s ({} rows, {:.0f} MB of values)\n",
                                 run, runs, write.seconds, write.cpuSeconds, write.rows,
                                 static_cast<double>(write.bytes) / 1e6)
                  << std::flush;
        imports.push_back(std::move(result));
    }

    // The round trip's latency: the same statements one after another on one connection.
    const FetchResult sequential = MeasureFetchFloor(fetchOptions, FetchMode{});
    AppendCsv(csv, factor, "sequential fetch", 0, 0, sequential.seconds, 0);
    AppendCsv(csv, factor, "sequential fetch cpu", 0, 0, sequential.cpuSeconds, 0);
    std::cout << fmt::format("  sequential fetch (latency, not a floor): {:.1f} s, {}\n", sequential.seconds,
                             CpuText(sequential.cpuSeconds, sequential.serverCpuSeconds, serverPid.has_value()))
              << std::flush;

    // Everything again over the complete back office, after a full rewind of both dates.
    const std::string since = fetchOptions.transactionImportDate;
    const RunResult rewind = MeasureRun({host, "--data", data, "state", "set", restaurantName, "--entities",
                                         fetchOptions.entityImportDate, "--transactions", since},
                                        data + "/bench-rewind.txt");
    if (rewind.exitCode != 0) {
        std::cerr << fmt::format("the rewind before the re-import ended with exit code {} (its output is in {}/bench-rewind.txt)\n",
                                 rewind.exitCode, data);
        return 1;
    }
    const RunResult reimport = MeasureImport(host, data, serverPid);
    if (reimport.exitCode != 0) return ImportFailed(reimport, data);
    const double reimportRss = static_cast<double>(reimport.peakRssKilobytes) / 1024.0;
    AppendCsv(csv, factor, "reimport", 0, static_cast<double>(ReportedFor(reimport, "Transacções").value_or(0)),
              reimport.wallSeconds, reimportRss);
    AppendCsv(csv, factor, "reimport cpu", 0, 0, reimport.cpuSeconds, 0);
    if (serverPid) AppendCsv(csv, factor, "reimport server cpu", 0, 0, reimport.serverCpuSeconds, 0);
    std::cout << fmt::format("  re-import after a full rewind: {:.1f} s, {}, peak RSS {:.0f} MB\n", reimport.wallSeconds,
                             CpuText(reimport.cpuSeconds, reimport.serverCpuSeconds, serverPid.has_value()), reimportRss)
              << std::flush;
    countsMatch = CheckCounts(csv, factor, "reimport", *restaurantCounts, CountBackOffice(backOfficeFile, mapping)) &&
                  countsMatch;

    // The table: the run of the median time, with its own counts, and the floor's statements.
    std::vector<const RunResult*> byTime;
    for (const RunResult& run : imports) byTime.push_back(&run);
    std::sort(byTime.begin(), byTime.end(),
              [](const RunResult* a, const RunResult* b) { return a->wallSeconds < b->wallSeconds; });
    const RunResult& median = *byTime[(byTime.size() - 1) / 2];
    std::cout << fmt::format("\n{:<26} {:>10} {:>10} {:>10} {:>12}\n", "factor " + factor + " (median run)",
                             "imported", "seconds", "per s", "re-import s");
    for (const Phase& phase : median.phases) {
        const std::optional<long> count = ReportedFor(median, phase.name);
        const auto again = std::find_if(reimport.phases.begin(), reimport.phases.end(),
                                        [&](const Phase& p) { return p.name == phase.name; });
        std::cout << fmt::format("  {:<24} {:>10} {:>10.1f} {:>10} {:>12}\n", phase.name,
                                 count ? std::to_string(*count) : "", phase.seconds,
                                 count ? fmt::format("{:.0f}", RatePerSecond(static_cast<double>(*count), phase.seconds))
                                       : "",
                                 again != reimport.phases.end() ? fmt::format("{:.1f}", again->seconds) : "");
        AppendCsv(csv, factor, "import: " + phase.name, 0, static_cast<double>(count.value_or(0)), phase.seconds, 0);
        if (again != reimport.phases.end()) {
            AppendCsv(csv, factor, "reimport: " + phase.name,
                      0, static_cast<double>(ReportedFor(reimport, phase.name).value_or(0)), again->seconds, 0);
        }
    }
    std::cout << fmt::format("\n{:<26} {:>10} {:>10} {:>10}\n", "fetch floor (last run)", "statements", "rows",
                             "seconds");
    for (const FetchKind& kind : lastFetch.kinds) {
        std::cout << fmt::format("  {:<24} {:>10} {:>10} {:>10.1f}\n", kind.kind, kind.statements, kind.rows, kind.seconds);
        AppendCsv(csv, factor, "fetch: " + kind.kind, kind.statements, static_cast<double>(kind.rows), kind.seconds, 0);
    }
    std::cout << fmt::format("\n{:<26} {:>12} {:>12}\n", "counts", "restaurant", "back office");
    const ImportCounts last = CountBackOffice(backOfficeFile, mapping);
    for (const auto& [kind, member] : kCountedKinds) {
        std::cout << fmt::format("  {:<24} {:>12} {:>12}\n", kind, (*restaurantCounts).*member, last.*member);
    }
    const long headers = CountTransactionHeaders(fetchOptions);
    // What the summary sets the peak memory against, and the processor time per header.
    AppendCsv(csv, factor, "transaction headers", 0, static_cast<double>(headers), 0, 0);
    AppendCsv(csv, factor, "imported headers", 0, static_cast<double>(restaurantCounts->documents), 0, 0);
    std::cout << fmt::format("  {:<24} {:>12}\n\n", "transaction headers", headers) << std::flush;
    return countsMatch ? 0 : 1;
}

// Runs the imports of two factors in turns, the smaller first and last, so that each run of the
// larger factor has a run of the smaller on either side of it, minutes apart: the machine's speed
// drifts by a fifth over a quarter of an hour, and a larger run set against smaller ones taken
// at other moments measures the machine as much as the import. Every run starts from its fresh
// back office. The processor time of the import and of the restaurant's server is kept beside
// the wall time: it moves with the machine less than the wall time does.
int Turns(const Arguments& arguments) {
    const std::string host = arguments.Required("--host-program");
    const std::string csvFile = arguments.Required("--csv");
    struct Side {
        std::string data, factor;
    };
    const Side small{arguments.Required("--small-data"), arguments.Required("--small-factor")};
    const Side large{arguments.Required("--large-data"), arguments.Required("--large-factor")};
    const std::string turnsText = arguments.Or("--turns", "1");
    const std::optional<long> turns = kitra::WholeNumberWithin(turnsText.c_str(), 1, 10);
    if (!turns) throw std::invalid_argument("--turns must be a whole number from 1 to 10, not " + turnsText);
    std::optional<long> serverPid;
    if (const std::string pid = arguments.Or("--server-pid", ""); !pid.empty()) {
        serverPid = kitra::WholeNumberWithin(pid.c_str(), 1, 1L << 30);
        if (!serverPid) throw std::invalid_argument("--server-pid must be a process id, not " + pid);
    }

    const FreshBackOffice freshSmall(small.data);
    const FreshBackOffice freshLarge(large.data);
    std::ofstream csv(csvFile, std::ios::app);
    const long runs = 2 * *turns + 1;
    for (long turn = 1; turn <= runs; ++turn) {
        const bool isSmall = turn % 2 == 1;
        const Side& side = isSmall ? small : large;
        (isSmall ? freshSmall : freshLarge).Restore();
        const std::optional<double> serverBefore = serverPid ? ProcessCpuSeconds(*serverPid) : std::nullopt;
        const RunResult result = MeasureImport(host, side.data);
        const std::optional<double> serverAfter = serverPid ? ProcessCpuSeconds(*serverPid) : std::nullopt;
        if (result.exitCode != 0) return ImportFailed(result, side.data);
        const double server = serverBefore && serverAfter ? *serverAfter - *serverBefore : 0;
        const double rss = static_cast<double>(result.peakRssKilobytes) / 1024.0;
        // One line per run, once it has ended: the import's own warnings go to the same terminal.
        std::cout << fmt::format("  turn {} of {}: factor {}: {:.1f} s, cpu {:.1f} s{}, peak RSS {:.0f} MB\n", turn,
                                 runs, side.factor, result.wallSeconds, result.cpuSeconds,
                                 serverPid ? fmt::format(" + server {:.1f} s", server) : "", rss)
                  << std::flush;
        AppendCsv(csv, side.factor, fmt::format("turn {}", turn), 0, 0, result.wallSeconds, rss);
        AppendCsv(csv, side.factor, fmt::format("turn {} cpu", turn), 0, 0, result.cpuSeconds + server, 0);
    }
    return 0;
}

// Several runs of one measure: the median is the figure, the least and the most are printed
// beside it. Runs alternate with those of the other measures, so the machine's moments fall on
// all of them alike.
struct Sample {
    std::map<long, double> runs;  // by run number

    bool Empty() const { return runs.empty(); }
    std::vector<double> Sorted() const {
        std::vector<double> values;
        for (const auto& [run, value] : runs) values.push_back(value);
        std::sort(values.begin(), values.end());
        return values;
    }
    double Median() const {
        const std::vector<double> values = Sorted();
        if (values.empty()) return 0;
        const std::size_t middle = values.size() / 2;
        return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
    }
    double Min() const { return Empty() ? 0 : Sorted().front(); }
    double Max() const { return Empty() ? 0 : Sorted().back(); }
    // "30.6 s (30.1 to 31.5 s, 3 runs)"
    std::string Text() const {
        if (runs.size() == 1) return fmt::format("{:.1f} s", Median());
        return fmt::format("{:.1f} s ({:.1f} to {:.1f} s, {} runs)", Median(), Min(), Max(), runs.size());
    }
};

struct FactorFigures {
    double factor = 0;
    Sample import, importCpu, importServer, fetch, fetchCpu, fetchServer, write, writeCpu;
    double rss = 0;  // the largest of the import runs
    std::optional<double> sequential, reimport, reimportCpu, headers, importedHeaders;
    std::map<std::string, double> restaurantCounts;
    // By what was counted ("import run 2", "reimport"), the back office's count of each kind.
    std::map<std::string, std::map<std::string, double>> importCounts;
};

// The factor whose peak memory the bench projects: a restaurant's whole history in one first
// import (a million transaction headers).
constexpr double kProjectedFactor = 10;

// How the peak memory grows between the two factors, per 100,000 transaction headers, and where
// that line reaches at the projected factor. Nothing when the CSV lacks the header counts.
struct MemoryGrowth {
    double perHundredThousandHeaders = 0;
    double projectedHeaders = 0;
    double projectedRss = 0;
};

std::optional<MemoryGrowth> GrowthOf(const FactorFigures& smallest, const FactorFigures& largest) {
    if (!smallest.headers || !largest.headers) return std::nullopt;
    const double small = *smallest.headers, large = *largest.headers;
    if (small <= 0 || large <= small || largest.factor <= 0) return std::nullopt;
    MemoryGrowth growth;
    const double perHeader = (largest.rss - smallest.rss) / (large - small);
    growth.perHundredThousandHeaders = perHeader * 100000;
    growth.projectedHeaders = large / largest.factor * kProjectedFactor;
    growth.projectedRss = largest.rss + perHeader * (growth.projectedHeaders - large);
    return growth;
}

std::vector<std::string> SplitCsv(const std::string& line) {
    std::vector<std::string> fields;
    std::string field;
    bool quoted = false;
    for (char c : line) {
        if (c == '"') quoted = !quoted;
        else if (c == ',' && !quoted) fields.push_back(std::exchange(field, {}));
        else field += c;
    }
    fields.push_back(field);
    return fields;
}

// One import run of a measurement in turns.
struct Turn {
    double factor = 0, wall = 0, cpu = 0;
};

// "turn 3" or "turn 3 cpu": the turn's number, and whether the row is its processor time.
std::optional<std::pair<long, bool>> TurnOf(const std::string& part) {
    static constexpr std::string_view kPrefix = "turn ";
    if (!part.starts_with(kPrefix)) return std::nullopt;
    std::string rest = part.substr(kPrefix.size());
    const bool cpu = rest.ends_with(" cpu");
    if (cpu) rest.resize(rest.size() - std::string_view(" cpu").size());
    const std::optional<long> number = kitra::WholeNumberWithin(rest.c_str(), 1, 1000);
    if (!number) return std::nullopt;
    return std::make_pair(*number, cpu);
}

double MeanOf(const std::vector<double>& values) {
    double sum = 0;
    for (double value : values) sum += value;
    return values.empty() ? 0 : sum / static_cast<double>(values.size());
}

// Each run of the larger factor against the mean of the smaller factor's runs on either side of
// it, then the mean of those ratios against the goal; true when it is met.
bool TurnsVerdict(const std::map<long, Turn>& turns) {
    double smallFactor = turns.begin()->second.factor, largeFactor = smallFactor;
    for (const auto& [number, turn] : turns) {
        smallFactor = std::min(smallFactor, turn.factor);
        largeFactor = std::max(largeFactor, turn.factor);
    }
    if (smallFactor == largeFactor) throw std::invalid_argument("the runs in turns are all of one factor");
    std::cout << fmt::format("factor {:g} against factor {:g}, in turns:\n", largeFactor, smallFactor);
    std::vector<double> wallRatios, cpuRatios;
    for (auto at = turns.begin(); at != turns.end(); ++at) {
        const auto& [number, turn] = *at;
        if (turn.factor != largeFactor) continue;
        std::vector<long> numbers;
        std::vector<double> walls, cpus;
        const auto take = [&](std::map<long, Turn>::const_iterator side) {
            if (side->second.factor != smallFactor) return;
            numbers.push_back(side->first);
            walls.push_back(side->second.wall);
            cpus.push_back(side->second.cpu);
        };
        if (at != turns.begin()) take(std::prev(at));
        if (std::next(at) != turns.end()) take(std::next(at));
        if (walls.empty()) continue;
        const double wall = turn.wall / MeanOf(walls);
        wallRatios.push_back(wall);
        std::string line = fmt::format("  turn {}: {:.1f} s = {:.2f} × {:.1f} s (turn{} {})", number, turn.wall,
                                       wall, MeanOf(walls), numbers.size() > 1 ? "s" : "",
                                       fmt::join(numbers, " and "));
        // A run whose processor time is not known (no server's pid) has none to set against.
        const bool cpuKnown = turn.cpu > 0 && std::none_of(cpus.begin(), cpus.end(), [](double c) { return c <= 0; });
        if (cpuKnown) {
            cpuRatios.push_back(turn.cpu / MeanOf(cpus));
            line += fmt::format("; processor time {:.1f} s = {:.2f} × {:.1f} s", turn.cpu, cpuRatios.back(),
                                MeanOf(cpus));
        }
        std::cout << line << "\n";
    }
    if (wallRatios.empty()) throw std::invalid_argument("no run of the larger factor has a smaller one beside it");
    const double goal = kTurnsGrowthGoal * largeFactor / smallFactor;
    const double ratio = MeanOf(wallRatios);
    const bool met = ratio <= goal;
    std::cout << fmt::format("factor {:g} in {:.2f}× the time of factor {:g}{}; goal ≤ {:.2f}×: {}\n", largeFactor,
                             ratio, smallFactor,
                             cpuRatios.size() == wallRatios.size()
                                 ? fmt::format(" ({:.2f}× the processor time of the import and the server)",
                                               MeanOf(cpuRatios))
                                 : "",
                             goal, met ? "met" : "missed");
    return met;
}

// The goals of one factor: the figures, and each goal missed or figure missing as a reason.
std::vector<std::string> FactorVerdict(const FactorFigures& f) {
    std::vector<std::string> reasons;
    const std::string name = fmt::format("factor {:g}", f.factor);
    const auto missing = [&](const std::string& what) { reasons.push_back(name + ": " + what); };
    if (f.import.Empty()) missing("no import run");
    if (f.fetch.Empty()) missing("no fetch floor");
    else if (f.fetch.Median() <= 0) missing("the fetch floor is 0 s");
    if (f.write.Empty()) missing("no write floor");
    else if (f.write.Median() <= 0) missing("the write floor is 0 s");

    const double floor = std::max(f.fetch.Median(), f.write.Median());
    if (!f.import.Empty() && floor > 0) {
        const double ratio = f.import.Median() / floor;
        const double sum = f.fetch.Median() + f.write.Median();
        std::cout << fmt::format("{}: import {} = {:.2f} × floor {:.1f} s = max(fetch {}, write {}); "
                                 "fetch + write {:.1f} s: {:.2f} ×\n",
                                 name, f.import.Text(), ratio, floor, f.fetch.Text(), f.write.Text(), sum,
                                 f.import.Median() / sum);
        if (ratio > kFloorRatioGoal) {
            reasons.push_back(fmt::format("{}: import {:.2f} × floor, goal ≤ {}", name, ratio, kFloorRatioGoal));
        }
    }
    if (f.sequential) {
        std::cout << fmt::format("{}: sequential fetch {:.1f} s (the round trip's latency, not a floor)\n", name,
                                 *f.sequential);
    }

    // Processor time: the import's own against the fetch floor's and the write floor's.
    if (f.importCpu.Empty() || f.fetchCpu.Empty() || f.writeCpu.Empty()) {
        missing("no processor time of the import or of its floors");
    } else {
        const double floorCpu = f.fetchCpu.Median() + f.writeCpu.Median();
        std::string line = fmt::format("{}: processor time: import {:.1f} s", name, f.importCpu.Median());
        if (f.importedHeaders && *f.importedHeaders > 0) {
            line += fmt::format(" ({:.3f} s per 1,000 headers)", f.importCpu.Median() / *f.importedHeaders * 1000);
        } else {
            missing("no count of the headers the import read");
        }
        line += fmt::format(" against fetch {:.1f} s + write {:.1f} s", f.fetchCpu.Median(), f.writeCpu.Median());
        if (floorCpu > 0) {
            const double ratio = f.importCpu.Median() / floorCpu;
            line += fmt::format(": {:.2f} ×", ratio);
            if (ratio > kCpuRatioGoal) {
                reasons.push_back(fmt::format("{}: import's processor time {:.2f} × its floors', goal ≤ {}", name,
                                              ratio, kCpuRatioGoal));
            }
        } else {
            missing("the floors' processor time is 0 s");
        }
        if (!f.importServer.Empty() && !f.fetchServer.Empty()) {
            line += fmt::format("; server {:.1f} s in the import, {:.1f} s in the fetch floor", f.importServer.Median(),
                                f.fetchServer.Median());
        }
        std::cout << line << "\n";
    }

    if (!f.reimport) {
        missing("no re-import after a full rewind");
    } else if (!f.import.Empty()) {
        const double ratio = f.import.Median() > 0 ? *f.reimport / f.import.Median() : 0;
        std::cout << fmt::format("{}: re-import after a full rewind {:.1f} s{} = {:.2f} × the import\n", name,
                                 *f.reimport, f.reimportCpu ? fmt::format(" (cpu {:.1f} s)", *f.reimportCpu) : "",
                                 ratio);
        if (f.import.Median() <= 0 || ratio > kReimportGoal) {
            reasons.push_back(fmt::format("{}: re-import {:.2f} × the import, goal ≤ {}", name, ratio, kReimportGoal));
        }
    }

    // What every run brought, against what the restaurant holds.
    if (f.restaurantCounts.empty() || f.importCounts.empty()) {
        missing("the import's counts were not checked against the restaurant's");
    } else {
        std::vector<std::string> kinds;
        for (const auto& [kind, count] : f.restaurantCounts) kinds.push_back(fmt::format("{} {:.0f}", kind, count));
        std::cout << fmt::format("{}: restaurant: {}\n", name, fmt::join(kinds, ", "));
        for (const auto& [what, counts] : f.importCounts) {
            for (const auto& [kind, expected] : f.restaurantCounts) {
                const auto found = counts.find(kind);
                if (found == counts.end()) {
                    missing(fmt::format("{}: no count of {}", what, kind));
                } else if (found->second != expected) {
                    reasons.push_back(fmt::format("{}: {}: {} {:.0f} in the back office, {:.0f} in the restaurant",
                                                  name, what, kind, found->second, expected));
                }
            }
        }
    }

    if (!f.headers) missing("no count of the restaurant's transaction headers");
    if (f.rss > kPeakRssGoalMegabytes) {
        reasons.push_back(fmt::format("{}: peak RSS {:.0f} MB, goal ≤ {:.0f} MB", name, f.rss, kPeakRssGoalMegabytes));
    }
    return reasons;
}

// The verdict over the factors' imports and their floors: every factor is held to every goal,
// and the largest against the smallest for growth; true when every goal is met and no figure is
// missing. Each reason is printed.
bool ImportVerdict(const std::map<double, FactorFigures>& figures) {
    std::vector<std::string> reasons;
    for (const auto& [factor, f] : figures) {
        const std::vector<std::string> own = FactorVerdict(f);
        reasons.insert(reasons.end(), own.begin(), own.end());
    }
    const FactorFigures& largest = figures.rbegin()->second;
    std::string growthGoal;
    if (figures.size() >= 2) {
        const FactorFigures& smallest = figures.begin()->second;
        const double dataGrowth = largest.factor / smallest.factor;
        const double timeGrowth = smallest.import.Median() > 0 ? largest.import.Median() / smallest.import.Median() : 0;
        std::cout << fmt::format("{:g}× data → {:.1f}× time\n", dataGrowth, timeGrowth);
        growthGoal = fmt::format(", {:g}× data in ≤ {:.1f}× time", dataGrowth, kGrowthGoal * dataGrowth);
        if (timeGrowth <= 0 || timeGrowth > kGrowthGoal * dataGrowth) {
            reasons.push_back(fmt::format("{:g}× data took {:.1f}× the time, goal ≤ {:.1f}×", dataGrowth, timeGrowth,
                                          kGrowthGoal * dataGrowth));
        }
        if (smallest.headers && largest.headers) {
            const std::optional<MemoryGrowth> growth = GrowthOf(smallest, largest);
            if (growth) {
                std::cout << fmt::format(
                    "peak RSS {:.0f} MB at factor {:g} ({:.0f} headers), {:.0f} MB at factor {:g} ({:.0f} headers): "
                    "{:.1f} MB per 100,000 headers; at factor {:g} ({:.0f} headers) {:.0f} MB\n",
                    smallest.rss, smallest.factor, *smallest.headers, largest.rss, largest.factor, *largest.headers,
                    growth->perHundredThousandHeaders, kProjectedFactor, growth->projectedHeaders,
                    growth->projectedRss);
                if (growth->projectedRss > kPeakRssGoalMegabytes) {
                    reasons.push_back(fmt::format("peak RSS at factor {:g} {:.0f} MB, goal ≤ {:.0f} MB",
                                                  kProjectedFactor, growth->projectedRss, kPeakRssGoalMegabytes));
                }
            } else {
                reasons.push_back("the peak memory cannot be projected: the larger factor has no more headers");
            }
        }
    }
    std::cout << fmt::format("goals: import ≤ {} × floor, processor time ≤ {} × the floors', re-import ≤ {} × import, "
                             "counts as in the restaurant, peak RSS ≤ {:.0f} MB{}{}: {}\n",
                             kFloorRatioGoal, kCpuRatioGoal, kReimportGoal, kPeakRssGoalMegabytes,
                             figures.size() >= 2 ? fmt::format(" (also at factor {:g})", kProjectedFactor) : "",
                             growthGoal, reasons.empty() ? "met" : "missed");
    for (const std::string& reason : reasons) std::cout << "  " << reason << "\n";
    return reasons.empty();
}

// "import run 3 server cpu": the measure, the run and which figure of it.
struct RunPart {
    std::string measure;  // import, fetch, write
    long run = 0;
    std::string figure;   // "", "cpu", "server cpu"
};

std::optional<RunPart> RunPartOf(const std::string& part) {
    static const std::regex pattern(R"(^(import|fetch|write) run ([0-9]+)( server cpu| cpu)?$)");
    std::smatch match;
    if (!std::regex_match(part, match, pattern)) return std::nullopt;
    RunPart run{match[1].str(), std::stol(match[2].str()), match[3].str()};
    if (!run.figure.empty()) run.figure.erase(0, 1);
    return run;
}

// One line of the CSV into the factor's figures; false when the line is not one of them.
bool TakeFigure(FactorFigures& entry, const std::vector<std::string>& f) {
    const std::string& part = f[1];
    const double seconds = std::stod(f[4]);
    const double rows = std::stod(f[3]);
    if (const std::optional<RunPart> run = RunPartOf(part)) {
        Sample* sample = nullptr;
        if (run->measure == "import") {
            sample = run->figure.empty() ? &entry.import : run->figure == "cpu" ? &entry.importCpu : &entry.importServer;
            if (run->figure.empty()) entry.rss = std::max(entry.rss, std::stod(f[5]));
        } else if (run->measure == "fetch") {
            sample = run->figure.empty() ? &entry.fetch : run->figure == "cpu" ? &entry.fetchCpu : &entry.fetchServer;
        } else {
            if (run->figure == "server cpu") return false;
            sample = run->figure.empty() ? &entry.write : &entry.writeCpu;
        }
        sample->runs[run->run] = seconds;
        return true;
    }
    static constexpr std::string_view kRestaurantCount = "restaurant count: ";
    if (part.starts_with(kRestaurantCount)) {
        entry.restaurantCounts[part.substr(kRestaurantCount.size())] = rows;
        return true;
    }
    if (const std::size_t at = part.find(" count: "); at != std::string::npos) {
        entry.importCounts[part.substr(0, at)][part.substr(at + std::string_view(" count: ").size())] = rows;
        return true;
    }
    if (part == "sequential fetch") entry.sequential = seconds;
    else if (part == "reimport") entry.reimport = seconds;
    else if (part == "reimport cpu") entry.reimportCpu = seconds;
    else if (part == "transaction headers") entry.headers = rows;
    else if (part == "imported headers") entry.importedHeaders = rows;
    else return false;
    return true;
}

int Summary(const Arguments& arguments) {
    std::ifstream csv(arguments.Required("--csv"));
    if (!csv) throw std::invalid_argument("cannot read " + arguments.Required("--csv"));
    std::map<double, FactorFigures> figures;
    std::map<long, Turn> turns;
    std::string line;
    while (std::getline(csv, line)) {
        const std::vector<std::string> f = SplitCsv(line);
        if (f.size() < 6 || f[0] == "factor") continue;
        const double factor = std::stod(f[0]);
        const double seconds = std::stod(f[4]);
        if (const auto turn = TurnOf(f[1])) {
            Turn& entry = turns[turn->first];
            entry.factor = factor;
            (turn->second ? entry.cpu : entry.wall) = seconds;
            continue;
        }
        FactorFigures entry;
        entry.factor = factor;
        if (TakeFigure(figures.emplace(factor, entry).first->second, f)) continue;
    }
    // A factor of which only the per-importer rows are known has no verdict of its own.
    std::erase_if(figures, [](const auto& item) {
        const FactorFigures& f = item.second;
        return f.import.Empty() && f.fetch.Empty() && f.write.Empty() && !f.headers && f.restaurantCounts.empty();
    });
    if (figures.empty() && turns.empty()) throw std::invalid_argument("no measurements in the CSV file");
    bool met = true;
    if (!figures.empty()) met = ImportVerdict(figures);
    if (!turns.empty()) met = TurnsVerdict(turns) && met;
    return met ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const std::string command = argc > 1 ? argv[1] : "";
        if (command == "-h" || command == "--help") {
            std::cout << kUsage;
            return 0;
        }
        if (command == "import") {
            const Arguments arguments = Parse(argc, argv, 2);
            RunsWanted(arguments);  // a wrong number is refused before anything starts
            StartRunLauncher();
            kitra::ado::EnsureDriverRegistration();
            return Import(arguments);
        }
        if (command == "turns") {
            StartRunLauncher();
            return Turns(Parse(argc, argv, 2));
        }
        if (command == "summary") return Summary(Parse(argc, argv, 2));
        std::cerr << kUsage;
        return 2;
    } catch (const std::invalid_argument& error) {
        std::cerr << "kitra-bench: " << error.what() << "\n" << kUsage;
        return 2;
    } catch (const kitra::Error& error) {
        std::cerr << "kitra-bench: " << error.Description() << "\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << "kitra-bench: " << error.what() << "\n";
        return 1;
    }
}
