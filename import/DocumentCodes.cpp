// The code conversions the document importers share: salesman codes, document numbers, the
// host's customer and salesman codes, and tender equivalences.
#include "core/Numbers.h"
#include "core/Text.h"
#include "import/DocumentImport.h"
#include "import/KitraExecutioner.h"

namespace kitra {
namespace {

// Restaurant salesman uids start at 10000 and carry the salesman's code in their last three
// digits.
constexpr double kSalesmanUidBase = 10000;
// Restaurant document IDs end with a 7-digit number.
constexpr std::size_t kNumberDigits = 7;

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

double KitraExecutioner::MapSalesmanCode(const std::string& text) const {
    const double value = services_.utility->ParseNumber(text, ',');
    if (value > kSalesmanUidBase) return RoundToInt32(value - kSalesmanUidBase) % 1000;
    return value;
}

double KitraExecutioner::DocumentNumberFromID(const std::string& documentId) {
    const std::u32string characters = DecodeUtf8(documentId);
    if (characters.size() <= kNumberDigits) return 0;
    return LeadingNumber(EncodeUtf8(characters.substr(characters.size() - kNumberDigits)));
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
