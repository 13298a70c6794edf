#pragma once
// How the back office rounds money: to cents, halves away from zero (2.345 gives 2.35,
// -2.345 gives -2.35). The nudge of a few units in the last place makes values such as 1.005,
// which binary floating point holds as 1.00499999..., round as the decimal number they stand for.
#include <algorithm>
#include <cfloat>
#include <cmath>

namespace kitra::backoffice {

inline double RoundMoney(double value) {
    const double cents = value * 100.0;
    const double nudge = std::max(std::abs(cents), 1.0) * 8 * DBL_EPSILON;
    return std::round(cents + std::copysign(nudge, cents)) / 100.0;
}

}  // namespace kitra::backoffice
