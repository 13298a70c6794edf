#pragma once
// What the document importer shares with the importers of its lines and tenders: the business
// object that builds the document for the length of the step, and the two importers that add
// one header's lines and payments to it.
#include <string>

#include "ado/Connection.h"
#include "host/IDocumentTypeService.h"
#include "import/KitraExecutioner.h"
#include "settings/Restaurant.h"

namespace kitra {

// Gives the engine a fresh transaction business object and releases it when the scope ends,
// however the step ends.
class TransactionObjectScope {
public:
    explicit TransactionObjectScope(KitraExecutioner& engine) : engine_(engine) {
        engine_.SetTransactionObject(engine_.Services().transactions->NewTransactionBusiness());
    }
    ~TransactionObjectScope() { engine_.SetTransactionObject(nullptr); }
    TransactionObjectScope(const TransactionObjectScope&) = delete;
    TransactionObjectScope& operator=(const TransactionObjectScope&) = delete;

private:
    KitraExecutioner& engine_;
};

// The settings' host document type for a restaurant document type: 17 invoices, 11 credit
// sales, 13 stock documents; empty for any other type.
std::string DocumentTypeKeyFor(const KitraConnectorSetting& settings, std::int32_t documentTypeUid);

// A customer or salesman code of the restaurant as the host's documents take it: read through
// the host's number parser (separator ","), and 0 when the host has no such record or the
// restaurant gives none (NULL from an outer join).
std::int32_t KnownCustomerCode(const host::HostServices& services, const Variant& code);
std::int32_t KnownSalesmanCode(const host::HostServices& services, const Variant& code);

// Fills a payment line with `amount` as the host's record of its tender asks: a card tender's
// line carries its card detail. Cash movements and receipts pay this way.
void SetPaymentAmount(const host::HostServices& services, host::TransactionPayment& payment,
                      double amount);

// The settings' host document type for a restaurant cash movement: payments on account (type 8)
// with a customer under CustomerPaymentAccountDocument, and none without one; any other type
// under CashWithdrawalTransDocument when money went out (flow 0), else CashEntranceTransDocument.
std::string CashDocumentTypeKeyFor(const KitraConnectorSetting& settings, std::int32_t movementType,
                                   std::int32_t movementFlow, std::int32_t customer);

// A header's UID goes into the lines' and tenders' statements unquoted, so only a whole number
// may go there; anything else fails with an Error before any SQL is issued.
bool IsWholeHeaderUid(const std::string& headerUid);
const std::string& CheckedHeaderUid(const std::string& headerUid);

// Adds the lines of the header to the transaction the engine is building. Nothing is done when
// the connection is not open.
void ImportDocumentLines(KitraExecutioner& engine, ado::Connection& connection,
                         const std::string& headerUid, const Restaurant& restaurant,
                         const host::DocumentType& documentDefinition);

// Adds the payments of the header to the transaction the engine is building, one payment line
// per host tender. Nothing is done when the connection is not open.
void ImportDocumentTenders(KitraExecutioner& engine, ado::Connection& connection,
                           const std::string& headerUid, const Restaurant& restaurant,
                           const host::DocumentType& documentDefinition);

}  // namespace kitra
