#pragma once
// The host's account transactions: customer payments (receipts) that settle open entries of the
// customer's current account. The business object builds one receipt at a time from the
// customer's list of open ledger entries; the data service saves the receipt and reduces the
// open amount of exactly the entries it settles, in one database transaction.
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/DateTime.h"
#include "core/Text.h"
#include "host/ITransactionService.h"

namespace kitra::host {

// An open entry of a customer's current account: a credit sale not yet paid in full.
struct LedgerEntry {
    std::int32_t EntryID = 0;
    std::string DocumentTypeID;
    std::string SeriesID;
    std::int32_t DocumentNumber = 0;
    DateTime DocumentDate;
    double Amount = 0;      // what went on the account
    double OpenAmount = 0;  // what is still to be paid

    bool operator==(const LedgerEntry&) const = default;
};

// The customer's open entries, in the order they fall due (oldest first). A host hands over
// either the whole list or a way to find one entry of it by its document, which it then reads
// when searched: a customer with years of unpaid credit sales has thousands of open entries,
// and a receipt needs only the few it pays. Either way the list is meant to be searched before
// anything more is saved.
class LedgerAccounts {
public:
    // The open entry of that document, if the customer has one.
    using Lookup = std::function<std::optional<LedgerEntry>(
        const std::string& documentTypeID, const std::string& seriesID, std::int32_t documentNumber)>;
    // Every open entry, oldest first.
    using Reader = std::function<std::vector<LedgerEntry>()>;

    LedgerAccounts() = default;
    explicit LedgerAccounts(std::vector<LedgerEntry> entries) : entries_(std::move(entries)) {}
    LedgerAccounts(Lookup lookup, Reader reader)
        : lookup_(std::move(lookup)), reader_(std::move(reader)) {}

    // The entry of that document, or null when the customer has no such open entry.
    const LedgerEntry* Find(const std::string& documentTypeID, const std::string& seriesID,
                            std::int32_t documentNumber) const;
    const std::vector<LedgerEntry>& Entries() const;

private:
    mutable std::optional<std::vector<LedgerEntry>> entries_;
    mutable std::deque<LedgerEntry> found_;  // what Find looked up; a deque keeps their addresses
    Lookup lookup_;
    Reader reader_;
};

// One entry the receipt settles.
struct AccountLine {
    LedgerEntry Entry;
    double Amount = 0;        // what the receipt applies to the entry; Calculate sets it
    double InvoiceValue = 0;  // the invoice's total as the source gives it, kept for comparison

    bool operator==(const AccountLine&) const = default;
};

struct AccountTransaction {
    std::string DocumentTypeID;
    std::string SeriesID;
    std::int32_t DocumentNumber = 0;  // 0: the host gives the series' next free number on save
    double CustomerID = 0;
    double SalesmanID = 0;
    DateTime DocumentDate;
    std::int16_t WorkstationID = 0;
    DateTime StampDate;
    std::vector<AccountLine> Lines;
    std::vector<TransactionPayment> Payments;

    // Calculated by the host.
    double Total = 0;    // what was received: the sum of the payments
    double Applied = 0;  // what settles entries: the sum of the lines
    double Credit = 0;   // what is left on the customer's account as a credit

    bool operator==(const AccountTransaction&) const = default;
};

class IAccountTransactionBusiness {
public:
    virtual ~IAccountTransactionBusiness() = default;

    // Starts a receipt of the document type in the series; fails with an Error when the type is
    // unknown or not a customer payment, or the series is unknown or not active.
    virtual void InitNewTransaction(const std::string& documentTypeID,
                                    const std::string& seriesID) = 0;
    virtual AccountTransaction& Current() = 0;

    // The open entries of the transaction's customer. A receipt saved before under the same
    // type, series and number is counted as not there: what it settled is open again here,
    // because saving this receipt replaces it. The list may read the ledger when it is
    // searched, so it must not outlive this business object.
    virtual LedgerAccounts LedgerAccountList() const = 0;
    // Settles the entry with this receipt; an entry already among the lines is not added again.
    virtual void AddAccountLine(const LedgerEntry& entry, double invoiceValue) = 0;

    virtual void WorkstationStamp(std::int16_t workstationID, const DateTime& moment) = 0;
    virtual TransactionPayment NewPayment(std::int16_t tenderID) const = 0;
    virtual void AppendPayment(const TransactionPayment& payment) = 0;
    // Applies what was received to the lines, the oldest entry first and never more than an
    // entry's open amount; what is left over is the customer's credit.
    virtual void Calculate() = 0;
};

class IAccountTransactionService {
public:
    virtual ~IAccountTransactionService() = default;

    virtual std::unique_ptr<IAccountTransactionBusiness> NewAccountTransactionBusiness() const = 0;
    // Saves the receipt and settles its entries in one database transaction, applying to each at
    // most what is open at that moment. A receipt of the same type, series and number is
    // replaced: what it settled is opened again first, and it is kept in the history.
    virtual void Save(AccountTransaction& transaction) = 0;
};

inline const std::vector<LedgerEntry>& LedgerAccounts::Entries() const {
    if (!entries_) entries_ = reader_ ? reader_() : std::vector<LedgerEntry>{};
    return *entries_;
}

inline const LedgerEntry* LedgerAccounts::Find(const std::string& documentTypeID,
                                                  const std::string& seriesID,
                                                  std::int32_t documentNumber) const {
    if (!entries_ && lookup_) {
        std::optional<LedgerEntry> entry = lookup_(documentTypeID, seriesID, documentNumber);
        if (!entry) return nullptr;
        return &found_.emplace_back(std::move(*entry));
    }
    for (const LedgerEntry& entry : Entries()) {
        // Codes compare as the host's keys do, without regard to letter case.
        if (entry.DocumentNumber == documentNumber &&
            EqualsNoCase(entry.DocumentTypeID, documentTypeID) &&
            EqualsNoCase(entry.SeriesID, seriesID)) {
            return &entry;
        }
    }
    return nullptr;
}

}  // namespace kitra::host
