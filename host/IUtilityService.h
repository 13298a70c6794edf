#pragma once
// The host's utility service: its number parser and the numeric limits of its keys.
#include <string_view>

namespace kitra::host {

class IUtilityService {
public:
    virtual ~IUtilityService() = default;
    // Reads a whole text as a number written with the given decimal separator; fails with an
    // Error ("Type mismatch") when the text is not such a number.
    virtual double ParseNumber(std::string_view text, char decimalSeparator) const = 0;
    // The largest key the host accepts for a key of the given number of digits
    // (10 digits: 2147483647, the largest 32-bit key).
    virtual double KeyLimit(int digits) const = 0;
    // The value rounded to the given number of decimals, halves away from zero.
    virtual double Round(double value, int decimals) const = 0;
};

}  // namespace kitra::host
