// What an import run brought, counted on both sides: in the restaurant, what the import's rules
// select for the mapped types; in the back office, what is there in the restaurant's series.
// The bench compares the two after every run, so that a run that left records out cannot pass
// for a fast one.
#include "tools/bench/Bench.h"

#include <pugixml.hpp>
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "backoffice/Database.h"

namespace kitra::bench {
namespace {

// The restaurant's document types and the settings attribute each is saved under.
constexpr std::pair<std::int32_t, const char*> kDocumentTypes[] = {
    {17, "InvoiceTransDocument"}, {11, "CreditTransDocument"}, {13, "StockTransDocument"}};
constexpr std::int32_t kCreditSaleType = 11;
// A back-office tender of this type is a sale on credit: never a payment line.
constexpr std::int64_t kOnAccountTenderType = 6;
// A cash movement of this type is a payment on account: saved only for a known customer.
constexpr std::int32_t kPaymentOnAccount = 8;

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string SinceCondition(const std::string& column, const std::string& since) {
    return "DATE_FORMAT(" + column + ",'%Y-%m-%d %H:%i:%s') > STR_TO_DATE('" + since +
           "','%Y-%m-%d %H:%i:%s')";
}

class BackOffice {
public:
    explicit BackOffice(const std::string& file) {
        // The first file the bench opens starts SQLite in this process: with the back office's
        // settings, which the write floor opens with after it.
        backoffice::ConfigureSqlite();
        if (sqlite3_open_v2(file.c_str(), &db_, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
            const std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
            sqlite3_close(db_);
            throw std::runtime_error("cannot open " + file + ": " + message);
        }
    }
    ~BackOffice() { sqlite3_close(db_); }
    BackOffice(const BackOffice&) = delete;
    BackOffice& operator=(const BackOffice&) = delete;

    // The statement's rows, each as whole numbers; `text` is bound to every parameter in turn.
    std::vector<std::vector<std::int64_t>> Rows(const std::string& sql, const std::vector<std::string>& texts = {}) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string(sqlite3_errmsg(db_)) + " (" + sql + ")");
        for (std::size_t i = 0; i < texts.size(); ++i) {
            sqlite3_bind_text(statement, static_cast<int>(i + 1), texts[i].c_str(), -1, SQLITE_TRANSIENT);
        }
        std::vector<std::vector<std::int64_t>> rows;
        int step;
        while ((step = sqlite3_step(statement)) == SQLITE_ROW) {
            std::vector<std::int64_t> row;
            for (int c = 0; c < sqlite3_column_count(statement); ++c) row.push_back(sqlite3_column_int64(statement, c));
            rows.push_back(std::move(row));
        }
        const std::string message = sqlite3_errmsg(db_);
        sqlite3_finalize(statement);
        if (step != SQLITE_DONE) throw std::runtime_error(message + " (" + sql + ")");
        return rows;
    }
    long Count(const std::string& sql, const std::vector<std::string>& texts) {
        return static_cast<long>(Rows(sql, texts).at(0).at(0));
    }

private:
    sqlite3* db_ = nullptr;
};

// "?, ?, ?" for the back-office types, and the parameters: the series first.
std::string Placeholders(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += i ? ",?" : "?";
    return text.empty() ? "NULL" : text;
}

std::vector<std::string> SeriesAnd(const ImportMapping& mapping, const std::vector<std::string>& types) {
    std::vector<std::string> parameters{mapping.series};
    parameters.insert(parameters.end(), types.begin(), types.end());
    return parameters;
}

long CountRows(ado::Connection& connection, const std::string& statement) {
    ado::Recordset rows;
    rows.Open(statement, connection);
    return rows.Field(std::size_t{0}).ToInt32();
}

}  // namespace

ImportMapping ReadImportMapping(const std::string& settingsFile, const std::string& restaurant) {
    pugi::xml_document document;
    if (const pugi::xml_parse_result parsed = document.load_file(settingsFile.c_str()); !parsed) {
        throw std::runtime_error("cannot read the settings " + settingsFile + ": " + parsed.description());
    }
    const pugi::xml_node settings = document.child("KitraConnectorSetting");
    if (!settings) throw std::runtime_error("no KitraConnectorSetting in " + settingsFile);
    ImportMapping mapping;
    for (const pugi::xml_node entry : settings.child("Restaurants").children("Restaurant")) {
        if (Upper(entry.attribute("Name").value()) == Upper(restaurant)) mapping.series = entry.attribute("TransSerial").value();
    }
    if (mapping.series.empty()) throw std::runtime_error("no restaurant '" + restaurant + "' in " + settingsFile);
    for (const auto& [type, attribute] : kDocumentTypes) {
        const std::string key = settings.attribute(attribute).value();
        if (key.empty()) continue;
        mapping.documentTypes.push_back(type);
        mapping.documentTypeKeys.push_back(key);
    }
    for (const char* attribute : {"CashEntranceTransDocument", "CashWithdrawalTransDocument"}) {
        const std::string key = settings.attribute(attribute).value();
        if (!key.empty()) mapping.cashTypeKeys.push_back(key);
    }
    const std::string onAccount = settings.attribute("CustomerPaymentAccountDocument").value();
    mapping.paymentsOnAccount = !onAccount.empty();
    if (mapping.paymentsOnAccount) mapping.cashTypeKeys.push_back(onAccount);
    if (!std::string(settings.attribute("CreditTransDocument").value()).empty())
        mapping.receiptTypeKey = settings.attribute("CustomerPaymentTransDocument").value();
    for (const pugi::xml_node tender : settings.child("TenderEquivalence").children("Tender")) {
        mapping.tenders.emplace_back(tender.attribute("KitraTenderID").value(),
                                     static_cast<std::int16_t>(tender.attribute("POSTenderID").as_int()));
    }
    mapping.defaultTender = static_cast<std::int16_t>(settings.attribute("DefaultTenderPayment").as_int());
    return mapping;
}

// A document's lines as the import's statement reads them: a line without its tax or its item
// in the restaurant's tables is not read.
constexpr const char* kLinesRead =
    "transactionsdetails td INNER JOIN taxes tx ON tx.uid = td.SaleTaxUID "
    "INNER JOIN plus pl ON td.PluUid = pl.UID";

ImportCounts CountRestaurant(const FetchFloorOptions& options, const ImportMapping& mapping,
                             const std::string& backOfficeFile) {
    ImportCounts counts;
    ado::Connection connection;
    connection.Open("Driver={MySQL ODBC 5.1 Driver};Server=" + options.server + ";Database=" + options.database +
                    "; User=" + options.user + ";Password=" + options.password + ";Option=3;Port=" + options.port);
    const std::string since = options.transactionImportDate;
    const std::string headers =
        mapping.documentTypes.empty()
            ? std::string("FALSE")
            : SinceCondition("th.ModifyDate", since) + " AND th.DocumentTypeUID IN (" +
                  fmt::format("{}", fmt::join(mapping.documentTypes, ",")) + ")";

    counts.documents = CountRows(connection, "SELECT COUNT(*) FROM transactionsheaders th WHERE " + headers);
    // Lines as the import reads them.
    counts.lines = CountRows(connection,
                             std::string("SELECT COUNT(*) FROM ") + kLinesRead + " INNER JOIN transactionsheaders th ON "
                             "th.UID = td.TransactionUID WHERE " + headers);

    // Payments: one per document and back-office tender (payment types of one tender are one
    // line); payments on account and offers (codes 9999, 9998) and tenders of the on-account
    // type are none.
    std::set<std::int64_t> onAccountTenders;
    std::set<std::int64_t> knownCustomers;
    {
        BackOffice backOffice(backOfficeFile);
        for (const auto& row : backOffice.Rows("SELECT TenderID FROM tenders WHERE TenderType = " +
                                               std::to_string(kOnAccountTenderType))) {
            onAccountTenders.insert(row[0]);
        }
        for (const auto& row : backOffice.Rows("SELECT CustomerID FROM customers")) knownCustomers.insert(row[0]);
    }
    {
        ado::Recordset tenders;
        tenders.Open("SELECT tt.TransactionUID, tt.PaymentTypeUID, pt.code FROM transactionstenders tt inner join "
                     "PaymentTypes pt on tt.PaymentTypeUID = pt.uid INNER JOIN transactionsheaders th ON th.UID = "
                     "tt.TransactionUID WHERE " + headers,
                     connection);
        std::set<std::pair<std::string, std::int16_t>> payments;
        for (; !tenders.Eof(); tenders.MoveNext()) {
            const std::string code = tenders.Field(std::size_t{2}).ToText();
            if (code == "9999" || code == "9998") continue;
            const std::string paymentType = Upper(tenders.Field(std::size_t{1}).ToText());
            std::int16_t tender = 0;
            for (const auto& [uid, mapped] : mapping.tenders) {
                if (uid == paymentType) {
                    tender = mapped;
                    break;
                }
            }
            if (tender == 0) tender = mapping.defaultTender;
            if (tender == 0) tender = 1;
            if (onAccountTenders.count(tender)) continue;
            payments.emplace(tenders.Field(std::size_t{0}).ToText(), tender);
        }
        counts.payments = static_cast<long>(payments.size());
    }

    // Cash movements without a document, joined as the import joins them; a payment on account
    // is saved only for a customer the back office knows.
    if (!mapping.cashTypeKeys.empty()) {
        ado::Recordset movements;
        movements.Open("SELECT cm.MovementTypeID, customers.customerid FROM cashdrawer_movements cm INNER JOIN "
                       "salesmans on salesmans.uid = cm.SalesmanUID LEFT JOIN customers on customers.uid = "
                       "cm.entityuid INNER JOIN cashdrawermovementtypes mt on cm.MovementTypeID = mt.uid WHERE "
                       "documentid = '' AND " + SinceCondition("cm.Date", since),
                       connection);
        for (; !movements.Eof(); movements.MoveNext()) {
            if (movements.Field(std::size_t{0}).ToInt32() == kPaymentOnAccount) {
                const ado::Recordset& row = movements;
                const bool known = !row.Field(std::size_t{1}).IsNull() &&
                                   knownCustomers.count(row.Field(std::size_t{1}).ToInt32()) > 0;
                if (!mapping.paymentsOnAccount || !known) continue;
            }
            ++counts.cashMovements;
        }
    }

    // Receipts: one per receipt number, when it settles at least one credit sale that was
    // imported, not refunded, and is on the customer's account in the back office. A sale is on
    // account when its lines are worth more than its payments, judged before the restaurant's
    // total is applied as an adjustment: a sale none of whose lines is read (every item unknown
    // to the restaurant's item table) is worth nothing there, is not on account, and a receipt
    // for it alone is left out with "não existe nenhuma factura válida associada".
    if (!mapping.receiptTypeKey.empty() &&
        std::find(mapping.documentTypes.begin(), mapping.documentTypes.end(), kCreditSaleType) !=
            mapping.documentTypes.end()) {
        counts.receipts = CountRows(
            connection,
            "SELECT COUNT(DISTINCT cm.DocumentID) FROM transactionsheaders th inner join transactionstenders tt on "
            "tt.transactionuid = th.uid inner join customers c on c.uid = th.customeruid inner join "
            "cashdrawer_movements cm on cm.uid = tt.ReceiptMovementuid INNER JOIN salesmans on salesmans.uid = "
            "cm.SalesmanUID WHERE cm.MovementTypeid in (8,9) AND " + SinceCondition("cm.Date", since) +
                " AND cm.DocumentID <> '' AND th.DocumentTypeUID = 11 AND th.TransactionStatus = 'N' AND " + headers +
                " AND EXISTS (SELECT 1 FROM " + kLinesRead + " WHERE td.TransactionUID = th.uid AND td.SaleValue > 0)");
    }
    connection.Close();
    return counts;
}

ImportCounts CountBackOffice(const std::string& backOfficeFile, const ImportMapping& mapping) {
    ImportCounts counts;
    BackOffice backOffice(backOfficeFile);
    const std::string documents = "SELECT DocumentKey FROM documents WHERE SeriesID = ? AND DocumentTypeID IN (" +
                                  Placeholders(mapping.documentTypeKeys.size()) + ")";
    const std::vector<std::string> parameters = SeriesAnd(mapping, mapping.documentTypeKeys);
    counts.documents = backOffice.Count("SELECT COUNT(*) FROM (" + documents + ")", parameters);
    counts.lines = backOffice.Count("SELECT COUNT(*) FROM document_lines WHERE DocumentKey IN (" + documents + ")",
                                    parameters);
    counts.payments = backOffice.Count(
        "SELECT COUNT(*) FROM document_payments WHERE DocumentKey IN (" + documents + ")", parameters);
    counts.cashMovements = backOffice.Count("SELECT COUNT(*) FROM documents WHERE SeriesID = ? AND DocumentTypeID IN (" +
                                                Placeholders(mapping.cashTypeKeys.size()) + ")",
                                            SeriesAnd(mapping, mapping.cashTypeKeys));
    if (!mapping.receiptTypeKey.empty()) {
        counts.receipts = backOffice.Count("SELECT COUNT(*) FROM documents WHERE SeriesID = ? AND DocumentTypeID = ?",
                                           {mapping.series, mapping.receiptTypeKey});
    }
    return counts;
}

}  // namespace kitra::bench
