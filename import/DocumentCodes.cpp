// The code conversions the document importers share: salesman codes, document numbers, the
// host's customer and salesman codes, and tender equivalences.
#include "core/Numbers.h"
#include "core/RestaurantCodes.h"
#include "core/Text.h"
#include "import/DocumentImport.h"
#include "import/KitraExecutioner.h"

namespace kitra {
namespace {


std::int32_t CodeOf(const host::HostServices& services, const Variant& value) {
    if (value.IsNull()) return 0;
    return RoundToInt32(services.utility->ParseNumber(value.ToText(), ','));
}

}  // namespace

std::int32_t KnownCustomerCode(const host::HostServices& services, const Variant& code) {
    const std::int32_t customer = CodeOf(services, code);
    return services.customers->Exists(customer) ? customer : 0;
}

std::int32_t KnownSalesmanCode(const host::HostServices& services, const Variant& code) {
    const std::int32_t salesman = CodeOf(services, code);
    return services.salesmen->Exists(salesman) ? salesman : 0;
}

void SetPaymentAmount(const host::HostServices& services, host::TransactionPayment& payment,
                      double amount) {
    payment.Amount = amount;
    const std::optional<host::Tender> tender = services.tenders->Get(payment.TenderID);
    if (tender && tender->TenderType == host::tender_type::kCard)
        payment.CardDetail = host::CardPaymentDetail{amount};
}

double KitraExecutioner::MapSalesmanCode(const std::string& text) const {
    return SalesmanCodeFromUid(services_.utility->ParseNumber(text, ','));
}

double KitraExecutioner::DocumentNumberFromID(const std::string& documentId) {
    return kitra::DocumentNumberFromId(documentId);
}

std::int16_t KitraExecutioner::FindTenderEquivalence(const std::string& paymentTypeUID) const {
    // Only the restaurant's value is upper-cased: an equivalence stored in lower case never
    // matches.
    const std::string wanted = FoldCase(paymentTypeUID);
    for (const TenderMapping& row : settings_->TenderEquivalence) {
        if (row.KitraTenderID == wanted) return row.POSTenderID;
    }
    return 0;
}

}  // namespace kitra
