#include "ado/Recordset.h"

#include <gtest/gtest.h>

#include "core/Error.h"

namespace kitra::ado {
namespace {

TEST(Recordset, WalksRowsAndFindsFieldsByNameIgnoringCase) {
    Recordset rs({"uid", "Name"}, {{std::int32_t{1}, "Ana"}, {std::int32_t{2}, "Rui"}});
    EXPECT_EQ(rs.RecordCount(), 2);
    EXPECT_FALSE(rs.Eof());
    EXPECT_FALSE(rs.Bof());
    EXPECT_EQ(rs["NAME"].ToText(), "Ana");
    EXPECT_EQ(rs.Field("UID").ToInt32(), 1);
    rs.MoveNext();
    EXPECT_EQ(rs["name"].ToText(), "Rui");
    rs.MoveNext();
    EXPECT_TRUE(rs.Eof());
    EXPECT_THROW(rs.MoveNext(), Error);
    EXPECT_THROW(rs["Name"], Error);
    rs.MoveFirst();
    EXPECT_EQ(rs["Name"].ToText(), "Ana");
}

TEST(Recordset, EmptyResultIsBothBofAndEof) {
    Recordset rs({"uid"}, {});
    EXPECT_EQ(rs.RecordCount(), 0);
    EXPECT_TRUE(rs.Eof());
    EXPECT_TRUE(rs.Bof());
}

TEST(Recordset, UnknownFieldIsAnError) {
    Recordset rs({"uid"}, {{std::int32_t{1}}});
    try {
        rs["Nome"];
        FAIL() << "no error";
    } catch (const Error& e) {
        EXPECT_EQ(e.Number(), 3265);
    }
    EXPECT_TRUE(rs.HasField("UID"));
    EXPECT_FALSE(rs.HasField("Nome"));
}

}  // namespace
}  // namespace kitra::ado
