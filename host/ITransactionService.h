#pragma once
// The host's documents: a transaction (a sale, a credit sale, a stock document, a cash
// document) with its lines and payments, the business object that builds one, and the data
// service that saves it. A document is identified by document type + series + number; a saved
// document is written whole (header, lines, payments, stock and current account) or not at all.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/DateTime.h"
#include "host/ICompanyContext.h"
#include "host/IDocumentTypeService.h"

namespace kitra::host {

// The state of a saved document.
namespace document_state {
inline constexpr std::int16_t kNormal = 0;
inline constexpr std::int16_t kVoid = 5;  // refunded: kept for the tax record, its effects reversed
}  // namespace document_state

// Which way a document moves the stock of its lines' items.
enum class StockDirection : std::int16_t {
    None = 0,
    Out = -1,  // sales, credit sales, transport, self-consumption
    In = 1,    // returns
};

struct TransactionLine {
    std::int32_t LineNumber = 0;
    // An item the host lacks is kept with the code and description as given, and moves no stock.
    std::string ItemID;
    std::string Description;
    std::int16_t TaxableGroupID = 0;
    double SalesmanID = 0;
    std::int16_t WarehouseID = 0;        // where the stock moves
    std::int16_t TargetWarehouseID = 0;  // the other end of a transfer; the same otherwise
    double Quantity = 0;
    double DiscountPercent = 0;
    double DiscountValue = 0;        // a discount given as an amount, per line
    double UnitPrice = 0;            // with tax when the document's prices include tax
    double UnitPriceWithoutTax = 0;  // the same price under the line's taxable group, tax out
    // The line's value as its source gave it, in hundredths of the currency (as the restaurant
    // keeps money; the import gives each line's SaleValue), or none. A value given is the line's
    // value: the line's calculation derives the value without VAT and the VAT from it and never
    // prices the line again, so that a line the host would price otherwise (an item sold by
    // weight that the host lacks, whose quantity stays in grams) keeps what the source sold it for.
    std::optional<double> GivenValueHundredths;
    // The line's value. The host's line calculation sets it: the value given, otherwise
    // quantity × unit price − discount.
    double Value = 0;

    // What the host's line calculation fills in.
    double TaxRate = 0;          // percent, of the taxable group in the document's tax context
    double GrossValue = 0;       // before the discount: quantity × unit price, or value + discount
    double DiscountAmount = 0;   // the discount the line got
    double TotalWithTax = 0;     // = Value
    double NetValue = 0;         // TotalWithTax without tax
    double TaxValue = 0;         // TotalWithTax − NetValue

    bool operator==(const TransactionLine&) const = default;
};

// The detail record of a payment by card (tenders of type 4).
struct CardPaymentDetail {
    double Amount = 0;

    bool operator==(const CardPaymentDetail&) const = default;
};

struct TransactionPayment {
    std::int32_t LineNumber = 0;
    std::int16_t TenderID = 0;
    double Amount = 0;
    std::optional<CardPaymentDetail> CardDetail;

    bool operator==(const TransactionPayment&) const = default;
};

// VAT of one taxable group of a document.
struct TaxSummary {
    std::int16_t TaxableGroupID = 0;
    double Rate = 0;
    double TaxableAmount = 0;  // without tax
    double TaxAmount = 0;
    double TotalWithTax = 0;

    bool operator==(const TaxSummary&) const = default;
};

struct Transaction {
    // Identity.
    std::string DocumentTypeID;
    std::string SeriesID;
    std::int32_t DocumentNumber = 0;  // 0: the host gives the series' next free number on save
    // The source record's own key (a restaurant transaction's UID), or empty. A document whose
    // source gives no number is found again by it, so that two such documents are never taken
    // for one another.
    std::string SourceUID;

    // From the document type and the transaction defaults.
    DocumentKind Kind = DocumentKind::Sale;
    StockDirection Stock = StockDirection::None;
    std::string CurrencyID;
    TaxContext Tax;

    // Header.
    double CustomerID = 0;
    double SalesmanID = 0;
    std::int16_t PriceLineID = 1;   // which of the items' five prices the document's prices are
    double ExchangeRate = 1;        // to the company's currency
    bool PricesIncludeTax = true;   // unit prices and values are with VAT
    std::int16_t WarehouseID = 0;
    DateTime DocumentDate;
    DateTime DueDate;
    std::string Comment;

    // The workstation that made the document, and when it was stamped.
    std::int16_t WorkstationID = 0;
    DateTime StampDate;

    // Sold on the customer's account: what the payments do not cover opens a current-account
    // entry for the customer.
    bool CreditSale = false;
    double TotalAdjustment = 0;  // added to the lines' total so the document shows its source's total
    std::int16_t StateCode = document_state::kNormal;

    std::vector<TransactionLine> Lines;
    std::vector<TransactionPayment> Payments;

    // Calculated by the host (Calculate, and on save).
    double LinesTotal = 0;  // Σ line values with tax
    double TotalNet = 0;
    double TotalTax = 0;
    double Total = 0;       // LinesTotal + TotalAdjustment
    double PaidAmount = 0;  // Σ payments
    std::vector<TaxSummary> Taxes;

    bool operator==(const Transaction&) const = default;
};

// The two amounts the host's credit check compares: what the document is worth and what its
// payments cover. Less covered than worth: a credit sale.
struct CreditCheckAmounts {
    double DocumentTotal = 0;
    double PaidAmount = 0;
};

// Builds one transaction at a time. Header fields are set on Current() directly.
class ITransactionBusiness {
public:
    virtual ~ITransactionBusiness() = default;

    // Starts a new transaction of the document type in the series; fails with an Error when the
    // type or the series is unknown, or the series is not active.
    virtual void InitNewTransaction(const std::string& documentTypeID,
                                    const std::string& seriesID) = 0;
    // What the transaction takes from its document type, the workstation and the company.
    virtual void SetTransactionDefaults(const DocumentType& definition,
                                        std::int16_t workstationID) = 0;
    virtual Transaction& Current() = 0;

    // A new line with the transaction's defaults (warehouse, salesman), not yet appended.
    virtual TransactionLine NewLine() const = 0;
    // The host's line calculation: tax rate, discount, value, net value and tax of the line.
    virtual void CalculateLine(TransactionLine& line) const = 0;
    virtual void AppendLine(const TransactionLine& line) = 0;

    // A new payment line of the tender, not yet appended.
    virtual TransactionPayment NewPayment(std::int16_t tenderID) const = 0;
    virtual void AppendPayment(const TransactionPayment& payment) = 0;

    virtual void WorkstationStamp(std::int16_t workstationID, const DateTime& moment) = 0;
    virtual CreditCheckAmounts CreditCheck() const = 0;
    // The lines' total with tax, as the host calculates it (rounded to cents).
    virtual double CalculatedTotal() const = 0;
    virtual void SetTotalAdjustment(double amount) = 0;
    // Totals, VAT by taxable group and rate, and payments.
    virtual void Calculate() = 0;
};

// A saved document as the host keeps it.
struct SavedDocument {
    std::int32_t DocumentKey = 0;
    Transaction Document;
    bool NumberAssigned = false;  // numbered by the host (the source gave 0)
    double OpenAmount = 0;        // of its current-account entry; 0 without one
};

class ITransactionService {
public:
    virtual ~ITransactionService() = default;

    virtual std::unique_ptr<ITransactionBusiness> NewTransactionBusiness() const = 0;

    // Calculates and saves the transaction in one database transaction. Number 0 takes the
    // series' next free number, written back into the transaction. A document of the same type,
    // series and number is replaced: its stock and current-account effects are undone first and
    // its former version is kept in the history.
    virtual void Save(Transaction& transaction) = 0;
    // The refund of a saved document (state code 5): marks it void, reverses its stock
    // movements and cancels what is open of its current-account entry; the document stays.
    virtual void Refund(Transaction& transaction) = 0;

    virtual std::optional<SavedDocument> Find(const std::string& documentTypeID,
                                              const std::string& seriesID,
                                              std::int32_t documentNumber) const = 0;
};

}  // namespace kitra::host
