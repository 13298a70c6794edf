#include "backoffice/TransactionService.h"

#include <fmt/format.h>

#include "backoffice/DocumentCalculation.h"
#include "backoffice/DocumentStore.h"
#include "backoffice/Money.h"
#include "core/Numbers.h"

namespace kitra::backoffice {

host::StockDirection StockDirectionOf(host::DocumentKind kind) {
    switch (kind) {
        case host::DocumentKind::Sale:
        case host::DocumentKind::CreditSale:
        case host::DocumentKind::StockTransport:
        case host::DocumentKind::SelfConsumption:
            return host::StockDirection::Out;
        case host::DocumentKind::Return:
            return host::StockDirection::In;
        default:
            return host::StockDirection::None;
    }
}


// ---------------------------------------------------------------- TransactionBusiness

void TransactionBusiness::InitNewTransaction(const std::string& documentTypeID,
                                             const std::string& seriesID) {
    const host::DocumentKind kind = lookups_.KindOfDocumentType(documentTypeID);
    lookups_.CheckSeries(seriesID);
    transaction_ = host::Transaction{};
    rates_.clear();
    transaction_.DocumentTypeID = documentTypeID;
    transaction_.SeriesID = seriesID;
    transaction_.Kind = kind;
    transaction_.Stock = StockDirectionOf(kind);
}

void TransactionBusiness::SetTransactionDefaults(const host::DocumentType& definition,
                                                 std::int16_t workstationID) {
    transaction_.Kind = definition.Kind;
    transaction_.Stock = StockDirectionOf(definition.Kind);
    CompanyTerms company = lookups_.Company();
    transaction_.Tax = std::move(company.tax);
    transaction_.CurrencyID = std::move(company.currencyID);
    rates_.clear();
    transaction_.WorkstationID = workstationID;
    transaction_.WarehouseID = lookups_.WarehouseOf(workstationID);
}

host::TransactionLine TransactionBusiness::NewLine() const {
    host::TransactionLine line;
    line.LineNumber = static_cast<std::int32_t>(transaction_.Lines.size()) + 1;
    line.SalesmanID = transaction_.SalesmanID;
    line.WarehouseID = transaction_.WarehouseID;
    line.TargetWarehouseID = transaction_.WarehouseID;
    return line;
}

double TransactionBusiness::RateOf(std::int16_t taxableGroupID) const {
    if (auto known = rates_.find(taxableGroupID); known != rates_.end()) return known->second;
    return rates_[taxableGroupID] = lookups_.Rate(taxableGroupID, transaction_.Tax);
}

void TransactionBusiness::CalculateLine(host::TransactionLine& line) const {
    backoffice::CalculateLine(line, transaction_.PricesIncludeTax, RateOf(line.TaxableGroupID));
}

void TransactionBusiness::AppendLine(const host::TransactionLine& line) {
    transaction_.Lines.push_back(line);
}

host::TransactionPayment TransactionBusiness::NewPayment(std::int16_t tenderID) const {
    return NextPayment(transaction_.Payments, tenderID);
}

void TransactionBusiness::AppendPayment(const host::TransactionPayment& payment) {
    transaction_.Payments.push_back(payment);
}

void TransactionBusiness::WorkstationStamp(std::int16_t workstationID, const DateTime& moment) {
    transaction_.WorkstationID = workstationID;
    transaction_.StampDate = moment;
}

host::Transaction TransactionBusiness::Calculated() const {
    host::Transaction calculated = transaction_;
    CalculateDocument(calculated, [this](std::int16_t group) { return RateOf(group); });
    return calculated;
}

host::CreditCheckAmounts TransactionBusiness::CreditCheck() const {
    const host::Transaction calculated = Calculated();
    return {calculated.Total, calculated.PaidAmount};
}

double TransactionBusiness::CalculatedTotal() const { return Calculated().LinesTotal; }

void TransactionBusiness::SetTotalAdjustment(double amount) {
    transaction_.TotalAdjustment = RoundMoney(amount);
}

void TransactionBusiness::Calculate() { transaction_ = Calculated(); }

// ---------------------------------------------------------------- TransactionService

const Clock& TransactionService::DefaultClock() {
    static const SystemClock clock;
    return clock;
}

TransactionService::TransactionService(Database& database, const Clock& clock)
    : database_(database), clock_(clock), lookups_(database) {}

std::unique_ptr<host::ITransactionBusiness> TransactionService::NewTransactionBusiness() const {
    // One business object builds the documents of one import step: the documents it brings are
    // matched anew to those the back office numbered.
    taken_.clear();
    movedInStep_.clear();
    return std::make_unique<TransactionBusiness>(database_, lookups_);
}

namespace {

// Whether a refund of the source may follow the saving of a document of the kind: documents
// that move stock or the current account; cash documents are never refunded.
bool RefundMayFollow(host::DocumentKind kind) {
    return StockDirectionOf(kind) != host::StockDirection::None ||
           kind == host::DocumentKind::CreditSale;
}

bool IsVoid(const Database& database, std::int32_t key) {
    Statement state(database, "SELECT State FROM documents WHERE DocumentKey=?");
    state.Bind({Variant(key)});
    return state.Step() && state.Column(0).ToInt32() == host::document_state::kVoid;
}

}  // namespace

void TransactionService::Save(host::Transaction& transaction) {
    Transaction write(database_, TransactionKind::Record);
    held_.reset();  // the record held before has ended
    const host::DocumentKind kind = lookups_.KindOfDocumentType(transaction.DocumentTypeID);
    lookups_.CheckSeries(transaction.SeriesID);
    // The document type decides the kind, and with it the stock and the current account.
    transaction.Kind = kind;
    transaction.Stock = StockDirectionOf(kind);
    if (transaction.DocumentNumber < 0) {
        throw Error(fmt::format("O número de documento {} não é válido.", transaction.DocumentNumber));
    }
    {
        TransactionBusiness calculator(database_, lookups_);
        calculator.Current() = transaction;
        for (host::TransactionLine& line : calculator.Current().Lines) calculator.CalculateLine(line);
        calculator.Calculate();
        transaction = calculator.Current();
    }

    const DateTime now = clock_.Now();
    const bool numberAssigned = transaction.DocumentNumber == 0;
    std::int32_t key = 0;
    if (numberAssigned) {
        // The source gave no number: the document it is again, if it was imported before (by
        // its source's key, or, for one saved without a key, by its moment), else the series'
        // next free number.
        SavedIdentity saved = NumberedHereBySource(database_, transaction.DocumentTypeID,
                                                   transaction.SeriesID, transaction.SourceUID);
        if (saved.key == 0) {
            saved = NumberedHereMatch(
                database_,
                {transaction.DocumentTypeID, transaction.SeriesID, transaction.DocumentDate,
                 RoundToInt32(transaction.CustomerID), RoundToInt32(transaction.SalesmanID),
                 transaction.Total, transaction.Comment},
                taken_);
        }
        key = saved.key;
        transaction.DocumentNumber =
            key != 0 ? saved.number
                     : NextFreeNumber(database_, transaction.DocumentTypeID, transaction.SeriesID);
    } else {
        key = KeyOf(database_, transaction.DocumentTypeID, transaction.SeriesID,
                    transaction.DocumentNumber);
        if (key != 0 && NumberedHere(database_, key)) {
            // The number was only lent to a document without one: the source's own document
            // takes it, and the other moves on.
            MoveAside(database_, key, transaction.DocumentTypeID, transaction.SeriesID,
                      transaction.DocumentNumber, now, !movedInStep_.contains(key));
            movedInStep_.insert(key);
            key = 0;
        }
    }
    // The source's key is kept before a new version is weighed against the former one: a
    // document saved before keys were kept gets it even when nothing else changed.
    if (key != 0) KeepSourceUID(database_, key, transaction.SourceUID);
    // Held, the record keeps the write lock until the next write; so only inside a group of
    // records, which keeps it anyway. Committed at once, a record never waits for the next.
    const bool hold = RefundMayFollow(kind) &&
                      transaction.StateCode != host::document_state::kVoid &&
                      database_.SharesCommits();
    std::optional<FormerDocument> former;
    double settled = 0;
    if (key != 0) {
        // Another version of a saved document, whatever workstation made either: the series
        // belongs to one restaurant, so the document is that restaurant's.
        former = OpenVersion(database_, key);
        settled = SettledOf(database_, key);
        RemoveChildren(database_, key);
    }
    key = WriteHeader(database_, key, transaction, numberAssigned, now);
    WriteLines(database_, key, transaction);
    WritePayments(database_, key, transaction);
    if (transaction.StateCode != host::document_state::kVoid) {
        WriteStockMovements(database_, key, transaction, lookups_);
        WriteAccountEntry(database_, key, transaction, settled);
        WriteCashMovements(database_, key, transaction);
    }
    taken_.insert(key);

    Held held{key, std::nullopt};
    if (former && EndVersion(database_, key, *former, transaction.DocumentTypeID,
                             transaction.SeriesID, transaction.DocumentNumber, now, hold) &&
        hold) {
        held.changedFrom = std::move(former->snapshot);
    }
    if (!hold) {
        write.Commit();
        return;
    }
    // A refund may follow: the document and its refund are one record.
    Database& database = database_;
    const bool versionOpen = held.changedFrom.has_value();
    write.Hold(key, [&database, versionOpen] {
        if (versionOpen) database.Exec("RELEASE version");
    });
    held_ = std::move(held);
}

void TransactionService::Refund(host::Transaction& transaction) {
    const std::int32_t key = KeyOf(database_, transaction.DocumentTypeID, transaction.SeriesID,
                                   transaction.DocumentNumber);
    Transaction write(database_, static_cast<std::int64_t>(key));
    std::optional<Held> held;
    if (write.Continued() && held_ && held_->key == key) held = std::move(held_);
    held_.reset();
    if (key == 0) {
        throw Error(fmt::format("Não existe o documento {} que se pretende anular.",
                                DocumentName(transaction.DocumentTypeID, transaction.SeriesID,
                                             transaction.DocumentNumber)));
    }
    const DateTime now = clock_.Now();
    if (!held && IsVoid(database_, key)) {
        // A second refund changes nothing more.
        transaction.StateCode = host::document_state::kVoid;
        return;
    }
    const std::string beforeVoid = FormerVersion(database_, key);
    VoidDocument(database_, key, now);
    if (held && held->changedFrom) {
        // A former version that differed from the new one is open in the version savepoint.
        if (Snapshot(database_, key) == *held->changedFrom) {
            // Saved and voided again as it was: nothing changed, nor the history.
            database_.Exec("ROLLBACK TO version; RELEASE version");
            write.Commit();
            transaction.StateCode = host::document_state::kVoid;
            return;
        }
        database_.Exec("RELEASE version");
    }
    KeepInHistory(database_, key, transaction.DocumentTypeID, transaction.SeriesID,
                  transaction.DocumentNumber, "voided", now, beforeVoid);
    write.Commit();
    transaction.StateCode = host::document_state::kVoid;
}

std::optional<host::SavedDocument> TransactionService::Find(const std::string& documentTypeID,
                                                            const std::string& seriesID,
                                                            std::int32_t documentNumber) const {
    const std::int32_t key = KeyOf(database_, documentTypeID, seriesID, documentNumber);
    if (key == 0) return std::nullopt;
    host::SavedDocument saved;
    saved.DocumentKey = key;
    host::Transaction& t = saved.Document;
    Statement header(database_,
                     fmt::format("SELECT {} FROM documents WHERE DocumentKey=?", HeaderColumnList()));
    header.Bind({Variant(key)});
    header.Step();
    int c = 0;
    t.DocumentTypeID = header.ColumnText(c++);
    t.SeriesID = header.ColumnText(c++);
    t.DocumentNumber = header.Column(c++).ToInt32();
    saved.NumberAssigned = header.Column(c++).ToBool();
    t.Kind = static_cast<host::DocumentKind>(header.Column(c++).ToInt32());
    t.Stock = static_cast<host::StockDirection>(header.Column(c++).ToInt32());
    t.CustomerID = header.Column(c++).ToDouble();
    t.SalesmanID = header.Column(c++).ToDouble();
    t.PriceLineID = header.Column(c++).ToInt16();
    t.ExchangeRate = header.Column(c++).ToDouble();
    t.PricesIncludeTax = header.Column(c++).ToBool();
    t.WarehouseID = header.Column(c++).ToInt16();
    t.DocumentDate = header.Column(c++).ToDate();
    t.DueDate = header.Column(c++).ToDate();
    t.CurrencyID = header.ColumnText(c++);
    t.Tax.CountryID = header.ColumnText(c++);
    t.Tax.TaxRegionID = header.Column(c++).ToInt32();
    t.WorkstationID = header.Column(c++).ToInt16();
    if (!header.ColumnIsNull(c)) t.StampDate = header.Column(c).ToDate();
    ++c;
    t.Comment = header.ColumnText(c++);
    t.CreditSale = header.Column(c++).ToBool();
    t.LinesTotal = header.Column(c++).ToDouble();
    t.TotalNet = header.Column(c++).ToDouble();
    t.TotalTax = header.Column(c++).ToDouble();
    t.TotalAdjustment = header.Column(c++).ToDouble();
    t.Total = header.Column(c++).ToDouble();
    t.PaidAmount = header.Column(c++).ToDouble();
    t.StateCode = header.Column(c++).ToInt16();
    {
        Statement source(database_, "SELECT SourceUID FROM documents WHERE DocumentKey=?");
        source.Bind({Variant(key)});
        if (source.Step() && !source.ColumnIsNull(0)) t.SourceUID = source.ColumnText(0);
    }

    Statement lines(database_,
                    "SELECT LineNumber, ItemID, Description, TaxableGroupID, SalesmanID, "
                    "WarehouseID, TargetWarehouseID, Quantity, DiscountPercent, DiscountValue, "
                    "UnitPrice, UnitPriceWithoutTax, TaxRate, GrossValue, DiscountAmount, "
                    "TotalWithTax, NetValue, TaxValue FROM document_lines WHERE DocumentKey=? "
                    "ORDER BY LineNumber");
    lines.Bind({Variant(key)});
    while (lines.Step()) {
        host::TransactionLine line;
        int l = 0;
        line.LineNumber = lines.Column(l++).ToInt32();
        line.ItemID = lines.ColumnText(l++);
        line.Description = lines.ColumnText(l++);
        line.TaxableGroupID = lines.Column(l++).ToInt16();
        line.SalesmanID = lines.Column(l++).ToDouble();
        line.WarehouseID = lines.Column(l++).ToInt16();
        line.TargetWarehouseID = lines.Column(l++).ToInt16();
        line.Quantity = lines.Column(l++).ToDouble();
        line.DiscountPercent = lines.Column(l++).ToDouble();
        line.DiscountValue = lines.Column(l++).ToDouble();
        line.UnitPrice = lines.Column(l++).ToDouble();
        line.UnitPriceWithoutTax = lines.Column(l++).ToDouble();
        line.TaxRate = lines.Column(l++).ToDouble();
        line.GrossValue = lines.Column(l++).ToDouble();
        line.DiscountAmount = lines.Column(l++).ToDouble();
        line.TotalWithTax = lines.Column(l++).ToDouble();
        line.NetValue = lines.Column(l++).ToDouble();
        line.TaxValue = lines.Column(l++).ToDouble();
        line.Value = line.TotalWithTax;
        t.Lines.push_back(std::move(line));
    }
    Statement taxes(database_,
                    "SELECT TaxableGroupID, Rate, TaxableAmount, TaxAmount, TotalWithTax "
                    "FROM document_taxes WHERE DocumentKey=? ORDER BY TaxableGroupID");
    taxes.Bind({Variant(key)});
    while (taxes.Step()) {
        t.Taxes.push_back({taxes.Column(0).ToInt16(), taxes.Column(1).ToDouble(),
                           taxes.Column(2).ToDouble(), taxes.Column(3).ToDouble(),
                           taxes.Column(4).ToDouble()});
    }
    Statement payments(database_,
                       "SELECT p.LineNumber, p.TenderID, p.Amount, c.Amount FROM document_payments p "
                       "LEFT JOIN card_payments c ON c.DocumentKey=p.DocumentKey AND "
                       "c.LineNumber=p.LineNumber WHERE p.DocumentKey=? ORDER BY p.LineNumber");
    payments.Bind({Variant(key)});
    while (payments.Step()) {
        host::TransactionPayment payment;
        payment.LineNumber = payments.Column(0).ToInt32();
        payment.TenderID = payments.Column(1).ToInt16();
        payment.Amount = payments.Column(2).ToDouble();
        if (!payments.ColumnIsNull(3)) payment.CardDetail = host::CardPaymentDetail{payments.Column(3).ToDouble()};
        t.Payments.push_back(payment);
    }
    Statement entry(database_, "SELECT OpenAmount FROM account_entries WHERE DocumentKey=?");
    entry.Bind({Variant(key)});
    if (entry.Step()) saved.OpenAmount = entry.Column(0).ToDouble();
    return saved;
}

}  // namespace kitra::backoffice
