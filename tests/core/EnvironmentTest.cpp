// Whole numbers from the environment or a command line: taken when they are whole and within
// range, else the standard value or nothing.
#include <gtest/gtest.h>

#include <cstdlib>

#include "core/Environment.h"

namespace kitra {
namespace {

constexpr const char* kVariable = "KITRA_TEST_WHOLE_NUMBER";

long Read(const char* text) {
    if (text == nullptr) ::unsetenv(kVariable);
    else ::setenv(kVariable, text, 1);
    const long value = WholeNumberFromEnvironment(kVariable, 30, 0, 100);
    ::unsetenv(kVariable);
    return value;
}

TEST(Environment, AWholeNumberWithinRangeIsTaken) {
    EXPECT_EQ(Read("0"), 0);
    EXPECT_EQ(Read("7"), 7);
    EXPECT_EQ(Read("100"), 100);
}

TEST(Environment, AnythingElseGivesTheStandardValue) {
    EXPECT_EQ(Read(nullptr), 30);
    EXPECT_EQ(Read(""), 30);
    EXPECT_EQ(Read("-1"), 30);
    EXPECT_EQ(Read("101"), 30);
    EXPECT_EQ(Read("12s"), 30);
    EXPECT_EQ(Read("1.5"), 30);
    EXPECT_EQ(Read("ten"), 30);
    EXPECT_EQ(Read("99999999999999999999999"), 30);
}

TEST(WholeNumberWithin, TakesOnlyAWholeNumberInRange) {
    EXPECT_EQ(WholeNumberWithin("1", 1, 20), 1);
    EXPECT_EQ(WholeNumberWithin("20", 1, 20), 20);
    EXPECT_EQ(WholeNumberWithin("0", 1, 20), std::nullopt);
    EXPECT_EQ(WholeNumberWithin("21", 1, 20), std::nullopt);
    EXPECT_EQ(WholeNumberWithin("2x", 1, 20), std::nullopt);
    EXPECT_EQ(WholeNumberWithin("x", 1, 20), std::nullopt);
    EXPECT_EQ(WholeNumberWithin("", 1, 20), std::nullopt);
    EXPECT_EQ(WholeNumberWithin(nullptr, 1, 20), std::nullopt);
}

}  // namespace
}  // namespace kitra
