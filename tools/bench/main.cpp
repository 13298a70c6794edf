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
#include "tools/bench/Bench.h"

namespace {

using namespace kitra::bench;

constexpr const char* kUsage =
    "usage:\n"
    "  kitra-bench import --host-program PATH --data DIR --factor X --csv FILE\n"
    "                     --server HOST --port N --database NAME --user USER --password PASS\n"
    "                     [--runs N] [--types 11,13,17] [--since \"yyyy-mm-dd hh:mm:ss\"]\n"
    "      runs 'PATH --data DIR execute' N times (3 unless told), each on the back office as DIR\n"
    "      holds it now, and keeps the fastest; then the fetch floor against the restaurant and\n"
    "      the write floor over what the run wrote; prints a table and appends it to FILE\n"
    "  kitra-bench turns --host-program PATH --csv FILE\n"
    "                    --small-data DIR --small-factor X --large-data DIR --large-factor Y\n"
    "                    [--turns N] [--server-pid PID]\n"
    "      runs the imports of the two factors in turns (X, Y, X, ... Y, X: N runs of Y, 1 unless\n"
    "      told), each from its back office as DIR holds it now, with the processor time of the\n"
    "      import and of the restaurant's server (PID); appends each run to FILE\n"
    "  kitra-bench summary --csv FILE\n"
    "      the verdict over FILE: for two factors' imports, the ratio to the floor, the peak\n"
    "      memory and how time grows with the data; for runs in turns, each larger run against\n"
    "      the smaller ones on either side of it; exits 1 when a goal is missed\n";

// The goals the import is held to on the machine the bench runs on.
constexpr double kFloorRatioGoal = 1.3;
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

std::vector<std::int32_t> ParseTypes(const std::string& text) {
    std::vector<std::int32_t> types;
    std::stringstream in(text);
    std::string part;
    while (std::getline(in, part, ',')) types.push_back(std::stoi(part));
    return types;
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
RunResult MeasureImport(const std::string& host, const std::string& data) {
    return MeasureRun({host, "--data", data, "execute"}, data + "/bench-run.txt");
}

// Says that a run failed and where its output is; the bench's exit code.
int ImportFailed(const RunResult& run, const std::string& data) {
    std::cerr << fmt::format("the import ended with exit code {} (its output is in {}/bench-run.txt)\n",
                             run.exitCode, data);
    return 1;
}

// Runs the import `runs` times, each from the back office as `data` holds it before the first,
// and keeps the fastest: the machine's other work only ever adds time, so the fastest run is the
// one that shows what the import itself costs. The peak memory is the largest of all runs.
RunResult MeasureFastestRun(const Arguments& arguments, const std::string& data, int runs,
                            std::vector<double>& allSeconds) {
    const FreshBackOffice fresh(data);
    std::optional<RunResult> fastest;
    long peakRss = 0;
    for (int run = 1; run <= runs; ++run) {
        if (run > 1) fresh.Restore();
        RunResult result = MeasureImport(arguments.Required("--host-program"), data);
        if (result.exitCode != 0) return result;
        std::cout << fmt::format("  run {} of {}: {:.1f} s, peak RSS {:.0f} MB\n", run, runs, result.wallSeconds,
                                 static_cast<double>(result.peakRssKilobytes) / 1024.0)
                  << std::flush;
        allSeconds.push_back(result.wallSeconds);
        peakRss = std::max(peakRss, result.peakRssKilobytes);
        if (!fastest || result.wallSeconds < fastest->wallSeconds) fastest = std::move(result);
    }
    fastest->peakRssKilobytes = peakRss;
    return *fastest;
}

int Import(const Arguments& arguments) {
    const std::string data = arguments.Required("--data");
    const std::string factor = arguments.Required("--factor");
    const std::string csvFile = arguments.Required("--csv");
    const int runs = RunsWanted(arguments);

    std::cout << (runs == 1 ? fmt::format("factor {}: importing (1 run)\n", factor)
                            : fmt::format("factor {}: importing ({} runs, the fastest kept)\n", factor, runs))
              << std::flush;
    std::vector<double> allSeconds;
    const RunResult run = MeasureFastestRun(arguments, data, runs, allSeconds);
    if (run.exitCode != 0) return ImportFailed(run, data);

    std::cout << fmt::format("factor {}: fetch floor\n", factor) << std::flush;
    FetchFloorOptions fetchOptions;
    fetchOptions.server = arguments.Required("--server");
    fetchOptions.port = arguments.Required("--port");
    fetchOptions.database = arguments.Required("--database");
    fetchOptions.user = arguments.Required("--user");
    fetchOptions.password = arguments.Required("--password");
    fetchOptions.entityImportDate = fetchOptions.transactionImportDate =
        arguments.Or("--since", "2000-01-01 00:00:00");
    fetchOptions.mappedDocumentTypes = ParseTypes(arguments.Or("--types", "11,13,17"));
    const FetchResult fetch = MeasureFetchFloor(fetchOptions);
    const long headers = CountTransactionHeaders(fetchOptions);

    std::cout << fmt::format("factor {}: write floor\n", factor) << std::flush;
    const WriteResult write = MeasureWriteFloor(data + "/backoffice.sqlite", data + "/write-floor.sqlite");

    const double floor = fetch.seconds + write.seconds;
    const double rss = static_cast<double>(run.peakRssKilobytes) / 1024.0;
    long statements = 0;
    long fetchedRows = 0;
    for (const FetchKind& kind : fetch.kinds) {
        statements += kind.statements;
        fetchedRows += kind.rows;
    }

    std::cout << fmt::format("\n{:<26} {:>10} {:>10} {:>10} {:>12}\n", "factor " + factor, "statements",
                             "rows", "seconds", "rows/s");
    std::ofstream csv(csvFile, std::ios::app);
    for (const Phase& phase : run.phases) {
        long phaseStatements = 0;
        double phaseRows = 0;
        for (const FetchKind& kind : fetch.kinds) {
            if (kind.kind == phase.name) phaseRows = static_cast<double>(kind.rows);
            if (kind.kind.starts_with(phase.name)) phaseStatements += kind.statements;
        }
        std::cout << fmt::format("  {:<24} {:>10} {:>10.0f} {:>10.1f} {:>12.0f}\n", phase.name,
                                 phaseStatements, phaseRows, phase.seconds,
                                 RatePerSecond(phaseRows, phase.seconds));
        AppendCsv(csv, factor, "import: " + phase.name, phaseStatements, phaseRows, phase.seconds, 0);
    }
    std::cout << fmt::format("  {:<24} {:>10} {:>10} {:>10.1f} {:>12}   {}cpu {:.1f} s, peak RSS {:.0f} MB\n",
                             "import (execute)", statements, fetchedRows, run.wallSeconds, "",
                             allSeconds.size() > 1 ? fmt::format("fastest of {}; ", allSeconds.size()) : "",
                             run.cpuSeconds, rss);
    AppendCsv(csv, factor, "import", statements, static_cast<double>(fetchedRows), run.wallSeconds, rss);
    for (std::size_t i = 0; i < allSeconds.size(); ++i) {
        AppendCsv(csv, factor, fmt::format("import run {}", i + 1), statements,
                  static_cast<double>(fetchedRows), allSeconds[i], 0);
    }
    for (const FetchKind& kind : fetch.kinds) {
        AppendCsv(csv, factor, "fetch: " + kind.kind, kind.statements, static_cast<double>(kind.rows),
                  kind.seconds, 0);
    }
    std::cout << fmt::format("  {:<24} {:>10} {:>10} {:>10.1f} {:>12.0f}\n", "fetch floor", statements,
                             fetchedRows, fetch.seconds, RatePerSecond(static_cast<double>(fetchedRows), fetch.seconds));
    AppendCsv(csv, factor, "fetch floor", statements, static_cast<double>(fetchedRows), fetch.seconds, 0);
    std::cout << fmt::format("  {:<24} {:>10} {:>10} {:>10.1f} {:>12.0f}   {:.0f} MB of values\n",
                             "write floor", 1, write.rows, write.seconds,
                             RatePerSecond(static_cast<double>(write.rows), write.seconds),
                             static_cast<double>(write.bytes) / 1e6);
    AppendCsv(csv, factor, "write floor", 1, static_cast<double>(write.rows), write.seconds, 0);
    // What the summary sets the peak memory against.
    AppendCsv(csv, factor, "transaction headers", 0, static_cast<double>(headers), 0, 0);
    std::cout << fmt::format("  {:<24} {:>10} {:>10}\n", "transaction headers", "", headers);
    std::cout << fmt::format("  import / floor: {:.2f}\n\n", floor > 0 ? run.wallSeconds / floor : 0);
    return 0;
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

struct FactorFigures {
    double factor = 0, import = 0, fetch = 0, write = 0, rss = 0, headers = 0;
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
    if (smallest.headers <= 0 || largest.headers <= smallest.headers || largest.factor <= 0) {
        return std::nullopt;
    }
    MemoryGrowth growth;
    const double perHeader = (largest.rss - smallest.rss) / (largest.headers - smallest.headers);
    growth.perHundredThousandHeaders = perHeader * 100000;
    growth.projectedHeaders = largest.headers / largest.factor * kProjectedFactor;
    growth.projectedRss = largest.rss + perHeader * (growth.projectedHeaders - largest.headers);
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

// The verdict over two factors' imports and their floors; true when every goal is met.
bool ImportVerdict(const std::map<double, FactorFigures>& figures) {
    const FactorFigures& largest = figures.rbegin()->second;
    const double floor = largest.fetch + largest.write;
    const double ratio = floor > 0 ? largest.import / floor : 0;
    std::string line2 = fmt::format("import {:.1f} s = {:.2f} × floor (fetch {:.1f} s + write {:.1f} s); peak RSS {:.0f} MB",
                                    largest.import, ratio, largest.fetch, largest.write, largest.rss);
    bool met = ratio <= kFloorRatioGoal && largest.rss <= kPeakRssGoalMegabytes;
    if (figures.size() >= 2) {
        const FactorFigures& smallest = figures.begin()->second;
        const double dataGrowth = largest.factor / smallest.factor;
        const double timeGrowth = smallest.import > 0 ? largest.import / smallest.import : 0;
        line2 += fmt::format("; {:g}× data → {:.1f}× time", dataGrowth, timeGrowth);
        met = met && timeGrowth <= kGrowthGoal * dataGrowth;
        std::cout << line2 << "\n";
        const std::optional<MemoryGrowth> growth = GrowthOf(smallest, largest);
        if (growth) {
            std::cout << fmt::format(
                "peak RSS {:.0f} MB at factor {:g} ({:.0f} headers), {:.0f} MB at factor {:g} ({:.0f} headers): "
                "{:.1f} MB per 100,000 headers; at factor {:g} ({:.0f} headers) {:.0f} MB\n",
                smallest.rss, smallest.factor, smallest.headers, largest.rss, largest.factor,
                largest.headers, growth->perHundredThousandHeaders, kProjectedFactor,
                growth->projectedHeaders, growth->projectedRss);
            met = met && growth->projectedRss <= kPeakRssGoalMegabytes;
        }
        std::cout << fmt::format("goals: import ≤ {} × floor, peak RSS ≤ {:.0f} MB{}, {:g}× data in ≤ {:.1f}× time: {}\n",
                                 kFloorRatioGoal, kPeakRssGoalMegabytes,
                                 growth ? fmt::format(" (also at factor {:g})", kProjectedFactor) : "",
                                 dataGrowth, kGrowthGoal * dataGrowth, met ? "met" : "missed");
    } else {
        std::cout << line2 << "\n";
        std::cout << fmt::format("goals: import ≤ {} × floor, peak RSS ≤ {:.0f} MB: {}\n", kFloorRatioGoal,
                                 kPeakRssGoalMegabytes, met ? "met" : "missed");
    }
    return met;
}

int Summary(const Arguments& arguments) {
    std::ifstream csv(arguments.Required("--csv"));
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
        FactorFigures& entry = figures[factor];
        entry.factor = factor;
        if (f[1] == "import") {
            entry.import = seconds;
            entry.rss = std::stod(f[5]);
        } else if (f[1] == "fetch floor") {
            entry.fetch = seconds;
        } else if (f[1] == "write floor") {
            entry.write = seconds;
        } else if (f[1] == "transaction headers") {
            entry.headers = std::stod(f[3]);
        }
    }
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
            kitra::ado::EnsureDriverRegistration();
            return Import(Parse(argc, argv, 2));
        }
        if (command == "turns") return Turns(Parse(argc, argv, 2));
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
