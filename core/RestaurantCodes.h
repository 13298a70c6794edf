#pragma once
// Codes as the restaurant database writes them, read the one way by the import and by the back
// office's comparison with a restaurant.
#include <string>

#include "core/Numbers.h"
#include "core/Text.h"

namespace kitra {

// Restaurant salesman uids start at 10000 and carry the salesman's code in their last three
// digits; a smaller value is the code itself.
inline double SalesmanCodeFromUid(double value) {
    constexpr double kSalesmanUidBase = 10000;
    if (value > kSalesmanUidBase) return RoundToInt32(value - kSalesmanUidBase) % 1000;
    return value;
}

// Restaurant document IDs end with a 7-digit number: the leading number of the last 7 characters
// of a longer ID, 0 for an ID of 7 characters or fewer.
inline double DocumentNumberFromId(const std::string& documentId) {
    constexpr std::size_t kNumberDigits = 7;
    const std::u32string characters = DecodeUtf8(documentId);
    if (characters.size() <= kNumberDigits) return 0;
    return LeadingNumber(EncodeUtf8(characters.substr(characters.size() - kNumberDigits)));
}

}  // namespace kitra
