#pragma once
// The number conversions the whole system relies on: rounding to host integers, the two text
// forms of a number, and the plain leading-number parse.
#include <cstdint>
#include <string>
#include <string_view>

namespace kitra {

// Round half to even, then range-check; "Overflow" outside the range (also for NaN/infinity).
std::int16_t RoundToInt16(double value);
std::int32_t RoundToInt32(double value);

// A number as the host shows it converted to text: at most 15 significant digits, the shortest
// form, no grouping, the given decimal separator, integers without decimals ("23", "0,5").
std::string FormatHostNumber(double value, char decimalSeparator = ',');

// The normalised VAT form: "." separator, shortest form, no leading zero between -1 and 1
// ("23", "6.5", "0", ".5", "-.5").
std::string FormatNormalisedVat(double value);

// The plain leading-number parse: blanks are skipped, an optional sign, digits with "." as the
// decimal point; stops at the first other character. "12,5" gives 12, "" and "abc" give 0.
double LeadingNumber(std::string_view text);

// Strict parse of a whole text as a number with the given decimal separator: blanks around it,
// one optional sign, digits, at most one separator. Fails with "Type mismatch" otherwise.
double ParseNumberStrict(std::string_view text, char decimalSeparator);

}  // namespace kitra
