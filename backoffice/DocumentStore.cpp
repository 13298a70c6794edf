#include "backoffice/DocumentStore.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "backoffice/Money.h"
#include "core/Numbers.h"

namespace kitra::backoffice {
namespace {

std::string Money(double value) { return FormatHostNumber(RoundMoney(value)); }

}  // namespace

std::string DocumentName(const std::string& type, const std::string& series, std::int32_t number) {
    return fmt::format("{} {}/{}", type, series, number);
}

host::DocumentKind KindOfDocumentType(const Database& database, const std::string& documentTypeID) {
    Statement type(database, "SELECT Kind FROM document_types WHERE DocumentTypeID=?");
    type.BindValues(documentTypeID);
    if (!type.Step())
        throw Error(fmt::format("Não existe o tipo de documento '{}'.", documentTypeID));
    return static_cast<host::DocumentKind>(type.Column(0).ToInt32());
}

void CheckSeries(const Database& database, const std::string& seriesID) {
    Statement series(database, "SELECT Active FROM document_series WHERE SeriesID=?");
    series.BindValues(seriesID);
    if (!series.Step()) throw Error(fmt::format("Não existe a série '{}'.", seriesID));
    if (!series.Column(0).ToBool())
        throw Error(fmt::format("A série '{}' não está activa.", seriesID));
}

std::int32_t KeyOf(const Database& database, const std::string& type, const std::string& series,
                   std::int32_t number) {
    Statement find(database,
                   "SELECT DocumentKey FROM documents "
                   "WHERE DocumentTypeID=? AND SeriesID=? AND DocumentNumber=?");
    find.BindValues(type, series, number);
    return find.Step() ? find.Column(0).ToInt32() : 0;
}

std::int32_t NextFreeNumber(const Database& database, const std::string& type,
                            const std::string& series) {
    Statement last(database,
                   "SELECT COALESCE(MAX(DocumentNumber), 0) FROM documents "
                   "WHERE DocumentTypeID=? AND SeriesID=?");
    last.Bind({Variant(type), Variant(series)});
    last.Step();
    const std::int32_t number = last.Column(0).ToInt32();
    if (number == INT32_MAX)
        throw Error(fmt::format("A série '{}' do tipo '{}' não tem mais números livres.", series, type));
    return number + 1;
}

std::string FormerVersion(const Database& database, std::int32_t key) {
    std::string text;
    Statement header(database,
                     "SELECT DocumentTypeID, SeriesID, DocumentNumber, DocumentDate, CustomerID, "
                     "SalesmanID, LinesTotal, TotalAdjustment, Total, PaidAmount, CreditSale, "
                     "State, SavedAt FROM documents WHERE DocumentKey=?");
    header.Bind({Variant(key)});
    if (!header.Step()) return text;
    text += fmt::format(
        "{} de {}; cliente {}; vendedor {}; linhas {}; acerto {}; total {}; pago {}; crédito {}; "
        "estado {}; gravado em {}\n",
        DocumentName(header.ColumnText(0), header.ColumnText(1), header.Column(2).ToInt32()),
        header.ColumnText(3), header.ColumnText(4), header.ColumnText(5),
        Money(header.Column(6).ToDouble()), Money(header.Column(7).ToDouble()),
        Money(header.Column(8).ToDouble()), Money(header.Column(9).ToDouble()),
        header.Column(10).ToBool() ? "sim" : "não", header.ColumnText(11), header.ColumnText(12));
    Statement lines(database,
                    "SELECT LineNumber, ItemID, Description, Quantity, UnitPrice, DiscountAmount, "
                    "TotalWithTax, TaxRate FROM document_lines WHERE DocumentKey=? "
                    "ORDER BY LineNumber");
    lines.Bind({Variant(key)});
    while (lines.Step()) {
        text += fmt::format("linha {}: {} '{}' {} x {} - desconto {} = {} (IVA {}%)\n",
                            lines.ColumnText(0), lines.ColumnText(1), lines.ColumnText(2),
                            FormatHostNumber(lines.Column(3).ToDouble()),
                            Money(lines.Column(4).ToDouble()), Money(lines.Column(5).ToDouble()),
                            Money(lines.Column(6).ToDouble()),
                            FormatHostNumber(lines.Column(7).ToDouble()));
    }
    Statement payments(database,
                       "SELECT LineNumber, TenderID, Amount FROM document_payments "
                       "WHERE DocumentKey=? ORDER BY LineNumber");
    payments.Bind({Variant(key)});
    while (payments.Step()) {
        text += fmt::format("pagamento {}: modalidade {} {}\n", payments.ColumnText(0),
                            payments.ColumnText(1), Money(payments.Column(2).ToDouble()));
    }
    return text;
}

void KeepInHistory(Database& database, std::int32_t key, const std::string& type,
                   const std::string& series, std::int32_t number, const char* event,
                   const DateTime& when) {
    KeepInHistory(database, key, type, series, number, event, when, FormerVersion(database, key));
}

void KeepInHistory(Database& database, std::int32_t key, const std::string& type,
                   const std::string& series, std::int32_t number, const char* event,
                   const DateTime& when, const std::string& formerVersion) {
    Statement history(database,
                      "INSERT INTO document_history (DocumentKey, DocumentTypeID, SeriesID, "
                      "DocumentNumber, Event, EventDate, FormerVersion) VALUES (?,?,?,?,?,?,?)");
    history
        .Bind({Variant(key), Variant(type), Variant(series), Variant(number), Variant(event),
               Variant(when), Variant(formerVersion)})
        .Run();
}

double SettledOf(const Database& database, std::int32_t key) {
    Statement entry(database, "SELECT Amount - OpenAmount FROM account_entries WHERE DocumentKey=?");
    entry.BindValues(key);
    return entry.Step() ? entry.Column(0).ToDouble() : 0.0;
}

void RemoveChildren(Database& database, std::int32_t key) {
    for (const char* table : {"document_lines", "document_taxes", "document_payments",
                              "stock_movements", "cash_movements"}) {
        Statement remove(database, fmt::format("DELETE FROM {} WHERE DocumentKey=?", table));
        remove.Bind({Variant(key)}).Run();
    }
}

const std::vector<const char*>& HeaderColumns() {
    static const std::vector<const char*> columns = {
    "DocumentTypeID", "SeriesID",     "DocumentNumber", "NumberAssigned", "Kind",
    "StockDirection", "CustomerID",   "SalesmanID",     "PriceLineID",    "ExchangeRate",
    "PricesIncludeTax", "WarehouseID", "DocumentDate",  "DueDate",        "CurrencyID",
    "CountryID",      "TaxRegionID",  "WorkstationID",  "StampDate",      "Comment",
    "CreditSale",     "LinesTotal",   "TotalNet",       "TotalTax",       "TotalAdjustment",
    "Total",          "PaidAmount",   "State",          "SavedAt"};
    return columns;
}

const std::string& HeaderColumnList() {
    static const std::string list = fmt::format("{}", fmt::join(HeaderColumns(), ","));
    return list;
}

std::int32_t WriteHeader(Database& database, std::int32_t existingKey, const host::Transaction& t,
                         bool numberAssigned, const DateTime& savedAt) {
    // The texts are made once: every document is saved through them.
    static const std::pair<std::string, std::string> texts = [] {
        std::string placeholders, assignments;
        for (const char* column : HeaderColumns()) {
            placeholders += placeholders.empty() ? "?" : ",?";
            assignments += (assignments.empty() ? "" : ",") + std::string(column) + "=?";
        }
        // A new header keeps its source's key with it (NULL for none); an overwritten one keeps
        // the one it has (see KeepSourceUID).
        return std::pair{fmt::format("INSERT INTO documents ({},SourceUID) VALUES ({},NULLIF(?,''))",
                                     HeaderColumnList(), placeholders),
                         fmt::format("UPDATE documents SET {} WHERE DocumentKey=?", assignments)};
    }();
    // The values in the order of HeaderColumns, then the source's key of a new header or the
    // key of the one overwritten.
    const auto write = [&](Statement& statement, const auto&... key) {
        statement.RunWith(t.DocumentTypeID, t.SeriesID, t.DocumentNumber, numberAssigned,
                          static_cast<std::int32_t>(t.Kind), static_cast<std::int32_t>(t.Stock),
                          RoundToInt32(t.CustomerID), RoundToInt32(t.SalesmanID), t.PriceLineID,
                          t.ExchangeRate, t.PricesIncludeTax, t.WarehouseID, t.DocumentDate,
                          t.DueDate, t.CurrencyID, t.Tax.CountryID, t.Tax.TaxRegionID,
                          t.WorkstationID, t.StampDate, t.Comment, t.CreditSale, t.LinesTotal,
                          t.TotalNet, t.TotalTax, t.TotalAdjustment, t.Total, t.PaidAmount,
                          static_cast<std::int32_t>(t.StateCode), savedAt, key...);
    };
    if (existingKey != 0) {
        Statement update(database, texts.second);
        write(update, existingKey);
        return existingKey;
    }
    Statement insert(database, texts.first);
    write(insert, t.SourceUID);
    return static_cast<std::int32_t>(database.LastInsertKey());
}

void WriteLines(Database& database, std::int32_t key, const host::Transaction& t) {
    Statement insert(database,
                     "INSERT INTO document_lines (DocumentKey, LineNumber, ItemID, Description, "
                     "TaxableGroupID, TaxRate, SalesmanID, WarehouseID, TargetWarehouseID, "
                     "Quantity, UnitPrice, UnitPriceWithoutTax, DiscountPercent, DiscountValue, "
                     "GrossValue, DiscountAmount, TotalWithTax, NetValue, TaxValue) "
                     "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    for (const host::TransactionLine& line : t.Lines) {
        insert.RunWith(key, line.LineNumber, line.ItemID, line.Description, line.TaxableGroupID,
                       line.TaxRate, RoundToInt32(line.SalesmanID), line.WarehouseID,
                       line.TargetWarehouseID, line.Quantity, line.UnitPrice,
                       line.UnitPriceWithoutTax, line.DiscountPercent, line.DiscountValue,
                       line.GrossValue, line.DiscountAmount, line.TotalWithTax, line.NetValue,
                       line.TaxValue);
    }
    Statement tax(database,
                  "INSERT INTO document_taxes (DocumentKey, TaxableGroupID, Rate, TaxableAmount, "
                  "TaxAmount, TotalWithTax) VALUES (?,?,?,?,?,?)");
    for (const host::TaxSummary& group : t.Taxes) {
        tax.RunWith(key, group.TaxableGroupID, group.Rate, group.TaxableAmount, group.TaxAmount,
                    group.TotalWithTax);
    }
}

void WritePayments(Database& database, std::int32_t key, const host::Transaction& t) {
    Statement payment(database,
                      "INSERT INTO document_payments (DocumentKey, LineNumber, TenderID, Amount) "
                      "VALUES (?,?,?,?)");
    Statement card(database,
                   "INSERT INTO card_payments (DocumentKey, LineNumber, Amount) VALUES (?,?,?)");
    for (const host::TransactionPayment& p : t.Payments) {
        payment.RunWith(key, p.LineNumber, p.TenderID, RoundMoney(p.Amount));
        if (p.CardDetail) card.RunWith(key, p.LineNumber, RoundMoney(p.CardDetail->Amount));
    }
}

void WriteStockMovements(Database& database, std::int32_t key, const host::Transaction& t,
                         const ReferenceLookups& lookups) {
    if (t.Stock == host::StockDirection::None) return;
    Statement movement(database,
                       "INSERT INTO stock_movements (DocumentKey, LineNumber, ItemID, WarehouseID, "
                       "Quantity, MovementDate, Reversal) VALUES (?,?,?,?,?,?,0)");
    const double direction = static_cast<double>(static_cast<std::int16_t>(t.Stock));
    for (const host::TransactionLine& line : t.Lines) {
        if (line.Quantity == 0 || !lookups.KeepsStock(line.ItemID)) continue;
        movement.RunWith(key, line.LineNumber, line.ItemID, line.WarehouseID,
                         direction * line.Quantity, t.DocumentDate);
    }
}

void WriteAccountEntry(Database& database, std::int32_t key, const host::Transaction& t,
                       double settled) {
    // A credit sale owes what its payments do not cover; a payment on account is money the
    // customer has with the company until it is applied.
    const bool onAccount = t.Kind == host::DocumentKind::CustomerPaymentOnAccount;
    const double amount = onAccount ? RoundMoney(t.Total) : RoundMoney(t.Total - t.PaidAmount);
    if (!(t.CreditSale || onAccount) || amount < kNoAmount) {
        // An entry that receipts settled in part stays, closed, so their settlements keep it.
        Statement close(database,
                        settled >= kNoAmount
                            ? "UPDATE account_entries SET OpenAmount=0 WHERE DocumentKey=?"
                            : "DELETE FROM account_entries WHERE DocumentKey=?");
        close.RunWith(key);
        return;
    }
    WriteEntry(database, key, onAccount ? "C" : "D", t, amount, std::max(0.0, RoundMoney(amount - settled)));
}

void WriteEntry(Database& database, std::int32_t key, const char* entryType,
                const host::Transaction& t, double amount, double open) {
    Statement upsert(database,
                     "INSERT INTO account_entries (DocumentKey, EntryType, CustomerID, "
                     "DocumentTypeID, SeriesID, DocumentNumber, DocumentDate, DueDate, Total, "
                     "Amount, OpenAmount) VALUES (?,?,?,?,?,?,?,?,?,?,?) ON CONFLICT (DocumentKey) "
                     "DO UPDATE SET EntryType=excluded.EntryType, CustomerID=excluded.CustomerID, "
                     "DocumentTypeID=excluded.DocumentTypeID, SeriesID=excluded.SeriesID, "
                     "DocumentNumber=excluded.DocumentNumber, DocumentDate=excluded.DocumentDate, "
                     "DueDate=excluded.DueDate, Total=excluded.Total, Amount=excluded.Amount, "
                     "OpenAmount=excluded.OpenAmount");
    upsert.RunWith(key, entryType, RoundToInt32(t.CustomerID), t.DocumentTypeID, t.SeriesID,
                   t.DocumentNumber, t.DocumentDate, t.DueDate, t.Total, amount, open);
}

void WriteCashMovements(Database& database, std::int32_t key, const host::Transaction& t) {
    double direction = 0;
    switch (t.Kind) {
        case host::DocumentKind::CashEntrance:
        case host::DocumentKind::CustomerPayment:
        case host::DocumentKind::CustomerPaymentOnAccount:
            direction = 1;
            break;
        case host::DocumentKind::CashWithdrawal:
            direction = -1;
            break;
        default:
            return;
    }
    Statement movement(database,
                       "INSERT INTO cash_movements (DocumentKey, WorkstationID, TenderID, Amount, "
                       "MovementDate) VALUES (?,?,?,?,?)");
    for (const host::TransactionPayment& payment : t.Payments) {
        movement.RunWith(key, t.WorkstationID, payment.TenderID,
                         direction * RoundMoney(payment.Amount), t.DocumentDate);
    }
}


SavedIdentity NumberedHereMatch(const Database& database, const SourceMoment& moment,
                                const KeySet& taken) {
    // A customer or salesman is 0 when the back office did not have it when the document was
    // saved (another restaurant may bring it later), so 0 on either side does not tell two
    // documents apart; two known ones that differ do.
    Statement find(database,
                   "SELECT DocumentKey, DocumentNumber, CustomerID, SalesmanID, Total, Comment "
                   "FROM documents INDEXED BY documents_numbered_here WHERE SeriesID=?1 AND "
                   "DocumentTypeID=?2 AND DocumentDate=?3 AND NumberAssigned=1 AND "
                   "(CustomerID=?4 OR CustomerID=0 OR ?4=0) AND (SalesmanID=?5 OR SalesmanID=0 OR ?5=0) "
                   "AND SourceUID IS NULL ORDER BY DocumentKey");
    find.Bind({Variant(moment.series), Variant(moment.type), Variant(moment.date),
               Variant(moment.customer), Variant(moment.salesman)});
    // The closest: the same customer, then the same salesman, then the same total and comment;
    // among equals the oldest.
    SavedIdentity best;
    int bestScore = -1;
    while (find.Step()) {
        const SavedIdentity found{find.Column(0).ToInt32(), find.Column(1).ToInt32()};
        if (taken.contains(found.key)) continue;
        const int score =
            4 * (find.Column(2).ToInt32() == moment.customer) +
            2 * (find.Column(3).ToInt32() == moment.salesman) +
            (moment.total && RoundMoney(find.Column(4).ToDouble()) == RoundMoney(*moment.total) &&
             find.ColumnText(5) == moment.comment);
        if (score > bestScore) {
            best = found;
            bestScore = score;
        }
    }
    return best;
}

SavedIdentity NumberedHereBySource(const Database& database, const std::string& type,
                                   const std::string& series, const std::string& sourceUID) {
    if (sourceUID.empty()) return {};
    Statement find(database,
                   "SELECT DocumentKey, DocumentNumber FROM documents WHERE SeriesID=? AND "
                   "DocumentTypeID=? AND SourceUID=? AND NumberAssigned=1 ORDER BY DocumentKey "
                   "LIMIT 1");
    find.Bind({Variant(series), Variant(type), Variant(sourceUID)});
    if (!find.Step()) return {};
    return {find.Column(0).ToInt32(), find.Column(1).ToInt32()};
}

void KeepSourceUID(Database& database, std::int32_t key, const std::string& sourceUID) {
    if (sourceUID.empty()) return;
    Statement keep(database,
                   "UPDATE documents SET SourceUID=?2 WHERE DocumentKey=?1 AND SourceUID IS NOT ?2");
    keep.RunWith(key, sourceUID);
}

bool NumberedHere(const Database& database, std::int32_t key) {
    Statement numbered(database, "SELECT NumberAssigned FROM documents WHERE DocumentKey=?");
    numbered.Bind({Variant(key)});
    return numbered.Step() && numbered.Column(0).ToBool();
}

std::int32_t MoveAside(Database& database, std::int32_t key, const std::string& type,
                       const std::string& series, std::int32_t number, const DateTime& when,
                       bool keepInHistory) {
    if (keepInHistory) KeepInHistory(database, key, type, series, number, "renumbered", when);
    const std::int32_t next = NextFreeNumber(database, type, series);
    for (const char* table : {"documents", "account_entries"}) {
        Statement move(database,
                       fmt::format("UPDATE {} SET DocumentNumber=? WHERE DocumentKey=?", table));
        move.Bind({Variant(next), Variant(key)}).Run();
    }
    return next;
}

std::string Snapshot(const Database& database, std::int32_t key) {
    // Each query gives its rows in a fixed order; the columns are read as SQLite gives them
    // back, so a value compares with itself exactly.
    static const std::vector<std::string> kParts = [] {
        std::string header;
        for (const char* column : HeaderColumns()) {
            const std::string name = column;
            if (name == "SavedAt" || name == "StampDate") continue;
            header += (header.empty() ? "" : ",") + name;
        }
        return std::vector<std::string>{
            "SELECT " + header + " FROM documents WHERE DocumentKey=?1",
            "SELECT * FROM document_lines WHERE DocumentKey=?1 ORDER BY LineNumber",
            "SELECT * FROM document_taxes WHERE DocumentKey=?1 ORDER BY TaxableGroupID",
            "SELECT * FROM document_payments WHERE DocumentKey=?1 ORDER BY LineNumber",
            "SELECT * FROM card_payments WHERE DocumentKey=?1 ORDER BY LineNumber",
            // A reversal is dated when its document was voided; voided again, it is the same.
            "SELECT LineNumber, ItemID, WarehouseID, Quantity, Reversal, "
            "CASE WHEN Reversal THEN '' ELSE MovementDate END FROM stock_movements "
            "WHERE DocumentKey=?1 ORDER BY Reversal, LineNumber, MovementID",
            "SELECT EntryType, CustomerID, DocumentTypeID, SeriesID, DocumentNumber, DocumentDate, "
            "DueDate, Total, Amount, OpenAmount FROM account_entries WHERE DocumentKey=?1",
            "SELECT s.EntryID, s.Amount, s.InvoiceValue, e.OpenAmount FROM account_settlements s "
            "JOIN account_entries e ON e.EntryID = s.EntryID WHERE s.ReceiptKey=?1 "
            "ORDER BY s.EntryID",
            "SELECT WorkstationID, TenderID, Amount, MovementDate FROM cash_movements "
            "WHERE DocumentKey=?1 ORDER BY MovementID"};
    }();
    std::string text;
    for (const std::string& sql : kParts) {
        Statement rows(database, sql);
        rows.Bind({Variant(key)});
        while (rows.Step()) {
            for (int c = 0; c < rows.ColumnCount(); ++c) {
                text += rows.ColumnIsNull(c) ? std::string("\x01") : rows.ColumnText(c);
                text += '\x1f';
            }
            text += '\x1e';
        }
        text += '\x1d';
    }
    return text;
}

FormerDocument OpenVersion(Database& database, std::int32_t key) {
    FormerDocument former{Snapshot(database, key), FormerVersion(database, key)};
    database.Exec("SAVEPOINT version");
    return former;
}

bool EndVersion(Database& database, std::int32_t key, const FormerDocument& former,
                const std::string& type, const std::string& series, std::int32_t number,
                const DateTime& when, bool keepOpen) {
    if (Snapshot(database, key) == former.snapshot) {
        database.Exec("ROLLBACK TO version; RELEASE version");
        return false;
    }
    KeepInHistory(database, key, type, series, number, "replaced", when, former.text);
    if (!keepOpen) database.Exec("RELEASE version");
    return true;
}

void VoidDocument(Database& database, std::int32_t key, const DateTime& when) {
    Statement state(database, "UPDATE documents SET State=? WHERE DocumentKey=?");
    state.Bind({Variant(host::document_state::kVoid), Variant(key)}).Run();
    Statement reverse(database,
                      "INSERT INTO stock_movements (DocumentKey, LineNumber, ItemID, WarehouseID, "
                      "Quantity, MovementDate, Reversal) "
                      "SELECT DocumentKey, LineNumber, ItemID, WarehouseID, -Quantity, ?, 1 "
                      "FROM stock_movements m WHERE DocumentKey=? AND Reversal=0 AND NOT EXISTS "
                      "(SELECT 1 FROM stock_movements r WHERE r.DocumentKey=m.DocumentKey AND "
                      "r.LineNumber=m.LineNumber AND r.Reversal=1)");
    reverse.Bind({Variant(when), Variant(key)}).Run();
    Statement cancel(database, "UPDATE account_entries SET OpenAmount=0 WHERE DocumentKey=?");
    cancel.Bind({Variant(key)}).Run();
}

}  // namespace kitra::backoffice
