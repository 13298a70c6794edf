#pragma once
// The import benchmark's measurements: the import run itself, measured from outside, and its
// two floors on the same data (fetching what it fetches, writing what it writes).
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kitra::bench {

// One phase of the run: an importer (by its status text) or the compaction.
struct Phase {
    std::string name;
    double seconds = 0;
};

struct RunResult {
    double wallSeconds = 0;
    double cpuSeconds = 0;        // the program's own (user and system, all its threads)
    double serverCpuSeconds = 0;  // the restaurant's server's over the same time, when known
    long peakRssKilobytes = 0;
    int exitCode = 0;
    std::vector<Phase> phases;
    // What the run says it imported, from its summary lines (" - Clientes: 5000"), in order.
    std::vector<std::pair<std::string, long>> reported;
};

// Runs the program (argv, the first the program's path) with its standard output read line by
// line into `outputFile`, and measures it, with the processor time the restaurant's server
// (`serverPid`) used meanwhile.
RunResult MeasureRun(const std::vector<std::string>& command, const std::string& outputFile,
                     std::optional<long> serverPid = std::nullopt);

// Starts the small process that starts every run (MeasureRun starts it when it is not yet
// there): called first, while this program holds little, so that a run's peak memory is its own.
void StartRunLauncher();

// The processor time (user and system) another process has used so far, from the kernel's
// count; nothing when the process is not there or not readable.
std::optional<double> ProcessCpuSeconds(long pid);

// The processor time (user and system, every thread) this process has used so far.
double OwnCpuSeconds();

// The processor time a process uses while something runs: the difference of two readings of
// it; 0 without a process, and an error when the process cannot be read (a server gone).
class ServerCpu {
public:
    explicit ServerCpu(std::optional<long> pid);
    double Since() const;

private:
    std::optional<long> pid_;
    double before_ = 0;
};

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
    std::optional<long> serverPid;                        // the restaurant's server, for its time
};

// How the documents' lines and payments are fetched: on further connections, read ahead as the
// import reads them (`furtherConnections` above 0), or one after another on the documents'
// own connection, each waiting for the one before (the round trip's latency, not a floor).
struct FetchMode {
    std::size_t furtherConnections = 0;
    std::size_t window = 0;
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
    double cpuSeconds = 0;        // this program's, read-ahead threads included
    double serverCpuSeconds = 0;  // the restaurant's server's, when its pid is known
    std::vector<FetchKind> kinds;
};

FetchResult MeasureFetchFloor(const FetchFloorOptions& options, const FetchMode& mode);

// Every transaction header of the restaurant, of every type: what the peak memory is set
// against.
long CountTransactionHeaders(const FetchFloorOptions& options);

struct WriteResult {
    double seconds = 0;
    double cpuSeconds = 0;
    std::uint64_t rows = 0;
    std::uint64_t bytes = 0;
};

// Writes the back office's rows again into `scratchFile` (created and removed).
WriteResult MeasureWriteFloor(const std::string& backOfficeFile, const std::string& scratchFile);

// What the settings map, as far as the count of what an import brings depends on it.
struct ImportMapping {
    std::string series;                            // the restaurant's TransSerial
    std::vector<std::int32_t> documentTypes;       // restaurant types (11, 13, 17) mapped
    std::vector<std::string> documentTypeKeys;     // the back-office types they are saved as
    std::vector<std::string> cashTypeKeys;         // entrance, withdrawal, payment on account
    bool paymentsOnAccount = false;                // CustomerPaymentAccountDocument is set
    std::string receiptTypeKey;                    // CustomerPaymentTransDocument
    std::vector<std::pair<std::string, std::int16_t>> tenders;  // restaurant uid -> tender
    std::int16_t defaultTender = 0;
};

// Reads the connector's settings XML (the one stored for the run), for `restaurant`.
ImportMapping ReadImportMapping(const std::string& settingsFile, const std::string& restaurant);

// What an import brought, counted the same way on both sides.
struct ImportCounts {
    long documents = 0, lines = 0, payments = 0, cashMovements = 0, receipts = 0;
};

// What the restaurant holds that a first import of everything changed since the options' dates
// brings, by the import's rules for the mapped types (tenders of the back office's on-account
// type are not payments; `backOfficeFile` says which those are).
ImportCounts CountRestaurant(const FetchFloorOptions& options, const ImportMapping& mapping,
                             const std::string& backOfficeFile);

// What the back office holds in the restaurant's series, of the mapped types.
ImportCounts CountBackOffice(const std::string& backOfficeFile, const ImportMapping& mapping);

}  // namespace kitra::bench
