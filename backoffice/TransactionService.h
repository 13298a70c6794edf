#pragma once
// The back office's documents: the business object that builds a transaction, and the data
// service that saves it whole (documents, document_lines, document_taxes, document_payments,
// card_payments, stock_movements, account_entries) in one SQLite transaction, replaces an
// earlier version of the same document keeping the former one in document_history, and voids a
// saved document on refund.
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "backoffice/Database.h"
#include "backoffice/KeySet.h"
#include "backoffice/ReferenceLookups.h"
#include "core/Clock.h"
#include "host/ITransactionService.h"

namespace kitra::backoffice {

class TransactionBusiness final : public host::ITransactionBusiness {
public:
    // `lookups` is the service's, and outlives the business object.
    TransactionBusiness(Database& database, const ReferenceLookups& lookups)
        : database_(database), lookups_(lookups) {}

    void InitNewTransaction(const std::string& documentTypeID,
                            const std::string& seriesID) override;
    void SetTransactionDefaults(const host::DocumentType& definition,
                                std::int16_t workstationID) override;
    host::Transaction& Current() override { return transaction_; }
    host::TransactionLine NewLine() const override;
    void CalculateLine(host::TransactionLine& line) const override;
    void AppendLine(const host::TransactionLine& line) override;
    host::TransactionPayment NewPayment(std::int16_t tenderID) const override;
    void AppendPayment(const host::TransactionPayment& payment) override;
    void WorkstationStamp(std::int16_t workstationID, const DateTime& moment) override;
    host::CreditCheckAmounts CreditCheck() const override;
    double CalculatedTotal() const override;
    void SetTotalAdjustment(double amount) override;
    void Calculate() override;

private:
    double RateOf(std::int16_t taxableGroupID) const;
    // The transaction with its totals, VAT and payments calculated, leaving this one as it is.
    host::Transaction Calculated() const;

    Database& database_;
    const ReferenceLookups& lookups_;
    host::Transaction transaction_;
    // The rates asked while the transaction is built, of its tax context: a document's
    // calculation asks each line's rate several times.
    mutable std::map<std::int16_t, double> rates_;
};

class TransactionService final : public host::ITransactionService {
public:
    // `clock` stamps the history and the saved documents; it must outlive the service.
    explicit TransactionService(Database& database, const Clock& clock = DefaultClock());

    std::unique_ptr<host::ITransactionBusiness> NewTransactionBusiness() const override;
    void Save(host::Transaction& transaction) override;
    void Refund(host::Transaction& transaction) override;
    std::optional<host::SavedDocument> Find(const std::string& documentTypeID,
                                            const std::string& seriesID,
                                            std::int32_t documentNumber) const override;

private:
    static const Clock& DefaultClock();

    // A saved document whose record is held open (Database: Transaction::Hold) until the next
    // write, so that the refund the source may give it right after joins it.
    struct Held {
        std::int32_t key = 0;
        // The Snapshot of a former version that differed from the new one, whose version
        // savepoint is open: voided, the new one may be the former one again.
        std::optional<std::string> changedFrom;
    };

    Database& database_;
    const Clock& clock_;
    ReferenceLookups lookups_;
    // The documents numbered here that the documents saved since the last business object was
    // made have been matched to: each is one source record, never two (NumberedHereMatch).
    mutable KeySet taken_;
    // The documents numbered here that moved aside since then: the restaurant's own documents
    // arrive in number order, so one that took a number before them moves on with each; its
    // history keeps the first move of the step, from the number it had.
    mutable KeySet movedInStep_;
    std::optional<Held> held_;
};

// The stock direction of a kind of document.
host::StockDirection StockDirectionOf(host::DocumentKind kind);

}  // namespace kitra::backoffice
