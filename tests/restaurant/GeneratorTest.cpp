// The restaurant data generator on its own: check digits, dates, and that the same options
// give the same data.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "restaurant/generator/DataGenerator.h"
#include "restaurant/generator/TaxNumbers.h"

namespace kitra::restaurant {
namespace {

std::string Generate(const GeneratorOptions& options, TableCounts* counts = nullptr) {
    std::ostringstream out;
    const TableCounts written = WriteRestaurantData(options, out);
    if (counts) *counts = written;
    return out.str();
}

TEST(TaxNumbers, NifCheckDigits) {
    EXPECT_EQ(NifCheckDigit("99999999"), 0);
    EXPECT_TRUE(IsValidNif("999999990"));  // the final consumer
    EXPECT_TRUE(IsValidNif("123456789"));
    // A remainder of 1 (or 0) gives the check digit 0.
    EXPECT_TRUE(IsValidNif("501442600"));
    EXPECT_EQ(NifCheckDigit("50144260"), 0);
    EXPECT_FALSE(IsValidNif("123456788"));
    EXPECT_FALSE(IsValidNif("12345678"));
    EXPECT_FALSE(IsValidNif("12345678A"));
    EXPECT_FALSE(IsValidNif("412345675"));  // no NIF starts with 4
    EXPECT_EQ(NifCheckDigit("10000000"), 2);
}

TEST(TaxNumbers, NifCheckDigitFollowsTheRule) {
    for (int n = 10000000; n < 10000000 + 5000; n += 7) {
        const std::string eight = std::to_string(n);
        int sum = 0;
        for (int i = 0; i < 8; ++i) sum += (eight[i] - '0') * (9 - i);
        const int expected = 11 - sum % 11 >= 10 ? 0 : 11 - sum % 11;
        EXPECT_EQ(NifCheckDigit(eight), expected) << eight;
    }
}

TEST(TaxNumbers, Ean13CheckDigits) {
    EXPECT_EQ(Ean13CheckDigit("560123456789"), 2);  // 5601234567892
    EXPECT_EQ(Ean13CheckDigit("400638133393"), 1);  // 4006381333931
}

TEST(Moments, ParseAndFormat) {
    EXPECT_EQ(ParseMoment("1970-01-01 00:00:00"), 0);
    EXPECT_EQ(ParseMoment("1970-01-02"), 86400);
    EXPECT_EQ(FormatMoment(ParseMoment("2024-02-29 23:59:59")), "2024-02-29 23:59:59");
    EXPECT_EQ(FormatMoment(ParseMoment("2025-01-31 20:00:00") + 4 * 3600 + 1), "2025-02-01 00:00:01");
    EXPECT_EQ(ParseMoment("2023-02-29 00:00:00"), -1);
    EXPECT_EQ(ParseMoment("2024-13-01 00:00:00"), -1);
    EXPECT_EQ(ParseMoment("2024-01-01 24:00:00"), -1);
    EXPECT_EQ(ParseMoment("yesterday"), -1);
}

TEST(DataGenerator, TheSameOptionsGiveTheSameBytes) {
    GeneratorOptions options;
    options.size = DataSize::Demo;
    options.seed = 42;
    const std::string first = Generate(options);
    EXPECT_EQ(Generate(options), first);
    EXPECT_GT(first.size(), 100000u);
}

TEST(DataGenerator, AnotherSeedGivesOtherData) {
    GeneratorOptions options;
    options.seed = 1;
    const std::string one = Generate(options);
    options.seed = 2;
    EXPECT_NE(Generate(options), one);
}

TEST(DataGenerator, TheBatchSizeChangesOnlyTheStatementsNotTheRows) {
    GeneratorOptions options;
    TableCounts wide, narrow;
    options.rowsPerInsert = 1000;
    const std::string big = Generate(options, &wide);
    options.rowsPerInsert = 3;
    const std::string small = Generate(options, &narrow);
    EXPECT_EQ(wide, narrow);
    EXPECT_GT(small.size(), big.size());
}

TEST(DataGenerator, SizesAndFactor) {
    TableCounts tiny, demo, bench;
    GeneratorOptions options;
    Generate(options, &tiny);
    options.size = DataSize::Demo;
    Generate(options, &demo);
    options.size = DataSize::Bench;
    options.factor = 0.02;
    Generate(options, &bench);
    EXPECT_EQ(tiny["transactionsheaders"], 40);
    EXPECT_EQ(demo["transactionsheaders"], 4000);
    EXPECT_EQ(bench["transactionsheaders"], 2000);
    EXPECT_GT(bench["transactionsdetails"], bench["transactionsheaders"]);
    EXPECT_GE(bench["transactionstenders"], bench["transactionsheaders"] * 8 / 10);
    EXPECT_EQ(tiny["taxes"], 3);
    EXPECT_EQ(tiny["paymenttypes"], 7);
}

TEST(DataGenerator, TheBaseDateMovesEveryDate) {
    GeneratorOptions options;
    options.baseMoment = ParseMoment("2031-06-15 12:00:00");
    options.days = 5;
    const std::string text = Generate(options);
    EXPECT_NE(text.find("'2031-06-1"), std::string::npos);
    EXPECT_EQ(text.find("'2025-01-"), std::string::npos);
}

TEST(DataGenerator, RejectsImpossibleOptions) {
    GeneratorOptions options;
    options.days = 0;
    EXPECT_THROW(Generate(options), std::invalid_argument);
    options.days = 1;
    options.factor = 0;
    EXPECT_THROW(Generate(options), std::invalid_argument);
}

}  // namespace
}  // namespace kitra::restaurant
