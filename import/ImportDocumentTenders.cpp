// ImportDocumentTenders: the payments of one restaurant transaction (transactionstenders) added
// to the host document being built. Each restaurant payment type becomes a host tender through
// the tender equivalences; payments of one host tender make one payment line. Payments on
// account ("9999") and offers ("9998") are never payments, nor are tenders of the host's
// on-account type.
#include "core/Error.h"
#include "import/DocumentImport.h"
#include "restaurant/Statements.h"

namespace kitra {
namespace {

// The host's fall-back tender (cash) when neither an equivalence nor the settings name one.
constexpr std::int16_t kCashTender = 1;

}  // namespace

void ImportDocumentTenders(KitraExecutioner& engine, ado::Connection& connection,
                           const std::string& headerUid, const Restaurant& /*restaurant*/,
                           const host::DocumentType& /*documentDefinition*/) {
    if (connection.State() != ado::StateOpen) return;
    const host::HostServices& services = engine.Services();
    host::ITransactionBusiness& transaction = *engine.TransactionObject();

    ado::Recordset tenders;
    tenders.Open(kitra::restaurant::DocumentTendersStatement(CheckedHeaderUid(headerUid)),
                 connection);
    for (; !tenders.Eof(); tenders.MoveNext()) {
        engine.SetStep("TenderID");
        const std::string paymentTypeUid = tenders["PaymentTypeUID"].ToText();
        const std::string paymentTypeCode = tenders["PaymentTypeCode"].ToText();
        if (paymentTypeCode == "9999" || paymentTypeCode == "9998") continue;

        std::int16_t tender = engine.FindTenderEquivalence(paymentTypeUid);
        if (tender == 0) tender = engine.Settings()->DefaultTenderPayment;
        if (tender == 0) tender = kCashTender;

        engine.SetStep("value");
        const double amount = engine.ParseHundredths(tenders["value"].ToText());

        // A tender the host does not know is kept with its code, as a payment of no known type.
        const std::optional<host::Tender> record = services.tenders->Get(tender);
        const std::int16_t tenderType = record ? record->TenderType : 0;
        if (tenderType == host::tender_type::kOnAccount) continue;

        bool merged = false;
        for (host::TransactionPayment& payment : transaction.Current().Payments) {
            if (payment.TenderID == tender) {
                payment.Amount += amount;
                merged = true;
                break;
            }
        }
        if (merged) continue;
        host::TransactionPayment payment = transaction.NewPayment(tender);
        payment.Amount = amount;
        if (tenderType == host::tender_type::kCard) payment.CardDetail = host::CardPaymentDetail{amount};
        transaction.AppendPayment(payment);
    }
}

}  // namespace kitra
