#pragma once
// How the back office rounds money: to cents, halves away from zero (2.345 gives 2.35,
// -2.345 gives -2.35). The nudge of a few units in the last place makes values such as 1.005,
// which binary floating point holds as 1.00499999..., round as the decimal number they stand for.
#include <algorithm>
#include <cfloat>
#include <cmath>

namespace kitra::backoffice {

// The value rounded to `decimals` places, halves away from zero, as the decimal number it
// stands for.
inline double RoundHalfAway(double value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    const double scaled = value * scale;
    const double nudge = std::max(std::abs(scaled), 1.0) * 8 * DBL_EPSILON;
    return std::round(scaled + std::copysign(nudge, scaled)) / scale;
}

inline double RoundMoney(double value) { return RoundHalfAway(value, 2); }

// An amount below half a cent is no amount.
inline constexpr double kNoAmount = 0.005;

}  // namespace kitra::backoffice
