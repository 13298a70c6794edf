// How a result is held: every value reads back exactly as it went in (types, nulls, mixed
// columns), at a few bytes per cell, and the recordset over such columns moves and reads by name
// as before. No server needed.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "ado/Recordset.h"
#include "ado/ResultColumn.h"
#include "core/Error.h"

namespace kitra::ado {
namespace {

std::vector<Variant> ReadBack(const ResultColumn& column) {
    std::vector<Variant> values;
    for (std::size_t row = 0; row < column.Size(); ++row) values.push_back(column.At(row));
    return values;
}

ResultColumn ColumnOf(const std::vector<Variant>& values) {
    ResultColumn column;
    for (const Variant& value : values) column.Append(value);
    return column;
}

TEST(ResultColumnTest, EachTypeReadsBackExactlyWithItsNulls) {
    const std::vector<std::vector<Variant>> columns = {
        {Variant::Null(), Variant(std::int32_t{-7}), Variant::Null(), Variant(std::int32_t{2147483647})},
        {Variant(std::int16_t{3}), Variant::Null(), Variant(std::int16_t{-300})},
        {Variant(true), Variant(false), Variant::Null()},
        {Variant(0.1), Variant::Null(), Variant(-1234567.8901), Variant(5000000000.0)},
        {Variant(DateTime{2024, 5, 6, 7, 8, 9}), Variant::Null(), Variant(DateTime{}),
         Variant(DateTime{9999, 12, 31, 23, 59, 59})},
        {Variant::Null(), Variant::Null(), Variant("Bitoque"), Variant(""), Variant("Açúcar"),
         Variant(std::string("a\0b", 3)), Variant::Null()},
        {Variant::Null(), Variant::Null()},
    };
    for (const auto& values : columns) {
        const ResultColumn column = ColumnOf(values);
        ASSERT_EQ(column.Size(), values.size());
        EXPECT_EQ(ReadBack(column), values);
    }
}

TEST(ResultColumnTest, AValueOfAnotherTypeKeepsEveryValueAsItWas) {
    // A whole number too large for 32 bits arrives as a double; a zero date stays the text the
    // database shows; a host column may hold anything.
    const std::vector<std::vector<Variant>> columns = {
        {Variant(std::int32_t{1}), Variant::Null(), Variant(5000000000.0), Variant(std::int32_t{2})},
        {Variant(DateTime{2024, 5, 6, 0, 0, 0}), Variant("0000-00-00 00:00:00"), Variant::Null(),
         Variant(DateTime{2024, 5, 7, 0, 0, 0})},
        {Variant("texto"), Variant(std::int32_t{4}), Variant(), Variant(std::int16_t{5})},
        {Variant(DateTime{-1, 1, 1, 0, 0, 0}), Variant(DateTime{2024, 1, 1, 0, 0, 0})},
    };
    for (const auto& values : columns) {
        EXPECT_EQ(ReadBack(ColumnOf(values)), values);
    }
}

TEST(ResultColumnTest, ReservedRoomChangesNothingRead) {
    ResultColumn column;
    column.Reserve(10);
    column.AppendNull();
    column.AppendText("um");
    column.AppendNull();
    column.Append(Variant("dois"));
    column.Trim();
    EXPECT_EQ(ReadBack(column),
              (std::vector<Variant>{Variant::Null(), Variant("um"), Variant::Null(), Variant("dois")}));
}

// The shape of the largest result of a run: whole numbers, dates, short texts.
TEST(ResultColumnTest, EachCellTakesAFewBytes) {
    constexpr std::size_t kRows = 100000;
    ResultColumn numbers, dates, texts;
    numbers.Reserve(kRows);
    for (std::size_t row = 0; row < kRows; ++row) {
        numbers.Append(Variant(static_cast<std::int32_t>(row)));
        dates.Append(Variant(DateTime{2020, 1 + static_cast<int>(row % 12), 1, 12, 30, 0}));
        texts.AppendText("FT " + std::to_string(1000000 + row));
    }
    numbers.Trim();
    dates.Trim();
    texts.Trim();
    EXPECT_LE(numbers.HeapBytes(), kRows * 4 + 64);
    EXPECT_LE(dates.HeapBytes(), kRows * 8 * 5 / 4);
    // 10 bytes of text and 4 of its end, with a quarter of room at most.
    EXPECT_LE(texts.HeapBytes(), kRows * 14 * 5 / 4);
    EXPECT_EQ(numbers.At(kRows - 1), Variant(static_cast<std::int32_t>(kRows - 1)));
    EXPECT_EQ(dates.At(13), Variant(DateTime{2020, 2, 1, 12, 30, 0}));
    EXPECT_EQ(texts.At(42), Variant("FT 1000042"));
}

TEST(RecordsetRowsTest, ReadsByNameRowByRowAndCountsBeforeTheFirst) {
    Recordset r({"UID", "DocumentID", "TableTotal"},
                {{Variant(std::int32_t{7}), Variant("FT 1"), Variant(std::int32_t{250})},
                 {Variant(std::int32_t{8}), Variant::Null(), Variant(std::int32_t{-1})},
                 {Variant(std::int32_t{9}), Variant("FT 3")}});
    ASSERT_EQ(r.RecordCount(), 3);
    EXPECT_FALSE(r.Bof());
    EXPECT_EQ(r["uid"], Variant(std::int32_t{7}));
    const Variant& document = r["DocumentID"];
    EXPECT_EQ(document, Variant("FT 1"));
    EXPECT_EQ(r["TableTotal"], Variant(std::int32_t{250}));
    EXPECT_EQ(document, Variant("FT 1"));  // the value stays while the row does
    r.MoveNext();
    EXPECT_TRUE(r["documentid"].IsNull());
    EXPECT_EQ(r[std::string_view("UID")], Variant(std::int32_t{8}));
    EXPECT_EQ(r.Field(std::size_t{2}), Variant(std::int32_t{-1}));
    r.MoveNext();
    EXPECT_EQ(r["DocumentID"], Variant("FT 3"));
    EXPECT_TRUE(r["TableTotal"].IsEmpty());  // a short row reads as empty past its end
    r.MoveNext();
    EXPECT_TRUE(r.Eof());
    EXPECT_THROW(r["UID"], Error);
    r.MoveFirst();
    EXPECT_EQ(r["UID"], Variant(std::int32_t{7}));
    EXPECT_EQ(r["DocumentID"], Variant("FT 1"));
    EXPECT_THROW(r["Missing"], Error);
}

TEST(RecordsetRowsTest, AnEmptyResultIsBofAndEof) {
    Recordset r({"UID"}, {});
    EXPECT_EQ(r.RecordCount(), 0);
    EXPECT_TRUE(r.Bof());
    EXPECT_TRUE(r.Eof());
    EXPECT_THROW(r["UID"], Error);
}

}  // namespace
}  // namespace kitra::ado
