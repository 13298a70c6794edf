#include "backoffice/cli/ReconcileSources.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "ado/Recordset.h"
#include "core/DateTime.h"
#include "core/Error.h"
#include "core/Numbers.h"
#include "core/RestaurantCodes.h"
#include "core/Text.h"
#include "host/ITransactionService.h"

namespace kitra::backoffice::cli::reconcile {
namespace {

// Restaurant document types, as the import maps them.
constexpr std::int32_t kInvoice = 17;
constexpr std::int32_t kCreditSale = 11;
constexpr std::int32_t kStockDocument = 13;
// Cash movement types and flows the import treats apart.
constexpr std::int32_t kPaymentOnAccount = 8;
constexpr std::int32_t kMoneyOut = 0;

constexpr const char* kMoment = "'%Y-%m-%d %H:%i:%s'";

// The period as a condition on a restaurant column. The bounds go into the statement's text, so
// only dates may.
std::string RestaurantPeriod(const std::string& column, const Period& period) {
    for (const std::string& bound : {period.from, period.to}) {
        if (!bound.empty() && !IsIsoDateTime(bound)) throw Error("A data '" + bound + "' não é válida.");
    }
    std::string condition;
    if (!period.from.empty()) condition += " AND " + column + " >= '" + period.from + "'";
    if (!period.to.empty()) condition += " AND " + column + " <= '" + period.to + "'";
    return condition;
}

// A restaurant code as the import reads it: a number (separator ","), 0 when NULL.
std::int32_t CodeOf(const Variant& value) {
    if (value.IsNull()) return 0;
    try {
        return RoundToInt32(ParseNumberStrict(value.ToText(), ','));
    } catch (const std::exception&) {
        return 0;  // the import fails on such a row: it is not in the back office under any code
    }
}

std::int32_t Known(const std::set<std::int32_t>& codes, std::int32_t code) {
    return codes.contains(code) ? code : 0;
}

// An amount the restaurant keeps in hundredths, in euros.
double Hundredths(const Variant& value) {
    try {
        return ParseNumberStrict(value.ToText(), ',') / 100;
    } catch (const std::exception&) {
        return 0;
    }
}

std::int64_t Cents(double euros) { return std::llround(euros * 100); }

std::string TextOf(const Variant& value) { return value.IsNull() ? std::string() : value.ToText(); }

// The movement type's text the import puts in a cash document's comment.
std::string MovementTypeText(std::int32_t type) {
    static constexpr std::array<const char*, 8> kTexts = {
        "Fundo Maneio", "Fundo Maneio Prox", "Sangria",   "Compra Direta",
        "Vale",         "Empréstimo",        "Devolução", "Pag.Conta Corrente"};
    return type >= 1 && type <= 8 ? kTexts[static_cast<std::size_t>(type - 1)] : "";
}

std::string CashDocumentType(const DocumentTypes& types, std::int32_t movementType,
                             std::int32_t movementFlow, std::int32_t customer) {
    if (movementType == kPaymentOnAccount) return customer != 0 ? types.paymentOnAccount : std::string();
    // A flow that is neither in nor out counts as money in.
    return movementFlow == kMoneyOut ? types.cashWithdrawal : types.cashEntrance;
}

// The numbers of the credit sales a receipt names (its headers' DocumentIDs joined by ","), as
// the import looks them up; a DocumentID that gives 0 names none.
std::vector<std::int32_t> CreditSaleNumbers(const std::string& documentIds) {
    std::vector<std::int32_t> numbers;
    std::size_t start = 0;
    while (start <= documentIds.size()) {
        std::size_t comma = documentIds.find(',', start);
        if (comma == std::string::npos) comma = documentIds.size();
        if (const std::int32_t n = NumberFromDocumentId(documentIds.substr(start, comma - start)); n != 0)
            numbers.push_back(n);
        start = comma + 1;
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

std::vector<Record> RestaurantDocuments(ado::Connection& connection, const DocumentTypes& types,
                                        const Period& period, const KnownCodes& known) {
    const std::pair<std::int32_t, const std::string*> mapped[] = {
        {kInvoice, &types.invoice}, {kCreditSale, &types.creditSale}, {kStockDocument, &types.stockDocument}};
    std::string uids;
    for (const auto& [uid, key] : mapped) {
        if (!key->empty()) uids += (uids.empty() ? "" : ",") + std::to_string(uid);
    }
    std::vector<Record> records;
    if (uids.empty()) return records;  // the import leaves every type out
    // The headers as the import's SaleDocumentsStatement joins them, of every date.
    ado::Recordset rows;
    rows.Open(fmt::format(
                  "SELECT th.UID UID, salesmans.SalesmanID SalesmanID, "
                  "DATE_FORMAT(th.CreateDate,{0}) CreateDate, DATE_FORMAT(th.ModifyDate,{0}) ModifyDate, "
                  "DocumentID, customers.CustomerID CustomerID, DocumentTypeUID, TransactionStatus, "
                  "th.TableTotal TableTotal FROM transactionsheaders th "
                  "LEFT OUTER JOIN salesmans on salesmans.uid = th.CreateSalesmanUID "
                  "LEFT OUTER JOIN customers on customers.uid = th.CustomerUID "
                  "WHERE th.DocumentTypeUID in ({1}){2} order by th.CreateDate, DocumentID",
                  kMoment, uids, RestaurantPeriod("th.CreateDate", period)),
              connection);
    for (; !rows.Eof(); rows.MoveNext()) {
        Record r;
        const std::int32_t type = rows["DocumentTypeUID"].ToInt32();
        for (const auto& [uid, key] : mapped) {
            if (uid == type) r.type = *key;
        }
        r.source = TextOf(rows["DocumentID"]);
        r.number = NumberFromDocumentId(r.source);
        r.numberedHere = r.number == 0;
        r.sourceUID = TextOf(rows["UID"]);
        r.date = TextOf(rows["CreateDate"]);
        r.selectedBy = TextOf(rows["ModifyDate"]);
        r.customer = Known(known.customers, CodeOf(rows["CustomerID"]));
        r.salesman = SalesmanFromUid(Known(known.salesmen, CodeOf(rows["SalesmanID"])));
        r.cents = Cents(Hundredths(rows["TableTotal"]));
        r.voided = TextOf(rows["TransactionStatus"]) != "N";
        for (const char* needed : {"CreateDate", "TableTotal", "TransactionStatus"}) {
            if (rows[needed].IsNull()) {
                r.unimportable = std::string("o restaurante não lhe dá ") + needed +
                                 ": a importação pára nele e não guarda os seguintes";
                break;
            }
        }
        records.push_back(std::move(r));
    }
    return records;
}

std::vector<Record> RestaurantCashMovements(ado::Connection& connection, const DocumentTypes& types,
                                            const Period& period, const KnownCodes& known) {
    // The movements as the import's CashMovementsStatement joins them: one whose salesman or
    // type the restaurant does not have is selected by neither.
    ado::Recordset rows;
    rows.Open(fmt::format(
                  "SELECT cm.UID UID, salesmans.SalesmanID SalesmanID, customers.customerid customerid, "
                  "DATE_FORMAT(cm.date,{0}) date, value, MovementTypeID, MovementFlow, "
                  "cm.description description FROM cashdrawer_movements cm "
                  "INNER JOIN salesmans on salesmans.uid = cm.SalesmanUID "
                  "LEFT JOIN customers on customers.uid = cm.entityuid "
                  "INNER JOIN cashdrawermovementtypes mt on cm.MovementTypeID = mt.uid "
                  "WHERE documentid = ''{1} order by cm.date, cm.UID",
                  kMoment, RestaurantPeriod("cm.date", period)),
              connection);
    std::vector<Record> records;
    for (; !rows.Eof(); rows.MoveNext()) {
        Record r;
        r.customer = Known(known.customers, CodeOf(rows["customerid"]));
        const std::int32_t movementType = CodeOf(rows["MovementTypeID"]);
        r.type = CashDocumentType(types, movementType, CodeOf(rows["MovementFlow"]), r.customer);
        if (r.type.empty()) continue;  // the import leaves it out
        r.source = "UID " + TextOf(rows["UID"]);
        r.numberedHere = true;
        r.date = TextOf(rows["date"]);
        r.selectedBy = r.date;
        r.salesman = Known(known.salesmen, CodeOf(rows["SalesmanID"]));
        // Cash movements arrive in whole euros, a half going to the even neighbour.
        try {
            r.cents = std::int64_t{RoundToInt32(Hundredths(rows["value"]))} * 100;
        } catch (const std::exception&) {
            r.cents = 0;
        }
        r.group = MovementTypeText(movementType);
        const std::string description = TextOf(rows["description"]);
        r.comment = r.group + (description.empty() ? "" : "\r\n" + description);
        records.push_back(std::move(r));
    }
    return records;
}

std::vector<Record> RestaurantReceipts(ado::Connection& connection, const DocumentTypes& types,
                                       const Period& period, const KnownCodes& known) {
    std::vector<Record> records;
    if (types.customerPayment.empty() || types.creditSale.empty()) return records;  // left out
    // The receipts as the import's ReceiptsStatement groups them, one per DocumentID.
    ado::Recordset rows;
    rows.Open(fmt::format(
                  "SELECT cm.UID UID, GROUP_CONCAT(th.documentid SEPARATOR ',') InvoiceID, "
                  "salesmans.SalesmanID SalesmanID, c.customerid customerid, "
                  "DATE_FORMAT(cm.date,{0}) date, cm.value value, cm.DocumentID ReceiptID "
                  "from transactionsheaders th "
                  "inner join transactionstenders tt on tt.transactionuid = th.uid "
                  "inner join customers c on c.uid = th.customeruid "
                  "inner join cashdrawer_movements cm on cm.uid = tt.ReceiptMovementuid "
                  "INNER JOIN salesmans on salesmans.uid = cm.SalesmanUID "
                  "WHERE cm.MovementTypeid in (8,9) and cm.DocumentID <> ''{1} "
                  "group by ReceiptID order by cm.DocumentID",
                  kMoment, RestaurantPeriod("cm.Date", period)),
              connection);
    for (; !rows.Eof(); rows.MoveNext()) {
        Record r;
        r.type = types.customerPayment;
        r.source = TextOf(rows["ReceiptID"]);
        r.number = NumberFromDocumentId(r.source);
        r.numberedHere = r.number == 0;
        r.date = TextOf(rows["date"]);
        r.selectedBy = r.date;
        r.customer = Known(known.customers, CodeOf(rows["customerid"]));
        r.salesman = Known(known.salesmen, CodeOf(rows["SalesmanID"]));
        r.cents = Cents(Hundredths(rows["value"]));
        r.settles = CreditSaleNumbers(TextOf(rows["InvoiceID"]));
        records.push_back(std::move(r));
    }
    return records;
}

// The back office's documents of the series and types, in the period.
std::vector<Record> BackOfficeDocuments(const Database& database, std::vector<std::string> types,
                                        const std::string& series, const Period& period) {
    std::vector<Record> records;
    types.erase(std::remove(types.begin(), types.end(), std::string()), types.end());
    if (types.empty()) return records;
    std::string marks;
    for (std::size_t i = 0; i < types.size(); ++i) marks += i ? ",?" : "?";
    Statement rows(database,
                   "SELECT DocumentKey, DocumentTypeID, DocumentNumber, NumberAssigned, DocumentDate, "
                   "CustomerID, SalesmanID, Total, State, Comment, SourceUID FROM documents WHERE SeriesID = ? AND "
                   "DocumentTypeID IN (" + marks + ") AND DocumentDate BETWEEN ? AND ? "
                   "ORDER BY DocumentDate, DocumentKey");
    std::vector<Variant> values{Variant(series)};
    for (const std::string& type : types) values.emplace_back(type);
    values.emplace_back(period.from.empty() ? std::string("0000-01-01 00:00:00") : period.from);
    values.emplace_back(period.to.empty() ? std::string("9999-12-31 23:59:59") : period.to);
    rows.Bind(values);
    while (rows.Step()) {
        Record r;
        r.key = rows.Column(0).ToInt32();
        r.type = rows.ColumnText(1);
        r.number = rows.Column(2).ToInt32();
        r.numberedHere = rows.Column(3).ToBool();
        r.date = rows.ColumnText(4);
        r.customer = rows.Column(5).ToInt32();
        r.salesman = rows.Column(6).ToInt32();
        r.cents = Cents(rows.Column(7).ToDouble());
        r.voided = rows.Column(8).ToInt32() == host::document_state::kVoid;
        r.comment = rows.ColumnText(9);
        if (!rows.ColumnIsNull(10)) r.sourceUID = rows.ColumnText(10);
        records.push_back(std::move(r));
    }
    return records;
}

}  // namespace

std::int32_t NumberFromDocumentId(const std::string& documentId) {
    try {
        return RoundToInt32(DocumentNumberFromId(documentId));
    } catch (const std::exception&) {
        return 0;
    }
}

std::int32_t SalesmanFromUid(std::int32_t code) {
    return static_cast<std::int32_t>(SalesmanCodeFromUid(code));
}

DocumentTypes DocumentTypesOf(const SettingsDocument& settings) {
    DocumentTypes types;
    types.invoice = settings.RootAttribute("InvoiceTransDocument");
    types.creditSale = settings.RootAttribute("CreditTransDocument");
    types.stockDocument = settings.RootAttribute("StockTransDocument");
    types.cashEntrance = settings.RootAttribute("CashEntranceTransDocument");
    types.cashWithdrawal = settings.RootAttribute("CashWithdrawalTransDocument");
    types.paymentOnAccount = settings.RootAttribute("CustomerPaymentAccountDocument");
    types.customerPayment = settings.RootAttribute("CustomerPaymentTransDocument");
    return types;
}

KnownCodes ReadKnownCodes(const Database& database) {
    KnownCodes known;
    Statement customers(database, "SELECT CustomerID FROM customers");
    while (customers.Step()) known.customers.insert(customers.Column(0).ToInt32());
    Statement salesmen(database, "SELECT SalesmanID FROM salesmen");
    while (salesmen.Step()) known.salesmen.insert(salesmen.Column(0).ToInt32());
    return known;
}

CreditSales ReadCreditSales(const Database& database, const DocumentTypes& types, const std::string& series) {
    CreditSales credit;
    if (types.creditSale.empty()) return credit;
    Statement documents(database, "SELECT DocumentNumber FROM documents WHERE DocumentTypeID = ? AND SeriesID = ?");
    documents.Bind({Variant(types.creditSale), Variant(series)});
    while (documents.Step()) credit.documents.insert(documents.Column(0).ToInt32());
    // Open to the cent: what is left of a rounded settlement is no debt.
    Statement open(database,
                   "SELECT DocumentNumber FROM account_entries WHERE EntryType = 'D' AND DocumentTypeID = ? "
                   "AND SeriesID = ? AND OpenAmount >= 0.005");
    open.Bind({Variant(types.creditSale), Variant(series)});
    while (open.Step()) credit.open.insert(open.Column(0).ToInt32());
    return credit;
}

Records ReadRestaurant(ado::Connection& connection, const DocumentTypes& types,
                       const Period& period, const KnownCodes& known) {
    Records records;
    records[static_cast<std::size_t>(Kind::Documents)] = RestaurantDocuments(connection, types, period, known);
    records[static_cast<std::size_t>(Kind::CashMovements)] = RestaurantCashMovements(connection, types, period, known);
    records[static_cast<std::size_t>(Kind::Receipts)] = RestaurantReceipts(connection, types, period, known);
    return records;
}

Records ReadBackOffice(const Database& database, const DocumentTypes& types,
                       const std::string& series, const Period& period) {
    Records records;
    records[static_cast<std::size_t>(Kind::Documents)] =
        BackOfficeDocuments(database, {types.invoice, types.creditSale, types.stockDocument}, series, period);
    std::vector<Record> cash = BackOfficeDocuments(
        database, {types.cashEntrance, types.cashWithdrawal, types.paymentOnAccount}, series, period);
    for (Record& r : cash) r.group = r.comment.substr(0, r.comment.find("\r\n"));
    records[static_cast<std::size_t>(Kind::CashMovements)] = std::move(cash);
    if (!types.customerPayment.empty() && !types.creditSale.empty()) {
        std::vector<Record> receipts = BackOfficeDocuments(database, {types.customerPayment}, series, period);
        Statement settled(database,
                          "SELECT e.DocumentNumber, e.DocumentTypeID = ?2 AND e.SeriesID = ?3, s.Amount "
                          "FROM account_settlements s JOIN account_entries e ON e.EntryID = s.EntryID "
                          "WHERE s.ReceiptKey = ?1 ORDER BY e.DocumentNumber");
        for (Record& r : receipts) {
            settled.Reset();
            settled.Bind({Variant(r.key), Variant(types.creditSale), Variant(series)});
            double applied = 0;
            while (settled.Step()) {
                if (settled.Column(1).ToInt32() != 0) r.settles.push_back(settled.Column(0).ToInt32());
                applied += settled.Column(2).ToDouble();
            }
            r.settles.erase(std::unique(r.settles.begin(), r.settles.end()), r.settles.end());
            r.appliedCents = Cents(applied);
        }
        records[static_cast<std::size_t>(Kind::Receipts)] = std::move(receipts);
    }
    return records;
}

}  // namespace kitra::backoffice::cli::reconcile
