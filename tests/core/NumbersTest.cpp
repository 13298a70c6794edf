#include "core/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "core/Error.h"
#include "tests/core/ErrorOf.h"

namespace kitra {
namespace {

using testing::ErrorOf;

TEST(RoundToInt16, RoundsHalfToEven) {
    EXPECT_EQ(RoundToInt16(2.5), 2);
    EXPECT_EQ(RoundToInt16(3.5), 4);
    EXPECT_EQ(RoundToInt16(-2.5), -2);
    EXPECT_EQ(RoundToInt16(-3.5), -4);
    EXPECT_EQ(RoundToInt16(0.5), 0);
    EXPECT_EQ(RoundToInt16(1.5), 2);
    EXPECT_EQ(RoundToInt16(2.4999), 2);
    EXPECT_EQ(RoundToInt16(2.5001), 3);
    EXPECT_EQ(RoundToInt16(-0.4), 0);
}

TEST(RoundToInt16, OverflowBoundaries) {
    EXPECT_EQ(RoundToInt16(32767), 32767);
    EXPECT_EQ(RoundToInt16(32767.4), 32767);
    EXPECT_EQ(ErrorOf([] { RoundToInt16(32767.5); }), "Overflow");
    EXPECT_EQ(ErrorOf([] { RoundToInt16(32768); }), "Overflow");
    EXPECT_EQ(RoundToInt16(-32768), -32768);
    // -32768.5 rounds to the even -32768, which fits.
    EXPECT_EQ(RoundToInt16(-32768.5), -32768);
    EXPECT_EQ(ErrorOf([] { RoundToInt16(-32768.51); }), "Overflow");
    EXPECT_EQ(ErrorOf([] { RoundToInt16(-32769.5); }), "Overflow");
    EXPECT_EQ(ErrorOf([] { RoundToInt16(std::numeric_limits<double>::quiet_NaN()); }),
              "Overflow");
    EXPECT_EQ(ErrorOf([] { RoundToInt16(std::numeric_limits<double>::infinity()); }), "Overflow");
}

TEST(RoundToInt32, OverflowBoundaries) {
    EXPECT_EQ(RoundToInt32(2147483647.0), 2147483647);
    EXPECT_EQ(RoundToInt32(2147483646.5), 2147483646);
    EXPECT_EQ(ErrorOf([] { RoundToInt32(2147483647.5); }), "Overflow");
    EXPECT_EQ(RoundToInt32(-2147483648.0), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(RoundToInt32(-2147483648.5), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ErrorOf([] { RoundToInt32(-2147483649.5); }), "Overflow");
    EXPECT_EQ(RoundToInt32(2.5), 2);
    EXPECT_EQ(RoundToInt32(-3.5), -4);
}

TEST(FormatHostNumber, ShortestFormWithHostSeparator) {
    EXPECT_EQ(FormatHostNumber(23), "23");
    EXPECT_EQ(FormatHostNumber(0), "0");
    EXPECT_EQ(FormatHostNumber(-0.0), "0");
    EXPECT_EQ(FormatHostNumber(0.5), "0,5");
    EXPECT_EQ(FormatHostNumber(-12.25), "-12,25");
    EXPECT_EQ(FormatHostNumber(1234567.5), "1234567,5");  // no grouping
    EXPECT_EQ(FormatHostNumber(12.34), "12,34");
    EXPECT_EQ(FormatHostNumber(1234.0 / 100), "12,34");
    EXPECT_EQ(FormatHostNumber(0.1 + 0.2), "0,3");  // 15 significant digits, as the host shows
    EXPECT_EQ(FormatHostNumber(1e20), "100000000000000000000");
    EXPECT_EQ(FormatHostNumber(0.000125), "0,000125");
    EXPECT_EQ(FormatHostNumber(6.5, '.'), "6.5");
}

TEST(FormatHostNumber, AgreesWithTheStrictParser) {
    for (double v : {0.0, 1.0, -1.0, 0.5, 12.34, -12.25, 99999.99, 2147483647.0, 1.0 / 3}) {
        const std::string text = FormatHostNumber(v, ',');
        EXPECT_NEAR(ParseNumberStrict(text, ','), v, 1e-12 * std::max(1.0, std::abs(v))) << text;
    }
}

TEST(FormatNormalisedVat, DropsLeadingZero) {
    EXPECT_EQ(FormatNormalisedVat(23), "23");
    EXPECT_EQ(FormatNormalisedVat(23.0), "23");
    EXPECT_EQ(FormatNormalisedVat(6.5), "6.5");
    EXPECT_EQ(FormatNormalisedVat(0), "0");
    EXPECT_EQ(FormatNormalisedVat(0.5), ".5");
    EXPECT_EQ(FormatNormalisedVat(-0.5), "-.5");
    EXPECT_EQ(FormatNormalisedVat(-1.5), "-1.5");
    EXPECT_EQ(FormatNormalisedVat(1), "1");
}

TEST(LeadingNumber, PlainParse) {
    EXPECT_EQ(LeadingNumber("12,5"), 12);
    EXPECT_EQ(LeadingNumber(""), 0);
    EXPECT_EQ(LeadingNumber("abc"), 0);
    EXPECT_EQ(LeadingNumber("12.5"), 12.5);
    EXPECT_EQ(LeadingNumber("  -3.25xyz"), -3.25);
    EXPECT_EQ(LeadingNumber("+7"), 7);
    EXPECT_EQ(LeadingNumber("1 2 3"), 123);  // blanks are skipped, also between digits
    EXPECT_EQ(LeadingNumber("10%"), 10);
    EXPECT_EQ(LeadingNumber(".5"), 0.5);
    EXPECT_EQ(LeadingNumber("1.2.3"), 1.2);
    EXPECT_EQ(LeadingNumber("-"), 0);
    EXPECT_EQ(LeadingNumber("--5"), 0);
}

TEST(ParseNumberStrict, AcceptsOnlyWholeNumbers) {
    EXPECT_EQ(ParseNumberStrict("12,5", ','), 12.5);
    EXPECT_EQ(ParseNumberStrict("  -3 ", ','), -3);
    EXPECT_EQ(ParseNumberStrict("+4", ','), 4);
    EXPECT_EQ(ParseNumberStrict(",5", ','), 0.5);
    EXPECT_EQ(ParseNumberStrict("5,", ','), 5);
    EXPECT_EQ(ParseNumberStrict("6.5", '.'), 6.5);
    for (const char* bad : {"", " ", "abc", "12.5", "1,2,3", "1 2", "--1", "+", ",", "1e3", "12a"}) {
        EXPECT_EQ(ErrorOf([&] { ParseNumberStrict(bad, ','); }), "Type mismatch") << bad;
    }
    EXPECT_EQ(ErrorOf([] { ParseNumberStrict("6,5", '.'); }), "Type mismatch");
}

TEST(ParseNumberStrict, GivesExactlyWhatTheLibraryReadsForEveryLength) {
    // Short numbers are read without the library; every length, with and without decimals,
    // leading zeros and signs, must give the very same double.
    std::mt19937_64 random(20261126);
    for (int i = 0; i < 200000; ++i) {
        const int length = 1 + static_cast<int>(random() % 26);
        std::string digits;
        for (int d = 0; d < length; ++d) digits += static_cast<char>('0' + random() % 10);
        const std::size_t separator = random() % (digits.size() + 2);
        std::string text = digits, plain = digits;
        if (separator <= digits.size()) {
            text.insert(separator, ",");
            plain.insert(separator, ".");
        }
        if (random() % 4 == 0) {
            text = "-" + text;
            plain = "-" + plain;
        }
        const double expected = std::strtod(plain.c_str(), nullptr);
        const double got = ParseNumberStrict(text, ',');
        ASSERT_EQ(std::memcmp(&got, &expected, sizeof got), 0) << text << " " << got << " " << expected;
    }
    EXPECT_TRUE(std::signbit(ParseNumberStrict("-0", ',')));
    EXPECT_EQ(ParseNumberStrict("0,0000000000000000000000001", ','), 1e-25);
    EXPECT_EQ(ParseNumberStrict("00000000000000000000123,5", ','), 123.5);
}

}  // namespace
}  // namespace kitra
