#include "backoffice/DocumentRemoval.h"

#include <fmt/format.h>

#include "backoffice/DocumentStore.h"
#include "core/Error.h"
#include "host/IDocumentTypeService.h"
#include "host/ITransactionService.h"

namespace kitra::backoffice {
namespace {

DocumentGroup GroupOf(host::DocumentKind kind) {
    switch (kind) {
        case host::DocumentKind::CashEntrance:
        case host::DocumentKind::CashWithdrawal:
        case host::DocumentKind::CustomerPaymentOnAccount:
            return DocumentGroup::CashMovement;
        case host::DocumentKind::CustomerPayment:
            return DocumentGroup::Receipt;
        default:
            return DocumentGroup::Document;
    }
}

// The receipts that settle something of the document's current-account entry.
std::vector<std::string> SettlingReceipts(const Database& database, std::int32_t key) {
    Statement receipts(database,
                       "SELECT DISTINCT r.DocumentTypeID, r.SeriesID, r.DocumentNumber "
                       "FROM account_entries e JOIN account_settlements s ON s.EntryID = e.EntryID "
                       "JOIN documents r ON r.DocumentKey = s.ReceiptKey WHERE e.DocumentKey = ? "
                       "ORDER BY r.DocumentKey");
    receipts.Bind({Variant(key)});
    std::vector<std::string> names;
    while (receipts.Step())
        names.push_back(DocumentName(receipts.ColumnText(0), receipts.ColumnText(1),
                                     receipts.Column(2).ToInt32()));
    return names;
}

// A receipt gives back what it settled: each credit sale's entry is open again by that much.
void GiveBackSettlements(Database& database, std::int32_t receiptKey) {
    Statement reopen(database,
                     "UPDATE account_entries SET OpenAmount = round(OpenAmount + (SELECT "
                     "SUM(s.Amount) FROM account_settlements s WHERE s.EntryID = "
                     "account_entries.EntryID AND s.ReceiptKey = ?), 2) WHERE EntryID IN "
                     "(SELECT EntryID FROM account_settlements WHERE ReceiptKey = ?)");
    reopen.Bind({Variant(receiptKey), Variant(receiptKey)}).Run();
    Statement forget(database, "DELETE FROM account_settlements WHERE ReceiptKey = ?");
    forget.Bind({Variant(receiptKey)}).Run();
}

}  // namespace

DocumentIdentity ParseDocumentIdentity(const std::string& type, const std::string& seriesAndNumber) {
    const std::string form = "Indique o documento como a retaguarda o nomeia: TIPO SÉRIE/NÚMERO "
                             "(por exemplo VB EXT/12); recebido: '" + type + " " + seriesAndNumber + "'.";
    const std::size_t slash = seriesAndNumber.rfind('/');
    if (type.empty() || slash == std::string::npos || slash == 0) throw Error(form);
    const std::string number = seriesAndNumber.substr(slash + 1);
    if (number.empty() || number.size() > 9 || number.find_first_not_of("0123456789") != std::string::npos)
        throw Error(form);
    return {type, seriesAndNumber.substr(0, slash), static_cast<std::int32_t>(std::stol(number))};
}

const char* GroupCommand(DocumentGroup group) {
    switch (group) {
        case DocumentGroup::CashMovement: return "cash-movement";
        case DocumentGroup::Receipt: return "receipt";
        default: return "document";
    }
}

const char* GroupName(DocumentGroup group) {
    switch (group) {
        case DocumentGroup::CashMovement: return "o movimento de caixa";
        case DocumentGroup::Receipt: return "o recibo";
        default: return "o documento";
    }
}

bool TakeOutDocument(Database& database, DocumentGroup group, const DocumentIdentity& identity,
                     TakeOut how, const DateTime& when) {
    Transaction write(database);
    const std::string name = DocumentName(identity.type, identity.series, identity.number);
    Statement found(database,
                    "SELECT DocumentKey, Kind, State, DocumentTypeID, SeriesID FROM documents "
                    "WHERE DocumentTypeID=? AND SeriesID=? AND DocumentNumber=?");
    found.Bind({Variant(identity.type), Variant(identity.series), Variant(identity.number)});
    if (!found.Step()) throw Error(fmt::format("Não existe {} {} na retaguarda.", GroupName(group), name));
    const std::int32_t key = found.Column(0).ToInt32();
    const DocumentGroup actual = GroupOf(static_cast<host::DocumentKind>(found.Column(1).ToInt32()));
    const bool isVoid = found.Column(2).ToInt32() == host::document_state::kVoid;
    // As the back office writes them (the letter case of the type and series stored).
    const std::string type = found.ColumnText(3), series = found.ColumnText(4);
    if (actual != group) {
        throw Error(fmt::format("{} não é {}: é {}; use 'kitra-host {} {} {} {}/{}'.", name,
                                GroupName(group), GroupName(actual), GroupCommand(actual),
                                how == TakeOut::Void ? "void" : "remove", type, series,
                                identity.number));
    }
    const std::vector<std::string> receipts = SettlingReceipts(database, key);
    if (!receipts.empty()) {
        std::string list;
        for (std::size_t i = 0; i < receipts.size(); ++i)
            list += (i == 0 ? "" : i + 1 == receipts.size() ? " e " : ", ") + receipts[i];
        std::string commands;
        for (const std::string& receipt : receipts) commands += " 'kitra-host receipt remove " + receipt + "'";
        throw Error(fmt::format(
            "{} é liquidado {} {}: tire primeiro {} ({}), que lhe devolve o que liquidou.",
            name, receipts.size() == 1 ? "pelo recibo" : "pelos recibos", list,
            receipts.size() == 1 ? "o recibo" : "os recibos", commands.substr(1)));
    }
    if (how == TakeOut::Void) {
        if (isVoid) return false;
        const std::string before = FormerVersion(database, key);
        if (group == DocumentGroup::Receipt) GiveBackSettlements(database, key);
        VoidDocument(database, key, when);
        KeepInHistory(database, key, type, series, identity.number, "voided", when, before);
    } else {
        KeepInHistory(database, key, type, series, identity.number, "removed", when);
        if (group == DocumentGroup::Receipt) GiveBackSettlements(database, key);
        // Everything else that hangs off the document goes with it.
        Statement remove(database, "DELETE FROM documents WHERE DocumentKey=?");
        remove.Bind({Variant(key)}).Run();
    }
    write.Commit();
    return true;
}

std::vector<DocumentEvent> DocumentHistory(const Database& database, const DocumentIdentity& identity) {
    Statement history(database,
                      "SELECT EventDate, Event, FormerVersion FROM document_history WHERE "
                      "DocumentTypeID=? AND SeriesID=? AND DocumentNumber=? ORDER BY HistoryID");
    history.Bind({Variant(identity.type), Variant(identity.series), Variant(identity.number)});
    std::vector<DocumentEvent> events;
    while (history.Step()) {
        events.push_back({FormatIsoDateTime(history.Column(0).ToDate()), history.ColumnText(1),
                          history.ColumnText(2)});
    }
    return events;
}

}  // namespace kitra::backoffice
