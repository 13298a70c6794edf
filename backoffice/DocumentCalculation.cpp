#include "backoffice/DocumentCalculation.h"

#include <map>

#include "backoffice/Money.h"

namespace kitra::backoffice {

bool IsCashDocument(host::DocumentKind kind) {
    return kind == host::DocumentKind::CashEntrance || kind == host::DocumentKind::CashWithdrawal ||
           kind == host::DocumentKind::CustomerPayment ||
           kind == host::DocumentKind::CustomerPaymentOnAccount;
}

host::TransactionPayment NextPayment(const std::vector<host::TransactionPayment>& payments,
                                     std::int16_t tenderID) {
    host::TransactionPayment payment;
    payment.LineNumber = static_cast<std::int32_t>(payments.size()) + 1;
    payment.TenderID = tenderID;
    return payment;
}

void CalculateLine(host::TransactionLine& line, bool pricesIncludeTax, double rate) {
    line.TaxRate = rate;
    double value = 0;
    if (line.GivenValueHundredths) {
        // The source's value stands; the discount it gave, as an amount or as the percentage
        // that took the value down to what it is, says what the line was worth before it.
        value = RoundMoney(*line.GivenValueHundredths / 100.0);
        if (line.DiscountValue != 0) {
            line.DiscountAmount = RoundMoney(line.DiscountValue);
        } else if (line.DiscountPercent > 0 && line.DiscountPercent < 100) {
            line.DiscountAmount =
                RoundMoney(value * line.DiscountPercent / (100.0 - line.DiscountPercent));
        } else {
            line.DiscountAmount = 0;
        }
        line.GrossValue = RoundMoney(value + line.DiscountAmount);
    } else {
        line.GrossValue = RoundMoney(line.Quantity * line.UnitPrice);
        line.DiscountAmount = line.DiscountValue != 0
                                  ? RoundMoney(line.DiscountValue)
                                  : RoundMoney(line.GrossValue * line.DiscountPercent / 100.0);
        value = RoundMoney(line.GrossValue - line.DiscountAmount);
    }
    const double factor = 1.0 + rate / 100.0;
    if (pricesIncludeTax) {
        line.TotalWithTax = value;
        line.NetValue = RoundMoney(value / factor);
    } else {
        line.NetValue = value;
        line.TotalWithTax = RoundMoney(value * factor);
    }
    line.TaxValue = RoundMoney(line.TotalWithTax - line.NetValue);
    line.Value = value;
}

void CalculateDocument(host::Transaction& transaction, const RateOfGroup& rateOf) {
    std::map<std::int16_t, host::TaxSummary> groups;
    for (const host::TransactionLine& line : transaction.Lines) {
        host::TaxSummary& group = groups[line.TaxableGroupID];
        group.TaxableGroupID = line.TaxableGroupID;
        group.TotalWithTax += line.TotalWithTax;
        group.TaxableAmount += line.NetValue;
    }
    transaction.Taxes.clear();
    transaction.TotalNet = 0;
    transaction.TotalTax = 0;
    for (auto& [id, group] : groups) {
        group.Rate = rateOf(id);
        group.TotalWithTax = RoundMoney(group.TotalWithTax);
        const double factor = 1.0 + group.Rate / 100.0;
        if (transaction.PricesIncludeTax) {
            group.TaxableAmount = RoundMoney(group.TotalWithTax / factor);
        } else {
            group.TaxableAmount = RoundMoney(group.TaxableAmount);
            group.TotalWithTax = RoundMoney(group.TaxableAmount * factor);
        }
        group.TaxAmount = RoundMoney(group.TotalWithTax - group.TaxableAmount);
        transaction.TotalNet += group.TaxableAmount;
        transaction.TotalTax += group.TaxAmount;
        transaction.Taxes.push_back(group);
    }
    transaction.TotalNet = RoundMoney(transaction.TotalNet);
    transaction.TotalTax = RoundMoney(transaction.TotalTax);
    transaction.LinesTotal = RoundMoney(transaction.TotalNet + transaction.TotalTax);
    double paid = 0;
    for (const host::TransactionPayment& payment : transaction.Payments) paid += payment.Amount;
    transaction.PaidAmount = RoundMoney(paid);
    // A cash document has no lines: it is worth the money it moves.
    transaction.Total = IsCashDocument(transaction.Kind)
                            ? transaction.PaidAmount
                            : RoundMoney(transaction.LinesTotal + transaction.TotalAdjustment);
}

}  // namespace kitra::backoffice
