#pragma once
// The back office's receipts: the business object that builds a customer payment from the
// customer's open current-account entries, and the data service that saves it and settles the
// entries (account_settlements) in one SQLite transaction.
#include <memory>

#include "backoffice/Database.h"
#include "backoffice/KeySet.h"
#include "core/Clock.h"
#include "host/IAccountTransactionService.h"

namespace kitra::backoffice {

class AccountTransactionBusiness final : public host::IAccountTransactionBusiness {
public:
    // `taken`: the receipts numbered here that this step's receipts were matched to (see
    // NumberedHereMatch); it outlives the business object.
    AccountTransactionBusiness(Database& database, const KeySet& taken)
        : database_(database), taken_(taken) {}

    void InitNewTransaction(const std::string& documentTypeID,
                            const std::string& seriesID) override;
    host::AccountTransaction& Current() override { return transaction_; }
    host::LedgerAccounts LedgerAccountList() const override;
    void AddAccountLine(const host::LedgerEntry& entry, double invoiceValue) override;
    void WorkstationStamp(std::int16_t workstationID, const DateTime& moment) override;
    host::TransactionPayment NewPayment(std::int16_t tenderID) const override;
    void AppendPayment(const host::TransactionPayment& payment) override;
    void Calculate() override;

private:
    Database& database_;
    const KeySet& taken_;
    host::AccountTransaction transaction_;
};

class AccountTransactionService final : public host::IAccountTransactionService {
public:
    // `clock` stamps the history and the saved receipts; it must outlive the service.
    explicit AccountTransactionService(Database& database, const Clock& clock = DefaultClock());

    std::unique_ptr<host::IAccountTransactionBusiness> NewAccountTransactionBusiness() const override;
    void Save(host::AccountTransaction& transaction) override;

private:
    static const Clock& DefaultClock();

    Database& database_;
    // The receipts numbered here that the receipts saved since the last business object was
    // made have been matched to: each is one source receipt, never two.
    mutable KeySet taken_;
    const Clock& clock_;
};

// Applies `received` to the lines, the oldest entry first, each at most its open amount; sets
// the lines' amounts and the transaction's total, applied amount and credit.
void ApplyReceipt(host::AccountTransaction& transaction);

}  // namespace kitra::backoffice
