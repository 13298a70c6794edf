// How database values in their text form become Variants, and the UTF-8/UTF-16 conversion of
// the wide ODBC calls.
#include <gtest/gtest.h>

#include "ado/Odbc.h"
#include "core/Error.h"

namespace kitra::ado::odbc {
namespace {

TEST(OdbcValue, IntegersThatFitAre32BitIntegers) {
    EXPECT_EQ(ValueFromText(ColumnKind::Integer, "42"), Variant(std::int32_t{42}));
    EXPECT_EQ(ValueFromText(ColumnKind::Integer, "-2147483648"), Variant(std::int32_t{-2147483647 - 1}));
    EXPECT_EQ(ValueFromText(ColumnKind::Integer, "2147483647"), Variant(std::int32_t{2147483647}));
    EXPECT_EQ(ValueFromText(ColumnKind::Integer, "42").GetType(), Variant::Type::Long);
}

TEST(OdbcValue, IntegersBeyond32BitsAreDoubles) {
    EXPECT_EQ(ValueFromText(ColumnKind::Integer, "2147483648"), Variant(2147483648.0));
    EXPECT_EQ(ValueFromText(ColumnKind::Integer, "5000000000"), Variant(5000000000.0));
    EXPECT_EQ(ValueFromText(ColumnKind::Integer, "18446744073709551615"),
              Variant(18446744073709551615.0));
}

TEST(OdbcValue, DecimalsAndFloatsAreDoublesWhateverTheLocale) {
    EXPECT_EQ(ValueFromText(ColumnKind::Decimal, "23.00"), Variant(23.0));
    EXPECT_EQ(ValueFromText(ColumnKind::Decimal, "-0.05"), Variant(-0.05));
    EXPECT_EQ(ValueFromText(ColumnKind::Decimal, "1e3"), Variant(1000.0));
    EXPECT_EQ(ValueFromText(ColumnKind::Decimal, "12").GetType(), Variant::Type::Double);
}

TEST(OdbcValue, DatesAndDateTimes) {
    EXPECT_EQ(ValueFromText(ColumnKind::Date, "2024-05-06 07:08:09"),
              Variant(DateTime{2024, 5, 6, 7, 8, 9}));
    EXPECT_EQ(ValueFromText(ColumnKind::Date, "2024-05-06"), Variant(DateTime{2024, 5, 6, 0, 0, 0}));
    // Fractions of a second are dropped: the host keeps whole seconds.
    EXPECT_EQ(ValueFromText(ColumnKind::Date, "2024-05-06 07:08:09.750000"),
              Variant(DateTime{2024, 5, 6, 7, 8, 9}));
}

TEST(OdbcValue, TheZeroDateStaysTheTextTheDatabaseShows) {
    const Variant zero = ValueFromText(ColumnKind::Date, "0000-00-00 00:00:00");
    EXPECT_FALSE(zero.IsNull());
    EXPECT_EQ(zero, Variant("0000-00-00 00:00:00"));
    EXPECT_THROW(zero.ToDate(), Error);
    EXPECT_EQ(ValueFromText(ColumnKind::Date, "0000-00-00"), Variant("0000-00-00"));
    EXPECT_EQ(ValueFromText(ColumnKind::Date, "2024-00-10 00:00:00"), Variant("2024-00-10 00:00:00"));
    EXPECT_EQ(ValueFromText(ColumnKind::Date, "2023-02-29 10:00:00"), Variant("2023-02-29 10:00:00"));
}

TEST(OdbcValue, TimesAreOnTheHostsZeroDay) {
    EXPECT_EQ(ValueFromText(ColumnKind::Time, "10:11:12"), Variant(DateTime{1899, 12, 30, 10, 11, 12}));
    // Durations beyond a day are not times of day: they stay text.
    EXPECT_EQ(ValueFromText(ColumnKind::Time, "-838:00:00"), Variant("-838:00:00"));
    EXPECT_EQ(ValueFromText(ColumnKind::Time, "25:00:00"), Variant("25:00:00"));
}

TEST(OdbcValue, BitsAreBooleans) {
    EXPECT_EQ(ValueFromText(ColumnKind::Bit, "1"), Variant(true));
    EXPECT_EQ(ValueFromText(ColumnKind::Bit, "0"), Variant(false));
}

TEST(OdbcValue, TextStaysText) {
    EXPECT_EQ(ValueFromText(ColumnKind::Text, "00123"), Variant("00123"));
    EXPECT_EQ(ValueFromText(ColumnKind::Text, ""), Variant(""));
}

TEST(OdbcValue, SqlTypesMapToKinds) {
    EXPECT_EQ(KindOfSqlType(SQL_INTEGER), ColumnKind::Integer);
    EXPECT_EQ(KindOfSqlType(SQL_BIGINT), ColumnKind::Integer);
    EXPECT_EQ(KindOfSqlType(SQL_TINYINT), ColumnKind::Integer);
    EXPECT_EQ(KindOfSqlType(SQL_DECIMAL), ColumnKind::Decimal);
    EXPECT_EQ(KindOfSqlType(SQL_DOUBLE), ColumnKind::Decimal);
    EXPECT_EQ(KindOfSqlType(SQL_TYPE_TIMESTAMP), ColumnKind::Date);
    EXPECT_EQ(KindOfSqlType(SQL_TYPE_DATE), ColumnKind::Date);
    EXPECT_EQ(KindOfSqlType(SQL_TYPE_TIME), ColumnKind::Time);
    EXPECT_EQ(KindOfSqlType(SQL_WVARCHAR), ColumnKind::Text);
    EXPECT_EQ(KindOfSqlType(SQL_WLONGVARCHAR), ColumnKind::Text);
    EXPECT_EQ(KindOfSqlType(SQL_LONGVARBINARY), ColumnKind::Binary);
}

TEST(Utf16, RoundTripsEveryPlane) {
    const std::string text = "Açaí Ωμέγα 中文 🍕 end";
    const WideString wide = ToWide(text);
    // The pizza is a surrogate pair.
    EXPECT_EQ(wide.size(), 20u);
    EXPECT_EQ(FromWide(wide.data(), wide.size()), text);
}

TEST(Utf16, InvalidInputBecomesReplacementCharacters) {
    const std::string broken = std::string("a") + '\xC3' + "b" + '\xFF';
    const WideString wide = ToWide(broken);
    ASSERT_EQ(wide.size(), 4u);
    EXPECT_EQ(wide[1], 0xFFFD);
    EXPECT_EQ(wide[3], 0xFFFD);
    const SQLWCHAR lone[] = {0x41, 0xD800, 0x42};
    EXPECT_EQ(FromWide(lone, 3), "A\xEF\xBF\xBD" "B");
}

}  // namespace
}  // namespace kitra::ado::odbc
