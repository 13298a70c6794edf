#pragma once
// The fault suite's import runs: `kitra-host execute --verbose`, run in this process on a back
// office of the test's own, over two restaurants ("Centro", then "Praia") on the fault server.
// Every line the run prints is shown to the test as it is written, so that a test can strike at
// a given moment of the run; afterwards the test reads what the back office holds.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "settings/Restaurant.h"
#include "tests/faults/FaultServer.h"
#include "tests/hostsupport/TempFolder.h"
#include "tests/support/ScratchDatabase.h"

namespace kitra::test {

// The line each importer writes when it cannot reach its restaurant's server.
inline const std::string kNoServer =
    "## Erro ## Não foi possível estabelecer comunicação com o Servidor. Verifique as suas "
    "credenciais de acesso ou se o servidor está acessivel.";

// What one run of kitra-host left: its exit code, what it printed, and the seconds (as the
// back office writes moments, "yyyy-mm-dd hh:mm:ss") in which it began and ended.
struct HostRun {
    int exit = -1;
    std::string out;
    std::string err;
    std::string started;
    std::string ended;
    double seconds = 0;
};

// What a restaurant database holds that the master-data import brings over.
struct Counts {
    int salesmen = 0, customers = 0, families = 0, subfamilies = 0, items = 0;
};
Counts CountsOf(const ScratchDatabase& database);

// The summary lines a restaurant gets (customers, salesmen, families, subfamilies, items, then
// documents, cash movements and receipts).
std::vector<std::string> Summary(const Counts& counts, int documents = 0);

std::size_t Occurrences(const std::string& text, const std::string& part);

// A restaurant's two import dates as the back office keeps them.
struct ImportDates {
    std::string entities;
    std::string transactions;
    bool operator==(const ImportDates&) const = default;
};
void PrintTo(const ImportDates& dates, std::ostream* out);

class FaultRunTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Stores the settings with both restaurants as `centro` and `praia` stand, every document
    // type mapped (as an import requires). Without documents the restaurants' transactions and
    // cash-drawer movements are taken out first, so that only master data is imported; with
    // documents but without cash and receipts, their cash-drawer movements are.
    void StoreSettings(bool documents = false, bool cashAndReceipts = false) {
        StoreSettingsIn(Data(), documents, cashAndReceipts);
    }
    void StoreSettingsIn(const std::filesystem::path& data, bool documents,
                         bool cashAndReceipts = false);
    // Runs kitra-host execute --verbose on the back office (or on another).
    HostRun Execute() { return ExecuteOn(Data()); }
    HostRun ExecuteOn(const std::filesystem::path& data);
    // Waits for the next second: a restaurant's log row and log file are named by the second
    // of its import, so a run right after another must not share it.
    static void NextSecond();
    // Any other kitra-host command on the back office; its exit code.
    int Host(std::vector<std::string> arguments, const std::filesystem::path& data = {});
    // Lines of the run's output that `onLine` is shown, one call per line, as they are written.
    std::function<void(const std::string&)> onLine;
    // Starts the server again (and resumes it) when Praia's turn comes, then calls `then`.
    void RestoreServerBeforePraia(std::function<void(const std::string&)> then = {});

    // What the back office holds.
    std::string IntegrityCheck() const;
    long Count(const std::string& sql) const;
    // The rows of the import log table (0 when no run has made the table yet).
    long LogRows() const;
    int ItemsWithPrefix(const std::string& prefix) const;
    // The newest import log row of the restaurant; "(no log row)" when it has none.
    std::string LogOf(const std::string& restaurant) const;
    ImportDates DatesOf(const std::string& restaurant) const;
    std::vector<std::string> LogFiles() const;
    // The eight count lines of the restaurant's summary in the run's output; empty without one.
    static std::vector<std::string> SummaryOf(const HostRun& run, const std::string& restaurant);

    // The documents of a series in a back office, each as "type number" and what makes it
    // whole: its lines, payments and stock movements, total and state.
    static std::map<std::string, std::string> DocumentsOf(const std::filesystem::path& data,
                                                          const std::string& series);
    // What an import without faults gives: both restaurants imported into a back office of its
    // own with the settings of StoreSettings(true).
    std::map<std::string, std::string> ReferenceDocuments(const std::string& series);
    // After a fault: the back office holds fewer of the series' documents than a whole import
    // gives, at least one, each as a whole import makes it, and nothing of any other; gives
    // how many it holds.
    std::size_t ExpectSomeDocumentsEachWhole(const std::string& series);
    // Lines, payments, taxes and stock movements whose document is not there.
    long Orphans() const;

    std::filesystem::path Data() const { return data_; }
    std::filesystem::path LogFolder() const { return Data() / "logs"; }
    // Moves the back office's data folder (closed) to `place`, e.g. onto a disk of its own.
    void MoveBackOfficeTo(const std::filesystem::path& place);

    FaultServer server;
    std::unique_ptr<ScratchDatabase> centroDatabase, praiaDatabase;
    Restaurant centro, praia;
    Counts expected;  // what Praia's master data import brings
    testing::TempFolder folder;

private:
    std::filesystem::path data_ = folder.Path() / "data";
};

// The error line kitra-host gave the restaurant on stderr; empty when it did not name it.
std::string ErrorLineOf(const HostRun& run, const std::string& restaurant);

// The run's moment as the back office keeps it: the dates are within [started, ended].
void ExpectDatesWithin(const ImportDates& dates, const HostRun& run, const std::string& name);

}  // namespace kitra::test
