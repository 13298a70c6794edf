#pragma once
// The import engine: one run over every configured restaurant. For each it keeps a text log
// file, calls the importers in their fixed order, moves the restaurant's import dates, stores
// the log as a row of Kitra2Log and reports a summary; at the end it saves the settings, has
// the host compact its database and says that the import has finished.
#include <array>
#include <bit>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "ado/Connection.h"
#include "core/Clock.h"
#include "host/HostServices.h"
#include "log/DSOKitraLog.h"
#include "settings/KitraConnectorSetting.h"

namespace kitra {

// The per-restaurant record counters, in the order the importers run.
enum class Counter {
    Salesmen,
    Customers,
    Families,
    Subfamilies,
    Items,
    Transactions,
    CashMovements,
    Receipts,
};
inline constexpr std::size_t kCounterCount = 8;

class KitraExecutioner {
public:
    // `services` and `clock` must outlive the engine.
    explicit KitraExecutioner(const host::HostServices& services,
                              const Clock& clock = DefaultClock());
    ~KitraExecutioner();

    void SetEventNotifier(std::shared_ptr<host::IEventNotifier> notifier) {
        eventNotifier_ = std::move(notifier);
    }

    // The run's entry.
    void StartImport();

    // How long the run's restaurant connection waits for a server, in seconds: to open and for
    // each answer to a statement. Unless set, ADO's 15 and 30.
    void SetConnectionTimeouts(long connectionSeconds, long commandSeconds);

    // Starts a restaurant's import: its counters and warnings back to 0 and a new log file,
    // named after the restaurant and the present moment, for WriteLog.
    void BeginRestaurant(const std::string& restaurantName);

    // Reporting services every importer uses.
    void WriteLog(const std::string& section, const std::string& text);
    void NotifyStatus(const std::string& text);
    void NotifyProgress(long position, long total, const std::string& text);

    // Counters, warnings and errors of the restaurant in progress.
    std::int32_t& Count(Counter counter) { return counters_[static_cast<std::size_t>(counter)]; }
    std::int32_t CountOf(Counter counter) const {
        return counters_[static_cast<std::size_t>(counter)];
    }
    std::int32_t& WarningCount() { return warningCount_; }
    std::int32_t& ErrorCount() { return errorCount_; }

    // When set, importers' failures also show their message boxes; a run clears it.
    bool showErrorMessageBoxs = true;

    // The step label of the importer at work: the stage of the row an error is reported with.
    void SetStep(std::string_view label) { stepLabel_ = label; }
    const std::string& StepLabel() const { return stepLabel_; }

    const std::string& StatusText() const { return statusText_; }
    void SetStatusText(std::string text) { statusText_ = std::move(text); }
    // Shows a message box through the host (none when the host has no message boxes).
    void ShowBox(const std::string& text, host::MessageStyle style, const std::string& title);
    // The current log file's full path (empty before the first restaurant).
    std::string LogFilePath() const;

    // Shared conversions and lookups of the importers.
    static std::string CleanText(const std::string& text);
    std::int16_t GetTaxableGroupForRate(double rate) const;
    // The value without the taxable group's tax, as the host calculates it in its tax context.
    // Taxes do not change while documents are imported, and lines repeat the items' prices: in
    // a document step each value and group is asked of the host once.
    double CalculateWithTaxableGroup(double value, std::int32_t taxableGroup) const;
    double ParseHundredths(const std::string& text) const;
    // Creates the fixed host records that imported documents refer to; never overwrites.
    void EnsureHostDefaults();

    // Code conversions of the document importers.
    // A salesman's code as the host knows it: restaurant codes above 10000 (salesman uids)
    // become (code - 10000) modulo 1000; any other value stays.
    double MapSalesmanCode(const std::string& text) const;
    // The host document number of a restaurant document ID: the number its last 7 characters
    // start with, or 0 for IDs shorter than 8 characters.
    static double DocumentNumberFromID(const std::string& documentId);
    // The host tender of a restaurant payment type, by the tender equivalences; 0 for none.
    std::int16_t FindTenderEquivalence(const std::string& paymentTypeUID) const;

    // The transaction the document importer is building (null outside it).
    host::ITransactionBusiness* TransactionObject() const { return transactionObject_.get(); }
    void SetTransactionObject(std::unique_ptr<host::ITransactionBusiness> object) {
        transactionObject_ = std::move(object);
        soldByWeight_.clear();
        valuesWithoutTax_.clear();
        taxContext_.reset();
    }
    // Whether the host sells the item by weight (false for an item it does not know). Items do
    // not change while documents are imported, so each is asked of the host once per document
    // step; a new step (a new transaction object) asks again.
    bool ItemSoldByWeight(const std::string& itemCode);

    const host::HostServices& Services() const { return services_; }
    const KitraConnectorSetting* Settings() const { return settings_.get(); }
    // Gives the engine settings without a run (StartImport loads its own).
    void UseSettings(const KitraConnectorSetting& settings) {
        settings_ = std::make_unique<KitraConnectorSetting>(settings);
    }
    const Clock& GetClock() const { return clock_; }

private:
    static const Clock& DefaultClock();

    void ImportRestaurants();
    void ImportRestaurant(Restaurant& restaurant, bool& entityFailure, bool& transactionFailure);
    void ReportSummary(const Restaurant& restaurant);
    std::string GeneralDate(const DateTime& moment) const;

    const host::HostServices& services_;
    const Clock& clock_;
    std::shared_ptr<host::IEventNotifier> eventNotifier_;
    std::unique_ptr<KitraConnectorSetting> settings_;
    std::optional<DSOKitraLog> logService_;
    std::unique_ptr<ado::Connection> connection_;  // one per run, reused for every restaurant
    std::string statusText_;
    std::string stepLabel_;
    std::string logContents_;
    std::string logFileName_;
    std::array<std::int32_t, kCounterCount> counters_{};
    std::int32_t warningCount_ = 0;
    std::int32_t errorCount_ = 0;
    bool hostDefaultsEnsured_ = false;
    std::unique_ptr<host::ITransactionBusiness> transactionObject_;
    std::unordered_map<std::string, bool> soldByWeight_;
    // What the host answered, in this document step, for a value with tax (its bits) under a
    // taxable group (see CalculateWithTaxableGroup), and its tax context.
    struct ValueKeyHash {
        std::size_t operator()(const std::pair<std::int32_t, std::uint64_t>& key) const noexcept {
            return std::hash<std::uint64_t>{}(key.second * 31 + static_cast<std::uint64_t>(key.first));
        }
    };
    mutable std::unordered_map<std::pair<std::int32_t, std::uint64_t>, double, ValueKeyHash>
        valuesWithoutTax_;
    mutable std::optional<host::TaxContext> taxContext_;
};

}  // namespace kitra
