#pragma once
// The import benchmark's measurements: the import run itself, measured from outside, and its
// two floors on the same data (fetching what it fetches, writing what it writes).
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kitra::bench {

// One phase of the run: an importer (by its status text) or the compaction.
struct Phase {
    std::string name;
    double seconds = 0;
};

struct RunResult {
    double wallSeconds = 0;
    double cpuSeconds = 0;
    long peakRssKilobytes = 0;
    int exitCode = 0;
    std::vector<Phase> phases;
};

// Runs the program (argv, the first the program's path) with its standard output read line by
// line into `outputFile`, and measures it.
RunResult MeasureRun(const std::vector<std::string>& command, const std::string& outputFile);

// The processor time (user and system) another process has used so far, from the kernel's
// count; nothing when the process is not there or not readable.
std::optional<double> ProcessCpuSeconds(long pid);

// The back office in `data` as it is when this is made, put back before each run so that
// every run starts from the same state; the copy goes when this does.
class FreshBackOffice {
public:
    explicit FreshBackOffice(std::string data);
    ~FreshBackOffice();
    FreshBackOffice(const FreshBackOffice&) = delete;
    FreshBackOffice& operator=(const FreshBackOffice&) = delete;

    void Restore() const;

private:
    std::string data_;
    std::string kept_;
};

struct FetchFloorOptions {
    std::string server, port, database, user, password;
    std::string entityImportDate, transactionImportDate;  // "yyyy-mm-dd hh:mm:ss"
    std::vector<std::int32_t> mappedDocumentTypes;        // restaurant types 11, 13, 17 mapped
};

// The statements of one kind (an importer's statement, or the lines or payments of documents).
struct FetchKind {
    std::string kind;
    long statements = 0;
    long rows = 0;
    double seconds = 0;
};

struct FetchResult {
    double seconds = 0;
    std::vector<FetchKind> kinds;
};

FetchResult MeasureFetchFloor(const FetchFloorOptions& options);

// Every transaction header of the restaurant, of every type: what the peak memory is set
// against.
long CountTransactionHeaders(const FetchFloorOptions& options);

struct WriteResult {
    double seconds = 0;
    std::uint64_t rows = 0;
    std::uint64_t bytes = 0;
};

// Writes the back office's rows again into `scratchFile` (created and removed).
WriteResult MeasureWriteFloor(const std::string& backOfficeFile, const std::string& scratchFile);

}  // namespace kitra::bench
