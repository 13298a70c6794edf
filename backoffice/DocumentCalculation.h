#pragma once
// How the back office calculates a document: each line's discount, value, value without VAT and
// VAT; the VAT of the document by taxable group and rate; its totals. Plain arithmetic on the
// transaction, with the rates looked up by the caller, so that every rule is testable alone.
//
// A line: gross = quantity × unit price; the discount is the line's discount value when it has
// one, otherwise gross × discount percent / 100 (a source that gives both gives the amount the
// percentage produced, so the two are not added); value = gross − discount. A line whose source
// gave its value keeps that value: quantity and unit price then decide nothing, the discount is
// the one given (as an amount, or the percentage of what the line was worth before it) and
// gross = value + discount. With prices that include VAT the value is with VAT and the VAT is
// taken out of it; otherwise it is added to it.
// The document: VAT is calculated once per taxable group on the sum of its lines, so that the
// rounding of many small lines does not add up; the total adjustment is an amount of its own,
// outside the VAT summary, and Total = lines' total + adjustment. A cash document is worth the
// sum of its payments.
#include <functional>
#include <vector>

#include "host/ITransactionService.h"

namespace kitra::backoffice {

// The rate (percent) of a taxable group in the document's tax context; fails when it has none.
using RateOfGroup = std::function<double(std::int16_t taxableGroupID)>;

// Cash entrances and withdrawals, receipts and payments on account: documents that move money,
// not goods, and are worth the sum of their payments.
bool IsCashDocument(host::DocumentKind kind);

void CalculateLine(host::TransactionLine& line, bool pricesIncludeTax, double rate);

// A new payment of the tender, numbered after the last of the payments so far.
host::TransactionPayment NextPayment(const std::vector<host::TransactionPayment>& payments,
                                     std::int16_t tenderID);

// Lines' total, VAT summary, totals and the paid amount of the transaction. The lines must have
// been calculated.
void CalculateDocument(host::Transaction& transaction, const RateOfGroup& rateOf);

}  // namespace kitra::backoffice
