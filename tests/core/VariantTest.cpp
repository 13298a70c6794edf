#include "core/Variant.h"

#include <gtest/gtest.h>

#include "core/Error.h"
#include "tests/core/ErrorOf.h"

namespace kitra {
namespace {

using testing::ErrorOf;

TEST(Variant, Types) {
    EXPECT_EQ(Variant().GetType(), Variant::Type::Empty);
    EXPECT_EQ(Variant::Null().GetType(), Variant::Type::Null);
    EXPECT_EQ(Variant(std::int16_t{3}).GetType(), Variant::Type::Integer);
    EXPECT_EQ(Variant(std::int32_t{3}).GetType(), Variant::Type::Long);
    EXPECT_EQ(Variant(3.0).GetType(), Variant::Type::Double);
    EXPECT_EQ(Variant(true).GetType(), Variant::Type::Boolean);
    EXPECT_EQ(Variant(DateTime{2011, 3, 1}).GetType(), Variant::Type::Date);
    EXPECT_EQ(Variant("x").GetType(), Variant::Type::String);
    EXPECT_TRUE(Variant::Null().IsNull());
    EXPECT_FALSE(Variant().IsNull());
}

TEST(Variant, TextFromNullIsAnError) {
    EXPECT_EQ(ErrorOf([] { Variant::Null().ToText(); }), "Invalid use of Null");
    EXPECT_EQ(ErrorOf([] { Variant::Null().ToInt16(); }), "Invalid use of Null");
    EXPECT_EQ(ErrorOf([] { Variant::Null().ToDouble(); }), "Invalid use of Null");
    EXPECT_EQ(Variant().ToText(), "");
    EXPECT_EQ(Variant().ToInt32(), 0);
}

TEST(Variant, NumbersToText) {
    EXPECT_EQ(Variant(23.0).ToText(), "23");
    EXPECT_EQ(Variant(0.5).ToText(), "0,5");
    EXPECT_EQ(Variant(-12.25).ToText(), "-12,25");
    EXPECT_EQ(Variant(std::int32_t{-7}).ToText(), "-7");
    EXPECT_EQ(Variant(std::int16_t{12}).ToText(), "12");
    EXPECT_EQ(Variant(0.5).ToText({'.', "dd-mm-yyyy hh:nn:ss"}), "0.5");
    EXPECT_EQ(Variant(true).ToText(), "True");
}

TEST(Variant, TextToNumbers) {
    EXPECT_EQ(Variant("12,5").ToDouble(), 12.5);
    EXPECT_EQ(Variant(" 3 ").ToInt16(), 3);
    EXPECT_EQ(Variant("2,5").ToInt16(), 2);
    EXPECT_EQ(Variant("3,5").ToInt32(), 4);
    EXPECT_EQ(ErrorOf([] { Variant("abc").ToInt16(); }), "Type mismatch");
    EXPECT_EQ(ErrorOf([] { Variant("").ToDouble(); }), "Type mismatch");
    EXPECT_EQ(ErrorOf([] { Variant("40000").ToInt16(); }), "Overflow");
}

TEST(Variant, RoundingAndOverflow) {
    EXPECT_EQ(Variant(2.5).ToInt16(), 2);
    EXPECT_EQ(Variant(-2.5).ToInt16(), -2);
    EXPECT_EQ(ErrorOf([] { Variant(32767.5).ToInt16(); }), "Overflow");
    EXPECT_EQ(Variant(-32768.5).ToInt16(), -32768);
    EXPECT_EQ(ErrorOf([] { Variant(2147483647.5).ToInt32(); }), "Overflow");
    EXPECT_EQ(ErrorOf([] { Variant(std::int32_t{40000}).ToInt16(); }), "Overflow");
    EXPECT_EQ(Variant(true).ToInt16(), -1);
}

TEST(Variant, Booleans) {
    EXPECT_TRUE(Variant(-1.0).ToBool());
    EXPECT_TRUE(Variant(std::int32_t{1}).ToBool());
    EXPECT_FALSE(Variant(0.0).ToBool());
    EXPECT_TRUE(Variant("True").ToBool());
    EXPECT_FALSE(Variant("false").ToBool());
    EXPECT_TRUE(Variant("1").ToBool());
    EXPECT_EQ(ErrorOf([] { Variant("maybe").ToBool(); }), "Type mismatch");
    EXPECT_EQ(ErrorOf([] { Variant::Null().ToBool(); }), "Invalid use of Null");
}

TEST(Variant, Dates) {
    const DateTime d{2011, 3, 1, 9, 5, 7};
    EXPECT_EQ(Variant(d).ToText(), "01-03-2011 09:05:07");
    EXPECT_EQ(Variant("2011-03-01 09:05:07").ToDate(), d);
    EXPECT_EQ(Variant("01-03-2011 09:05:07").ToDate(), d);
    EXPECT_EQ(Variant(d.ToSerial()).ToDate(), d);
    EXPECT_EQ(ErrorOf([] { Variant("ontem").ToDate(); }), "Type mismatch");
    EXPECT_EQ(ErrorOf([] { Variant::Null().ToDate(); }), "Invalid use of Null");
}

}  // namespace
}  // namespace kitra
