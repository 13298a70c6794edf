#pragma once
// How the back office writes a document's rows: the look-ups and writers that the transaction
// service and the account transaction service share. Each writer runs inside the caller's
// database transaction.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "backoffice/Database.h"
#include "backoffice/KeySet.h"
#include "backoffice/ReferenceLookups.h"
#include "host/ITransactionService.h"

namespace kitra::backoffice {

// "VB EXT/12"
std::string DocumentName(const std::string& type, const std::string& series, std::int32_t number);

// The kind of a document type; fails with an Error naming it when the type is unknown.
host::DocumentKind KindOfDocumentType(const Database& database, const std::string& documentTypeID);
// Fails with an Error when the series is unknown or not active.
void CheckSeries(const Database& database, const std::string& seriesID);

// The key of the saved document of that type, series and number, or 0.
std::int32_t KeyOf(const Database& database, const std::string& type, const std::string& series,
                   std::int32_t number);
// The highest number of that type and series plus one.
std::int32_t NextFreeNumber(const Database& database, const std::string& type,
                            const std::string& series);

// The document the back office numbered itself (its source gave number 0) that a document
// imported again is, when its source gives no key of its own (or the document was saved before
// the back office kept them): same type and series, same date to the second, the same customer
// and salesman where both are known (0 is one the back office did not have), no source key,
// and not yet taken by another document of the same batch (`taken`), so that two source records
// never become one. Among those the closest (the same customer, salesman, total and comment),
// then the oldest. Key 0 when there is none.
struct SourceMoment {
    std::string type, series;
    DateTime date;
    std::int32_t customer = 0, salesman = 0;
    std::optional<double> total;  // unknown yet for a receipt being built
    std::string comment;
};
struct SavedIdentity {
    std::int32_t key = 0;
    std::int32_t number = 0;
};
SavedIdentity NumberedHereMatch(const Database& database, const SourceMoment& moment,
                                const KeySet& taken);

// The document the back office numbered itself for the source record with that key, of that
// type and series. Key 0 when there is none.
SavedIdentity NumberedHereBySource(const Database& database, const std::string& type,
                                   const std::string& series, const std::string& sourceUID);
// Keeps the source record's key on a saved document (nothing for an empty key).
void KeepSourceUID(Database& database, std::int32_t key, const std::string& sourceUID);

// Marks the document void, reverses every stock movement not yet reversed and cancels what is
// open of its current-account entry, as a refund from its source does.
void VoidDocument(Database& database, std::int32_t key, const DateTime& when);

// Whether the back office gave the saved document its number.
bool NumberedHere(const Database& database, std::int32_t key);
// A number the back office gave is never its source's: when the source's own document with
// that number arrives, the one numbered here moves to the series' next free number, with its
// current-account entry, and its history keeps the move (event "renumbered", the former
// version under the former number) unless `keepInHistory` is false. Answers the new number.
std::int32_t MoveAside(Database& database, std::int32_t key, const std::string& type,
                       const std::string& series, std::int32_t number, const DateTime& when,
                       bool keepInHistory = true);

// Everything a saved document is and does (header, lines, VAT, payments, stock movements,
// current-account entry and what receipts settle, drawer movements), but when it was saved and
// stamped: two versions with the same text are the same document, and saving the second would
// change nothing.
std::string Snapshot(const Database& database, std::int32_t key);

// A new version of a saved document is written inside the savepoint "version", so that one
// that changes nothing can be undone. OpenVersion keeps what the document is (its Snapshot and
// its FormerVersion for the history) and opens the savepoint.
struct FormerDocument {
    std::string snapshot;
    std::string text;
};
FormerDocument OpenVersion(Database& database, std::int32_t key);
// Once the new version is written: when it is the former one again, undoes it (the document
// keeps its rows, keys, stamps and history) and answers false; otherwise keeps the former
// version in the history ("replaced") and answers true. The savepoint is released, or, with
// `keepOpen` and a version that changed, left open (a refund may yet make it the former one).
bool EndVersion(Database& database, std::int32_t key, const FormerDocument& former,
                const std::string& type, const std::string& series, std::int32_t number,
                const DateTime& when, bool keepOpen = false);

// A readable copy of a saved document (header, lines, payments).
std::string FormerVersion(const Database& database, std::int32_t key);
// Keeps the saved document's present version in document_history under `event` ("replaced",
// "voided", "renumbered").
void KeepInHistory(Database& database, std::int32_t key, const std::string& type,
                   const std::string& series, std::int32_t number, const char* event,
                   const DateTime& when);
// The same with a former version read before (FormerVersion) it was overwritten.
void KeepInHistory(Database& database, std::int32_t key, const std::string& type,
                   const std::string& series, std::int32_t number, const char* event,
                   const DateTime& when, const std::string& formerVersion);

// What receipts have already settled of the document's current-account entry.
double SettledOf(const Database& database, std::int32_t key);
// Removes the rows that hang off a document, before a new version is written.
void RemoveChildren(Database& database, std::int32_t key);

// The documents columns a header is written to.
const std::vector<const char*>& HeaderColumns();
// The same, joined by commas for a statement's text.
const std::string& HeaderColumnList();
// Inserts the header (existingKey 0), with its source's key when it has one, or overwrites it
// (its source's key as it was); answers the document's key.
std::int32_t WriteHeader(Database& database, std::int32_t existingKey, const host::Transaction& t,
                         bool numberAssigned, const DateTime& savedAt);

void WriteLines(Database& database, std::int32_t key, const host::Transaction& t);
void WritePayments(Database& database, std::int32_t key, const host::Transaction& t);
// Stock-managed items the back office knows move stock in the line's warehouse.
void WriteStockMovements(Database& database, std::int32_t key, const host::Transaction& t,
                         const ReferenceLookups& lookups);
// A credit sale opens (or, replaced, keeps) the customer's debit entry for what was not paid,
// less what receipts already settled of a replaced version; a payment on account opens a
// credit entry for its amount.
void WriteAccountEntry(Database& database, std::int32_t key, const host::Transaction& t,
                       double settled);
// One current-account entry: "D" (owed by the customer) or "C" (the customer's credit).
void WriteEntry(Database& database, std::int32_t key, const char* entryType,
                const host::Transaction& t, double amount, double open);
// Cash documents and receipts move the cash of the workstation's drawer: in for entrances,
// receipts and payments on account, out for withdrawals.
void WriteCashMovements(Database& database, std::int32_t key, const host::Transaction& t);

}  // namespace kitra::backoffice
