#pragma once
// Check digits of the numbers a Portuguese restaurant's data is full of: the NIF (tax number,
// nine digits, the last a mod-11 check digit) and EAN-13 bar codes.
#include <string>
#include <string_view>

namespace kitra::restaurant {

// The NIF check digit of its first eight digits: 11 minus the weighted sum (weights 9 to 2)
// modulo 11, and 0 where that gives 10 or 11.
inline int NifCheckDigit(std::string_view firstEight) {
    int sum = 0;
    for (int i = 0; i < 8; ++i) sum += (firstEight[static_cast<std::size_t>(i)] - '0') * (9 - i);
    const int remainder = sum % 11;
    return remainder < 2 ? 0 : 11 - remainder;
}

// Nine digits, a first digit that starts a NIF (1, 2, 3 people; 5 companies; 6 public bodies;
// 8 sole traders; 9 others), and the right check digit.
inline bool IsValidNif(std::string_view nif) {
    if (nif.size() != 9) return false;
    for (const char c : nif) {
        if (c < '0' || c > '9') return false;
    }
    if (std::string_view("1235689").find(nif[0]) == std::string_view::npos) return false;
    return NifCheckDigit(nif.substr(0, 8)) == nif[8] - '0';
}

// The EAN-13 check digit of the first twelve digits (weights 1 and 3 from the left).
inline int Ean13CheckDigit(std::string_view firstTwelve) {
    int sum = 0;
    for (int i = 0; i < 12; ++i) {
        sum += (firstTwelve[static_cast<std::size_t>(i)] - '0') * (i % 2 == 0 ? 1 : 3);
    }
    return (10 - sum % 10) % 10;
}

}  // namespace kitra::restaurant
