#include "log/DSOKitraLog.h"

#include <gtest/gtest.h>

#include "tests/hostsupport/TestBackOffice.h"

namespace kitra {
namespace {

class DSOKitraLogTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(log.CheckOrCreateKitraLogTable()); }

    KitraLog Record(const std::string& restaurant, DateTime when, const std::string& contents) {
        KitraLog record;
        record.RestaurantID = restaurant;
        record.ImportDate = when;
        record.Contents = contents;
        record.IsNew = true;
        return record;
    }

    long Rows() {
        return office.Services()
            .connection->Query(host::SqlStatement("SELECT * FROM Kitra2Log"))
            .RecordCount();
    }

    testing::TestBackOffice office;
    DSOKitraLog log{office.Services()};
    const DateTime march1{2011, 3, 1, 9, 5, 7};
    const DateTime march2{2011, 3, 2, 10, 0, 0};
};

TEST_F(DSOKitraLogTest, CreatesTheTableOnceAndKeepsIt) {
    EXPECT_TRUE(office.Services().schema->TableExists("Kitra2Log"));
    ASSERT_TRUE(log.Save(Record("Centro", march1, "linha")));
    EXPECT_TRUE(log.CheckOrCreateKitraLogTable());  // exists: nothing recreated
    EXPECT_EQ(Rows(), 1);
}

TEST_F(DSOKitraLogTest, ListsNewestFirstWithoutContents) {
    ASSERT_TRUE(log.Save(Record("Centro", march1, "a")));
    ASSERT_TRUE(log.Save(Record("Praia", march2, "b")));
    ado::Recordset rs = log.GetKitraLogRS();
    ASSERT_EQ(rs.RecordCount(), 2);
    EXPECT_FALSE(rs.HasField("Contents"));
    EXPECT_EQ(rs["RestaurantID"].ToText(), "Praia");
    EXPECT_EQ(rs["ImportDate"].ToDate(), march2);
    rs.MoveNext();
    EXPECT_EQ(rs["RestaurantID"].ToText(), "Centro");
    EXPECT_EQ(rs["ImportDate"].ToDate(), march1);
}

TEST_F(DSOKitraLogTest, EmptyTableGivesAnEmptyRecordset) {
    ado::Recordset rs = log.GetKitraLogRS();
    EXPECT_EQ(rs.RecordCount(), 0);
    EXPECT_TRUE(rs.Eof());
    EXPECT_TRUE(rs.Bof());
}

TEST_F(DSOKitraLogTest, SameRestaurantInTheSameSecondCollides) {
    ASSERT_TRUE(log.Save(Record("Centro", march1, "primeira")));
    EXPECT_FALSE(log.Save(Record("Centro", march1, "segunda")));
    auto stored = log.GetLogInfo("Centro", march1, true);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->Contents, "primeira");
    // Another restaurant in the same second is another row.
    EXPECT_TRUE(log.Save(Record("Praia", march1, "outra")));
    EXPECT_EQ(Rows(), 2);
}

TEST_F(DSOKitraLogTest, GetLogInfoReadsContentsOnlyWhenAsked) {
    const std::string contents = " - # START # 01-03-2011 09:05:07 #\r\nRestaurantes - A integrar\r\n";
    ASSERT_TRUE(log.Save(Record("Centro", march1, contents)));
    auto with = log.GetLogInfo("Centro", march1, true);
    ASSERT_TRUE(with);
    EXPECT_EQ(with->Contents, contents);
    EXPECT_EQ(with->ImportDate, march1);
    EXPECT_EQ(with->RestaurantID, "Centro");
    EXPECT_FALSE(with->IsNew);
    auto without = log.GetLogInfo("Centro", march1, false);
    ASSERT_TRUE(without);
    EXPECT_EQ(without->Contents, "");
    EXPECT_EQ(without->ImportDate, march1);
}

TEST_F(DSOKitraLogTest, GetLogInfoOfAMissingRowGivesNothingQuietly) {
    EXPECT_FALSE(log.GetLogInfo("Centro", march1, true));
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(DSOKitraLogTest, GetLogInfoFailureIsShownAndGivesNothing) {
    office.Services().connection->Execute(host::SqlStatement("DROP TABLE Kitra2Log"));
    EXPECT_FALSE(log.GetLogInfo("Centro", march1, true));
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    const auto& box = office.boxes.shown[0];
    EXPECT_EQ(box.title, "Erro");
    EXPECT_EQ(box.style, host::MessageStyle::Exclamation);
    EXPECT_EQ(box.buttons, host::MessageButtons::Ok);
    EXPECT_TRUE(box.text.starts_with("Ocorreu uma excepção na leitura do log\r\n\r\n")) << box.text;
    EXPECT_GT(box.text.size(), std::string("Ocorreu uma excepção na leitura do log\r\n\r\n").size());
}

TEST_F(DSOKitraLogTest, SaveOfAnExistingRecordUpdatesItsContents) {
    ASSERT_TRUE(log.Save(Record("Centro", march1, "antes")));
    KitraLog record = log.GetLogInfo("Centro", march1, true).value().Copy();
    record.Contents = "depois";
    record.IsNew = false;
    EXPECT_TRUE(log.Save(record));
    EXPECT_EQ(log.GetLogInfo("Centro", march1, true)->Contents, "depois");
    EXPECT_EQ(Rows(), 1);
}

TEST_F(DSOKitraLogTest, DeleteRemovesExactlyThatRow) {
    ASSERT_TRUE(log.Save(Record("Centro", march1, "a")));
    ASSERT_TRUE(log.Save(Record("Centro", march2, "b")));
    EXPECT_TRUE(log.Delete("Centro", march1));
    EXPECT_FALSE(log.GetLogInfo("Centro", march1, false));
    EXPECT_TRUE(log.GetLogInfo("Centro", march2, false));
}

TEST_F(DSOKitraLogTest, DeleteOfAMissingRowSucceedsAndChangesNothing) {
    ASSERT_TRUE(log.Save(Record("Centro", march1, "a")));
    EXPECT_TRUE(log.Delete("Praia", march1));
    EXPECT_TRUE(log.Delete("Centro", march2));
    EXPECT_EQ(Rows(), 1);
}

TEST_F(DSOKitraLogTest, RestaurantNamesWithQuotesAreValuesNotSql) {
    const std::string name = "O'Neill \"Bar\"; DROP TABLE Kitra2Log; --";
    ASSERT_TRUE(log.Save(Record(name.substr(0, 25), march1, "x")));
    auto stored = log.GetLogInfo(name.substr(0, 25), march1, true);
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->Contents, "x");
    EXPECT_TRUE(log.Delete(name.substr(0, 25), march1));
    EXPECT_EQ(Rows(), 0);
    EXPECT_TRUE(office.Services().schema->TableExists("Kitra2Log"));
}

TEST_F(DSOKitraLogTest, ResetLogEmptiesButKeepsTheTable) {
    ASSERT_TRUE(log.Save(Record("Centro", march1, "a")));
    ASSERT_TRUE(log.Save(Record("Praia", march2, "b")));
    log.ResetLog();
    EXPECT_TRUE(office.Services().schema->TableExists("Kitra2Log"));
    EXPECT_EQ(Rows(), 0);
    EXPECT_TRUE(log.Save(Record("Centro", march1, "de novo")));
}

TEST_F(DSOKitraLogTest, CheckOrCreateReportsFailure) {
    // A table that already exists under that name counts as there.
    office.Services().connection->Execute(host::SqlStatement("DROP TABLE Kitra2Log"));
    office.Services().connection->Execute(host::SqlStatement("CREATE TABLE Kitra2Log (x TEXT)"));
    EXPECT_TRUE(log.CheckOrCreateKitraLogTable());
    // A host database that refuses the new table is reported as False.
    office.Services().connection->Execute(host::SqlStatement("DROP TABLE Kitra2Log"));
    office.Services().connection->Execute(host::SqlStatement("PRAGMA query_only = ON"));
    EXPECT_FALSE(log.CheckOrCreateKitraLogTable());
    office.Services().connection->Execute(host::SqlStatement("PRAGMA query_only = OFF"));
    EXPECT_FALSE(office.Services().schema->TableExists("Kitra2Log"));
}

}  // namespace
}  // namespace kitra
