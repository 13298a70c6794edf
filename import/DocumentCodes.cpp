// The code conversions the document importers share: salesman codes, document numbers and
// tender equivalences.
#include "core/Numbers.h"
#include "core/Text.h"
#include "import/KitraExecutioner.h"

namespace kitra {
namespace {

// Restaurant salesman uids start at 10000 and carry the salesman's code in their last three
// digits.
constexpr double kSalesmanUidBase = 10000;
// Restaurant document IDs end with a 7-digit number.
constexpr std::size_t kNumberDigits = 7;

}  // namespace

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
