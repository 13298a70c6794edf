#include "core/Numbers.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "core/Error.h"

namespace kitra {
namespace {

// Half-to-even rounding to a whole number, the host's rounding for integer conversions.
double RoundHalfEven(double value) {
    const double floor = std::floor(value);
    const double diff = value - floor;
    if (diff < 0.5) return floor;
    if (diff > 0.5) return floor + 1;
    return std::fmod(floor, 2.0) == 0 ? floor : floor + 1;
}

template <typename Int>
Int RoundTo(double value) {
    if (!std::isfinite(value)) throw errors::Overflow();
    const double rounded = RoundHalfEven(value);
    if (rounded < static_cast<double>(std::numeric_limits<Int>::min()) ||
        rounded > static_cast<double>(std::numeric_limits<Int>::max())) {
        throw errors::Overflow();
    }
    return static_cast<Int>(rounded);
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Digits and decimal point of the shortest text that keeps 15 significant digits, in plain
// (never scientific) notation, with "." as separator and without a leading zero stripped.
std::string PlainDecimal(double value) {
    if (value == 0) return "0";  // also turns -0 into "0"
    // Round to 15 significant digits first so 0.1 + 0.2 shows as 0.3, as the host shows it.
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.14e", value);
    const double rounded = std::strtod(buffer, nullptr);
    char out[400];
    const auto result = std::to_chars(out, out + sizeof out, rounded, std::chars_format::fixed);
    return std::string(out, result.ptr);
}

}  // namespace

std::int16_t RoundToInt16(double value) { return RoundTo<std::int16_t>(value); }
std::int32_t RoundToInt32(double value) { return RoundTo<std::int32_t>(value); }

std::string FormatHostNumber(double value, char decimalSeparator) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "Inf" : "-Inf";
    std::string text = PlainDecimal(value);
    for (char& c : text) {
        if (c == '.') c = decimalSeparator;
    }
    return text;
}

std::string FormatNormalisedVat(double value) {
    std::string text = FormatHostNumber(value, '.');
    // Between -1 and 1 the leading zero is dropped: ".5", "-.5".
    if (text.starts_with("0.")) return text.substr(1);
    if (text.starts_with("-0.")) return "-" + text.substr(2);
    return text;
}

double LeadingNumber(std::string_view text) {
    std::string digits;
    std::size_t i = 0;
    auto skipBlanks = [&] {
        while (i < text.size() && IsBlank(text[i])) ++i;
    };
    skipBlanks();
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        if (text[i] == '-') digits += '-';
        ++i;
    }
    bool seenPoint = false;
    bool seenDigit = false;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (IsBlank(c)) continue;
        if (c >= '0' && c <= '9') {
            digits += c;
            seenDigit = true;
        } else if (c == '.' && !seenPoint) {
            digits += c;
            seenPoint = true;
        } else {
            break;
        }
    }
    if (!seenDigit) return 0;
    return std::strtod(digits.c_str(), nullptr);
}

double ParseNumberStrict(std::string_view text, char decimalSeparator) {
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && IsBlank(text[begin])) ++begin;
    while (end > begin && IsBlank(text[end - 1])) --end;
    std::size_t i = begin;
    bool negative = false;
    if (i < end && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    const std::size_t digitsBegin = i;
    bool seenSeparator = false;
    bool seenDigit = false;
    // The digits as a whole number and the count of those after the separator: a number of
    // at most 15 digits and 22 decimals is that whole number divided by a power of ten, both
    // exact in a double, so the division gives the correctly rounded value strtod gives.
    std::uint64_t whole = 0;
    int digits = 0;
    int decimals = 0;
    for (; i < end; ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9') {
            seenDigit = true;
            if (whole != 0 || c != '0') ++digits;
            whole = whole * 10 + static_cast<std::uint64_t>(c - '0');
            if (seenSeparator) ++decimals;
            if (digits > 15) break;
        } else if (c == decimalSeparator && !seenSeparator) {
            seenSeparator = true;
        } else {
            throw errors::TypeMismatch();
        }
    }
    if (i == end) {
        if (!seenDigit) throw errors::TypeMismatch();
        static constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
        if (decimals <= 22) {
            const double value = static_cast<double>(whole) / kPowersOfTen[decimals];
            return negative ? -value : value;
        }
    }
    // Longer numbers: the text made plain for strtod, checked to its end.
    std::string normal = negative ? "-" : "";
    seenSeparator = false;
    seenDigit = false;
    for (i = digitsBegin; i < end; ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9') {
            normal += c;
            seenDigit = true;
        } else if (c == decimalSeparator && !seenSeparator) {
            normal += '.';
            seenSeparator = true;
        } else {
            throw errors::TypeMismatch();
        }
    }
    if (!seenDigit) throw errors::TypeMismatch();
    return std::strtod(normal.c_str(), nullptr);
}

}  // namespace kitra
