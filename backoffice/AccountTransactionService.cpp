#include "backoffice/AccountTransactionService.h"

#include <algorithm>
#include <numeric>

#include <fmt/format.h>

#include "backoffice/DocumentCalculation.h"
#include "backoffice/DocumentStore.h"
#include "backoffice/Money.h"
#include "core/Numbers.h"

namespace kitra::backoffice {
namespace {

void CheckReceiptType(const Database& database, const std::string& documentTypeID) {
    if (KindOfDocumentType(database, documentTypeID) != host::DocumentKind::CustomerPayment) {
        throw Error(fmt::format("O tipo de documento '{}' não é de pagamentos de clientes.",
                                documentTypeID));
    }
}

// Narrows the customer's open entries to the one of a document or of an entry number. Each is
// found through its own key, never by walking the customer's entries (thousands, for a customer
// who buys on credit every day); there is one entry at most, so nothing to order.
struct OneEntry {
    std::string_view indexedBy;  // the index that finds it, or empty for the table's own key
    std::string_view condition;
    std::vector<Variant> values;
};

OneEntry OfDocument(const std::string& documentTypeID, const std::string& seriesID,
                    std::int32_t documentNumber) {
    // The codes compare without letter case, as the columns do.
    return {"INDEXED BY account_entries_by_document ",
            " AND e.DocumentTypeID = ? AND e.SeriesID = ? AND e.DocumentNumber = ?",
            {Variant(documentTypeID), Variant(seriesID), Variant(documentNumber)}};
}

OneEntry WithEntryID(std::int32_t entryID) { return {"", " AND e.EntryID = ?", {Variant(entryID)}}; }

// The customer's open debit entries, oldest first, or only the `one`. What the receipt saved
// under `receiptKey` settled counts as open: saving the receipt again replaces it.
std::vector<host::LedgerEntry> OpenEntries(const Database& database, std::int32_t customer,
                                           std::int32_t receiptKey,
                                           const std::optional<OneEntry>& one = {}) {
    // A receipt settles an entry at most once (one settlement row per receipt and entry), so
    // what it settled is one row found by key, not a sum.
    std::string sql =
        "SELECT e.EntryID, e.DocumentTypeID, e.SeriesID, e.DocumentNumber, "
        "e.DocumentDate, e.Amount, e.OpenAmount + COALESCE(s.Amount, 0) AS Open "
        "FROM account_entries e ";
    if (one) sql += one->indexedBy;
    sql += "LEFT JOIN account_settlements s ON s.ReceiptKey = ? "
           "AND s.EntryID = e.EntryID JOIN documents d ON d.DocumentKey = e.DocumentKey "
           "WHERE e.EntryType = 'D' AND e.CustomerID = ? AND d.State = 0 "
           "AND e.OpenAmount + COALESCE(s.Amount, 0) >= ?";
    std::vector<Variant> values{Variant(receiptKey), Variant(customer), Variant(kNoAmount)};
    if (one) {
        sql += one->condition;
        values.insert(values.end(), one->values.begin(), one->values.end());
    } else {
        sql += " ORDER BY e.DocumentDate, e.EntryID";
    }
    Statement open(database, sql);
    open.Bind(values);
    std::vector<host::LedgerEntry> entries;
    while (open.Step()) {
        host::LedgerEntry entry;
        entry.EntryID = open.Column(0).ToInt32();
        entry.DocumentTypeID = open.ColumnText(1);
        entry.SeriesID = open.ColumnText(2);
        entry.DocumentNumber = open.Column(3).ToInt32();
        entry.DocumentDate = open.Column(4).ToDate();
        entry.Amount = open.Column(5).ToDouble();
        entry.OpenAmount = RoundMoney(open.Column(6).ToDouble());
        entries.push_back(std::move(entry));
    }
    return entries;
}

// The receipt saved before that this one is again: by its number, or, when the source gave
// none, the receipt the back office numbered for the same moment, customer and salesman that
// no other receipt of the step was matched to. Key 0 for a new receipt.
SavedIdentity ReceiptSavedBefore(const Database& database, const host::AccountTransaction& t,
                                 const KeySet& taken) {
    if (t.DocumentNumber != 0)
        return {KeyOf(database, t.DocumentTypeID, t.SeriesID, t.DocumentNumber), t.DocumentNumber};
    return NumberedHereMatch(database,
                             {t.DocumentTypeID, t.SeriesID, t.DocumentDate,
                              RoundToInt32(t.CustomerID), RoundToInt32(t.SalesmanID), std::nullopt,
                              std::string()},
                             taken);
}

// The receipt as a document header: a customer payment worth what was received.
host::Transaction ReceiptDocument(const Database& database, const host::AccountTransaction& t) {
    host::Transaction document;
    document.DocumentTypeID = t.DocumentTypeID;
    document.SeriesID = t.SeriesID;
    document.DocumentNumber = t.DocumentNumber;
    document.Kind = host::DocumentKind::CustomerPayment;
    document.CustomerID = t.CustomerID;
    document.SalesmanID = t.SalesmanID;
    document.DocumentDate = document.DueDate = t.DocumentDate;
    document.WorkstationID = t.WorkstationID;
    document.StampDate = t.StampDate;
    document.Payments = t.Payments;
    document.PaidAmount = document.Total = t.Total;
    Statement company(database, "SELECT CountryID, TaxRegionID, CurrencyID FROM company");
    if (company.Step()) {
        document.Tax = {company.ColumnText(0), company.Column(1).ToInt32()};
        document.CurrencyID = company.ColumnText(2);
    }
    return document;
}

}  // namespace

void ApplyReceipt(host::AccountTransaction& transaction) {
    double received = 0;
    for (const host::TransactionPayment& payment : transaction.Payments) received += payment.Amount;
    transaction.Total = RoundMoney(received);

    std::vector<host::AccountLine*> oldestFirst;
    for (host::AccountLine& line : transaction.Lines) oldestFirst.push_back(&line);
    std::stable_sort(oldestFirst.begin(), oldestFirst.end(),
                     [](const host::AccountLine* a, const host::AccountLine* b) {
                         return std::tie(a->Entry.DocumentDate, a->Entry.EntryID) <
                                std::tie(b->Entry.DocumentDate, b->Entry.EntryID);
                     });
    double left = std::max(0.0, transaction.Total);
    transaction.Applied = 0;
    for (host::AccountLine* line : oldestFirst) {
        line->Amount = RoundMoney(std::min(std::max(0.0, line->Entry.OpenAmount), left));
        left = RoundMoney(left - line->Amount);
        transaction.Applied += line->Amount;
    }
    transaction.Applied = RoundMoney(transaction.Applied);
    transaction.Credit = RoundMoney(transaction.Total - transaction.Applied);
}

// ---------------------------------------------------------------- AccountTransactionBusiness

void AccountTransactionBusiness::InitNewTransaction(const std::string& documentTypeID,
                                                    const std::string& seriesID) {
    CheckReceiptType(database_, documentTypeID);
    CheckSeries(database_, seriesID);
    transaction_ = host::AccountTransaction{};
    transaction_.DocumentTypeID = documentTypeID;
    transaction_.SeriesID = seriesID;
}

host::LedgerAccounts AccountTransactionBusiness::LedgerAccountList() const {
    // Each receipt of a run asks for its customer's list, and one customer (the unknown
    // customer, say) may gather thousands of open entries: the list reads only the entries it
    // is searched for, so a receipt costs the same however long the ledger has grown. The list
    // lives no longer than this business object, nor this object than its database.
    const Database* database = &database_;
    const std::int32_t customer = RoundToInt32(transaction_.CustomerID);
    const std::int32_t receiptKey = ReceiptSavedBefore(database_, transaction_, taken_).key;
    return host::LedgerAccounts(
        [database, customer, receiptKey](const std::string& documentTypeID,
                                         const std::string& seriesID,
                                         std::int32_t documentNumber) -> std::optional<host::LedgerEntry> {
            std::vector<host::LedgerEntry> entries =
                OpenEntries(*database, customer, receiptKey,
                            OfDocument(documentTypeID, seriesID, documentNumber));
            if (entries.empty()) return std::nullopt;
            return std::move(entries.front());
        },
        [database, customer, receiptKey] { return OpenEntries(*database, customer, receiptKey); });
}

void AccountTransactionBusiness::AddAccountLine(const host::LedgerEntry& entry, double invoiceValue) {
    for (const host::AccountLine& line : transaction_.Lines) {
        if (line.Entry.EntryID == entry.EntryID) return;  // an entry is settled once
    }
    transaction_.Lines.push_back({entry, entry.OpenAmount, invoiceValue});
}

void AccountTransactionBusiness::WorkstationStamp(std::int16_t workstationID, const DateTime& moment) {
    transaction_.WorkstationID = workstationID;
    transaction_.StampDate = moment;
}

host::TransactionPayment AccountTransactionBusiness::NewPayment(std::int16_t tenderID) const {
    return NextPayment(transaction_.Payments, tenderID);
}

void AccountTransactionBusiness::AppendPayment(const host::TransactionPayment& payment) {
    transaction_.Payments.push_back(payment);
}

void AccountTransactionBusiness::Calculate() { ApplyReceipt(transaction_); }

// ---------------------------------------------------------------- AccountTransactionService

const Clock& AccountTransactionService::DefaultClock() {
    static const SystemClock clock;
    return clock;
}

AccountTransactionService::AccountTransactionService(Database& database, const Clock& clock)
    : database_(database), clock_(clock) {}

std::unique_ptr<host::IAccountTransactionBusiness>
AccountTransactionService::NewAccountTransactionBusiness() const {
    // One business object builds the receipts of one import step.
    taken_.clear();
    return std::make_unique<AccountTransactionBusiness>(database_, taken_);
}

void AccountTransactionService::Save(host::AccountTransaction& t) {
    Transaction write(database_, TransactionKind::Record);
    CheckReceiptType(database_, t.DocumentTypeID);
    CheckSeries(database_, t.SeriesID);
    const DateTime now = clock_.Now();

    const bool numberAssigned = t.DocumentNumber == 0;
    const SavedIdentity saved = ReceiptSavedBefore(database_, t, taken_);
    std::int32_t key = saved.key;
    if (!numberAssigned && key != 0 && NumberedHere(database_, key)) {
        // A number lent to a receipt without one: the source's own receipt takes it.
        MoveAside(database_, key, t.DocumentTypeID, t.SeriesID, t.DocumentNumber, now);
        key = 0;
    }
    if (numberAssigned) {
        t.DocumentNumber =
            key != 0 ? saved.number : NextFreeNumber(database_, t.DocumentTypeID, t.SeriesID);
    }
    std::optional<FormerDocument> former;
    if (key != 0) {
        // Another version of a saved receipt: it gives back what it settled before this one
        // settles anything. A version that changes nothing is undone at the end.
        former = OpenVersion(database_, key);
        Statement reopen(database_,
                         "UPDATE account_entries SET OpenAmount = round(OpenAmount + (SELECT "
                         "SUM(s.Amount) FROM account_settlements s WHERE s.EntryID = "
                         "account_entries.EntryID AND s.ReceiptKey = ?), 2) WHERE EntryID IN "
                         "(SELECT EntryID FROM account_settlements WHERE ReceiptKey = ?)");
        reopen.Bind({Variant(key), Variant(key)}).Run();
        for (const char* sql : {"DELETE FROM account_settlements WHERE ReceiptKey = ?",
                                "DELETE FROM account_entries WHERE DocumentKey = ?"}) {
            Statement remove(database_, sql);
            remove.Bind({Variant(key)}).Run();
        }
        RemoveChildren(database_, key);
    }

    // Settle at most what is open now, whatever the lines were built from.
    std::vector<host::AccountLine> lines;
    for (const host::AccountLine& line : t.Lines) {
        std::vector<host::LedgerEntry> now = OpenEntries(
            database_, RoundToInt32(t.CustomerID), 0, WithEntryID(line.Entry.EntryID));
        if (now.empty()) continue;  // settled meanwhile, or not this customer's
        lines.push_back({std::move(now.front()), 0, line.InvoiceValue});
    }
    t.Lines = std::move(lines);
    ApplyReceipt(t);

    const host::Transaction document = ReceiptDocument(database_, t);
    key = WriteHeader(database_, key, document, numberAssigned, now);
    WritePayments(database_, key, document);
    WriteCashMovements(database_, key, document);
    Statement settle(database_,
                     "INSERT INTO account_settlements (ReceiptKey, EntryID, Amount, InvoiceValue) "
                     "VALUES (?,?,?,?)");
    Statement reduce(database_,
                     "UPDATE account_entries SET OpenAmount = max(0, round(OpenAmount - ?, 2)) "
                     "WHERE EntryID = ?");
    for (const host::AccountLine& line : t.Lines) {
        if (line.Amount < kNoAmount) continue;
        settle.Reset();
        settle.Bind({Variant(key), Variant(line.Entry.EntryID), Variant(line.Amount),
                     Variant(line.InvoiceValue)})
            .Run();
        reduce.Reset();
        reduce.Bind({Variant(line.Amount), Variant(line.Entry.EntryID)}).Run();
    }
    if (t.Credit >= kNoAmount) WriteEntry(database_, key, "C", document, t.Credit, t.Credit);
    taken_.insert(key);
    if (former) EndVersion(database_, key, *former, t.DocumentTypeID, t.SeriesID, t.DocumentNumber, now);
    write.Commit();
}

}  // namespace kitra::backoffice
