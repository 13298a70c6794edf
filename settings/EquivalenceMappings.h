#pragma once
// The rows of the two equivalence tables of the settings: how a restaurant's tender and VAT rate
// translate into the host's tender and taxable group.
#include <cstdint>
#include <string>

namespace kitra {

// One row of the tender table: a restaurant tender and the host tender it becomes.
struct TenderMapping {
    std::int16_t POSTenderID = 0;  // the host tender
    std::string KitraTenderID;     // the tender identifier in the restaurant system

    bool operator==(const TenderMapping&) const = default;
};

// One row of the taxable-group table: a restaurant VAT rate and the host taxable group it becomes.
struct TaxableGroupMapping {
    std::int16_t TaxableGroupID = 0;  // the host taxable group
    // The restaurant's VAT rate in normalised form ("23", "6.5", "0", ".5"); that is the form the
    // import compares against, so it is kept even though it drops the leading zero.
    std::string KitraVAT;

    bool operator==(const TaxableGroupMapping&) const = default;
};

}  // namespace kitra
