#include "backoffice/UtilityService.h"

#include <algorithm>
#include <cmath>

#include "backoffice/Money.h"
#include "core/Error.h"
#include "core/Numbers.h"

namespace kitra::backoffice {

double UtilityService::ParseNumber(std::string_view text, char decimalSeparator) const {
    return ParseNumberStrict(text, decimalSeparator);
}

double UtilityService::KeyLimit(int digits) const {
    if (digits <= 0) throw Error("Invalid procedure call or argument", 5);
    // Keys are 32-bit in the back office: a key of N digits holds up to 10^N - 1, capped there.
    const double limit = std::pow(10.0, digits) - 1;
    return std::min(limit, 2147483647.0);
}

double UtilityService::Round(double value, int decimals) const {
    if (decimals < 0 || decimals > 15) throw Error("Invalid procedure call or argument", 5);
    return RoundHalfAway(value, decimals);
}

}  // namespace kitra::backoffice
