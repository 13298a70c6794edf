#pragma once
// Taking a document out of the back office by hand: voiding it (it stays, marked void, its stock
// movements reversed, what was open of its current-account entry cancelled, what a receipt
// settled open again) or removing it (it and every row that hangs off it are gone). Either is
// for what only the back office has: a cash movement whose date the restaurant changed, say, is
// imported again under its new date and the old one stays behind, and no import takes it out.
// A document that another one refers to (a credit sale that a receipt settles) is refused until
// that one is taken out. The version taken out is kept in the document's history ("voided",
// "removed"), as an import's replacements are.
#include <cstdint>
#include <string>
#include <vector>

#include "backoffice/Database.h"
#include "core/DateTime.h"

namespace kitra::backoffice {

// What the commands tell apart, by the document type's kind: sales, credit sales, returns,
// stock documents and self-consumption; cash entrances, withdrawals and payments on account;
// receipts.
enum class DocumentGroup { Document, CashMovement, Receipt };

struct DocumentIdentity {
    std::string type;
    std::string series;
    std::int32_t number = 0;
};

// "VB EXT/12" read back; fails with an Error saying the form when the text is not one.
DocumentIdentity ParseDocumentIdentity(const std::string& type, const std::string& seriesAndNumber);

// The command word of a group ("document", "cash-movement", "receipt") and its name in a
// sentence ("o documento", "o movimento de caixa", "o recibo").
const char* GroupCommand(DocumentGroup group);
const char* GroupName(DocumentGroup group);

enum class TakeOut { Void, Remove };

// Voids or removes the document of the group, in one transaction, and keeps the version it was
// in the history. Answers false (and changes nothing) for voiding a document already void.
// Fails with an Error, changing nothing, when there is no such document, when it is of another
// group (the message names the command to use), or when another document refers to it (the
// message names each and how to take it out).
bool TakeOutDocument(Database& database, DocumentGroup group, const DocumentIdentity& identity,
                     TakeOut how, const DateTime& when);

struct DocumentEvent {
    std::string date;     // "yyyy-mm-dd hh:mm:ss"
    std::string event;    // "replaced", "voided", "removed"
    std::string version;  // the version it was before the event
};
// The history of the document of that type, series and number, oldest first (also of one that
// was removed).
std::vector<DocumentEvent> DocumentHistory(const Database& database, const DocumentIdentity& identity);

}  // namespace kitra::backoffice
