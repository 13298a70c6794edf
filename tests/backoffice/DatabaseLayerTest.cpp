// The database layer as components use it: the shared connection, the statement builder, the
// schema catalogue and compaction, on a real back-office file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "core/DateTime.h"
#include "tests/backoffice/TempFolder.h"

namespace kitra::backoffice {
namespace {

using namespace host;
using testing::TempBackOffice;

// A table like the import log: text of at most 25 characters, long text, a date, and a
// primary key over two columns.
TableDefinition LogLikeTable(const std::string& name = "Kitra2Log") {
    TableDefinition table;
    table.name = name;
    table.columns = {{"RestaurantID", ado_type::kVarWChar, 25},
                     {"Contents", ado_type::kLongVarWChar, 0},
                     {"ImportDate", ado_type::kDate, 0}};
    table.indexes = {{name + "_IDX", {"RestaurantID", "ImportDate"}, true, true}};
    return table;
}

class DatabaseLayer : public ::testing::Test {
protected:
    void SetUp() override { office_->schema.AppendTable(LogLikeTable()); }
    IHostConnection& Connection() { return office_->connection; }
    ISqlStatementBuilder& Builder() { return office_->statements; }

    // That many log rows of 4,000 characters each (restaurants R0, R1, ...), in one transaction.
    void FillTheLog(int rows) {
        const std::string contents(4000, 'k');
        Transaction bulk(office_->GetDatabase());
        for (int i = 0; i < rows; ++i) {
            Connection().Execute(Builder().Insert(
                "Kitra2Log", {{"RestaurantID", "R" + std::to_string(i)},
                              {"Contents", contents},
                              {"ImportDate", "2024-01-01 10:00:00"}}));
        }
        bulk.Commit();
    }
    TempBackOffice office_;
};

// ---------------------------------------------------------------- statement builder

TEST_F(DatabaseLayer, TheBuilderBindsValuesAndNeverWritesThemIntoTheText) {
    const std::string hostile = "O'Neil\"; DROP TABLE Kitra2Log; --";
    const SqlStatement insert = Builder().Insert(
        "Kitra2Log", {{"RestaurantID", hostile}, {"Contents", "x"}, {"ImportDate", "2024-01-02 03:04:05"}});
    EXPECT_EQ(insert.text, R"(INSERT INTO "Kitra2Log" ("RestaurantID","Contents","ImportDate") VALUES (?,?,?))");
    EXPECT_EQ(insert.text.find("Neil"), std::string::npos);
    ASSERT_EQ(insert.parameters.size(), 3u);
    EXPECT_EQ(insert.parameters[0], Variant(hostile));
}

TEST_F(DatabaseLayer, QuotesSemicolonsAndAccentsGoInAndComeBackUnchanged) {
    const std::string name = "Tasca d'Avó; \"Zé\"";
    const std::string contents = "linha 1\r\nlinha 2; ção ñ € 日本 '--";
    Connection().Execute(Builder().Insert(
        "Kitra2Log",
        {{"RestaurantID", name}, {"Contents", contents}, {"ImportDate", Variant(DateTime{2024, 1, 2, 3, 4, 5})}}));

    ado::Recordset rs = Connection().Query(Builder().Select(
        "Kitra2Log", {"RestaurantID", "Contents", "ImportDate"}, {{"RestaurantID", name}}));
    ASSERT_EQ(rs.RecordCount(), 1);
    EXPECT_EQ(rs["RestaurantID"], Variant(name));
    EXPECT_EQ(rs["Contents"], Variant(contents));
    EXPECT_EQ(rs["ImportDate"], Variant(DateTime{2024, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(office_->schema.TableExists("Kitra2Log"));  // nothing was dropped
}

TEST_F(DatabaseLayer, UpdateAndDeleteFindTheRowWhateverFormTheDateCameIn) {
    const DateTime moment{2011, 3, 1, 9, 5, 7};
    Connection().Execute(Builder().Insert(
        "Kitra2Log", {{"RestaurantID", "Centro"}, {"Contents", "a"}, {"ImportDate", Variant(moment)}}));

    // The general date form ("dd-mm-yyyy hh:nn:ss") names the same moment.
    EXPECT_EQ(Connection().Execute(Builder().Update(
                  "Kitra2Log", {{"Contents", "b"}},
                  {{"RestaurantID", "Centro"}, {"ImportDate", "01-03-2011 09:05:07"}})),
              1);
    ado::Recordset rs = Connection().Query(Builder().Select("Kitra2Log", {"Contents"}, {}));
    EXPECT_EQ(rs["Contents"], Variant("b"));

    EXPECT_EQ(Connection().Execute(Builder().Delete(
                  "Kitra2Log", {{"RestaurantID", "Centro"}, {"ImportDate", "2011-03-01 09:05:07"}})),
              1);
    EXPECT_EQ(Connection().Query(SqlStatement("SELECT * FROM Kitra2Log")).RecordCount(), 0);
}

TEST_F(DatabaseLayer, DeletingARowThatIsNotThereChangesNothing) {
    EXPECT_EQ(Connection().Execute(Builder().Delete("Kitra2Log", {{"RestaurantID", "Nenhum"}})), 0);
}

TEST_F(DatabaseLayer, ANullConditionMeansIsNull) {
    const SqlStatement select = Builder().Select("Kitra2Log", {}, {{"Contents", Variant::Null()}});
    EXPECT_EQ(select.text, R"(SELECT * FROM "Kitra2Log" WHERE "Contents" IS NULL)");
    EXPECT_TRUE(select.parameters.empty());
}

TEST_F(DatabaseLayer, ATextThatIsNotADateIsRefusedForADateColumn) {
    try {
        Builder().Delete("Kitra2Log", {{"ImportDate", "ontem"}});
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.Description(), "Type mismatch");
    }
}

TEST_F(DatabaseLayer, NamesThatAreNotPlainIdentifiersAreRefused) {
    EXPECT_THROW(Builder().Select("Kitra2Log; DROP TABLE x", {}, {}), Error);
    EXPECT_THROW(Builder().Select("Kitra2Log", {"Contents\""}, {}), Error);
    EXPECT_THROW(Builder().Insert("Kitra2Log", {{"1Contents", "x"}}), Error);
    EXPECT_THROW(Builder().Delete("", {}), Error);
    EXPECT_THROW(Builder().Update("Kitra2Log", {{"Contents", "x"}}, {{"Restaurant ID", "x"}}), Error);
}

// ---------------------------------------------------------------- shared connection

TEST_F(DatabaseLayer, TheConnectionRunsOneStatementAtATime) {
    EXPECT_THROW(Connection().Execute(SqlStatement("DELETE FROM Kitra2Log; DROP TABLE Kitra2Log")),
                 Error);
    EXPECT_TRUE(office_->schema.TableExists("Kitra2Log"));
}

TEST_F(DatabaseLayer, StatementsOfTheSameTextOpenAtOnceEachReadTheirOwnRows) {
    Database& database = office_->GetDatabase();
    const std::string text = "SELECT TenderID FROM tenders WHERE TenderID >= ? ORDER BY TenderID";
    for (int round = 0; round < 3; ++round) {  // the kept statement, then it again, reused
        Statement outer(database, text);
        outer.Bind({Variant(1)});
        ASSERT_TRUE(outer.Step());
        EXPECT_EQ(outer.Column(0).ToInt32(), 1);
        {
            // Same text while the first is still open: a statement of its own.
            Statement inner(database, text);
            inner.Bind({Variant(2)});
            ASSERT_TRUE(inner.Step());
            EXPECT_EQ(inner.Column(0).ToInt32(), 2);
        }
        // The outer one goes on where it was, its value still bound.
        ASSERT_TRUE(outer.Step());
        EXPECT_EQ(outer.Column(0).ToInt32(), 2);
    }
    // Given back reset and unbound: a new use starts from the first row.
    Statement again(database, text);
    again.Bind({Variant(1)});
    ASSERT_TRUE(again.Step());
    EXPECT_EQ(again.Column(0).ToInt32(), 1);
}

TEST_F(DatabaseLayer, QueriesAnswerTypedValues) {
    ado::Recordset rs = Connection().Query(SqlStatement(
        "SELECT TenderID, Description, GivesChange, MaximumAmount FROM tenders WHERE TenderID=?",
        {Variant(std::int16_t{1})}));
    ASSERT_EQ(rs.RecordCount(), 1);
    EXPECT_EQ(rs["TenderID"].GetType(), Variant::Type::Long);
    EXPECT_EQ(rs["Description"], Variant("Dinheiro"));
    EXPECT_EQ(rs["GivesChange"], Variant(true));
    EXPECT_EQ(rs["MaximumAmount"], Variant(0.0));
}

TEST_F(DatabaseLayer, AnEmptyResultIsAtItsBeginningAndItsEnd) {
    ado::Recordset rs = Connection().Query(SqlStatement("SELECT RestaurantID,ImportDate FROM Kitra2Log ORDER BY ImportDate DESC"));
    EXPECT_TRUE(rs.IsOpen());
    EXPECT_TRUE(rs.Bof());
    EXPECT_TRUE(rs.Eof());
    EXPECT_EQ(rs.Columns(), (std::vector<std::string>{"RestaurantID", "ImportDate"}));
}

// ---------------------------------------------------------------- schema catalogue

TEST_F(DatabaseLayer, TheCatalogueKnowsTablesWithoutRegardToLetterCase) {
    EXPECT_TRUE(office_->schema.TableExists("Kitra2Log"));
    EXPECT_TRUE(office_->schema.TableExists("KITRA2LOG"));
    EXPECT_TRUE(office_->schema.TableExists("tenders"));
    EXPECT_FALSE(office_->schema.TableExists("Kitra3Log"));
}

TEST_F(DatabaseLayer, TheCompositePrimaryKeyRefusesADuplicateRow) {
    const SqlStatement insert = Builder().Insert(
        "Kitra2Log", {{"RestaurantID", "Centro"}, {"Contents", "a"}, {"ImportDate", "2024-01-01 10:00:00"}});
    Connection().Execute(insert);
    EXPECT_THROW(Connection().Execute(insert), Error);
    // Same restaurant at another moment, or another restaurant at the same moment: allowed.
    Connection().Execute(Builder().Insert(
        "Kitra2Log", {{"RestaurantID", "Centro"}, {"Contents", "b"}, {"ImportDate", "2024-01-01 10:00:01"}}));
    Connection().Execute(Builder().Insert(
        "Kitra2Log", {{"RestaurantID", "Baixa"}, {"Contents", "c"}, {"ImportDate", "2024-01-01 10:00:00"}}));
    EXPECT_EQ(Connection().Query(SqlStatement("SELECT * FROM Kitra2Log")).RecordCount(), 3);
}

TEST_F(DatabaseLayer, ThePrimaryKeyIsNamedAfterTheIndexAndItsColumnsTakeNoNull) {
    Statement sql(office_->GetDatabase(), "SELECT sql FROM sqlite_schema WHERE name='Kitra2Log'");
    ASSERT_TRUE(sql.Step());
    EXPECT_NE(sql.ColumnText(0).find(R"(CONSTRAINT "Kitra2Log_IDX" PRIMARY KEY ("RestaurantID","ImportDate"))"),
              std::string::npos)
        << sql.ColumnText(0);
    EXPECT_THROW(Connection().Execute(Builder().Insert(
                     "Kitra2Log", {{"RestaurantID", Variant::Null()}, {"ImportDate", "2024-01-01 10:00:00"}})),
                 Error);
}

TEST_F(DatabaseLayer, ATextColumnHoldsNoMoreThanItsSize) {
    Connection().Execute(Builder().Insert(
        "Kitra2Log", {{"RestaurantID", std::string(25, 'x')}, {"ImportDate", "2024-01-01 10:00:00"}}));
    // 25 characters, not bytes: an accented letter counts once.
    std::string accented;
    for (int i = 0; i < 25; ++i) accented += "ç";
    Connection().Execute(Builder().Insert(
        "Kitra2Log", {{"RestaurantID", accented}, {"ImportDate", "2024-01-01 10:00:01"}}));
    EXPECT_THROW(Connection().Execute(Builder().Insert(
                     "Kitra2Log", {{"RestaurantID", std::string(26, 'x')}, {"ImportDate", "2024-01-01 10:00:02"}})),
                 Error);
}

TEST_F(DatabaseLayer, ALogRowThatCannotBeStoredIsKeptInTheLogFolder) {
    const SqlStatement row = Builder().Insert(
        "Kitra2Log", {{"RestaurantID", "Centro"}, {"ImportDate", Variant(DateTime{2024, 7, 1, 12, 0, 5})},
                      {"Contents", std::string(" - # START # \r\nRestaurantes - tudo\r\n")}});
    Connection().Execute(row);
    EXPECT_TRUE(office_->connection.UnsavedLogRows().empty());
    EXPECT_THROW(Connection().Execute(row), Error);  // the same restaurant and second again
    // Other tables' failures are the caller's to report.
    EXPECT_THROW(Connection().Execute(SqlStatement("INSERT INTO company (CompanyID) VALUES (1)")), Error);

    ASSERT_EQ(office_->connection.UnsavedLogRows().size(), 1u);
    const UnsavedLogRow& kept = office_->connection.UnsavedLogRows()[0];
    EXPECT_EQ(kept.restaurant, "Centro");
    EXPECT_NE(kept.reason.find("UNIQUE constraint failed"), std::string::npos) << kept.reason;
    const auto file = office_.DataFolder() / "logs" / "Centro20240701_120005-NAO-GUARDADO.txt";
    EXPECT_EQ(kept.file, file.string());
    std::ifstream in(file, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()),
              " - # START # \r\nRestaurantes - tudo\r\n");
}

TEST_F(DatabaseLayer, ALockHeldByAnotherProgramIsSaidSoAfterTheBusyTimeout) {
    Database other(office_.File(), Database::OpenMode::Existing);
    other.Exec("BEGIN IMMEDIATE");
    ::setenv("KITRA_HOST_BUSY_TIMEOUT_MS", "100", 1);
    Database waiting(office_.File(), Database::OpenMode::Existing);
    ::unsetenv("KITRA_HOST_BUSY_TIMEOUT_MS");
    try {
        waiting.EnsureWritable();
        ADD_FAILURE() << "the lock was not noticed";
    } catch (const Error& error) {
        EXPECT_NE(error.Description().find("está bloqueada por outro programa: esperou 0.1 s"), std::string::npos)
            << error.Description();
    }
    try {
        Statement insert(waiting, "INSERT INTO salesmen (SalesmanID) VALUES (99)");
        insert.Run();
        ADD_FAILURE() << "the lock was not noticed";
    } catch (const Error& error) {
        EXPECT_NE(error.Description().find("está bloqueada por outro programa"), std::string::npos)
            << error.Description();
    }
    other.Exec("ROLLBACK");
    waiting.EnsureWritable();
}

TEST_F(DatabaseLayer, AnExistingTableIsNotAppendedAgain) {
    EXPECT_THROW(office_->schema.AppendTable(LogLikeTable()), Error);
}

TEST_F(DatabaseLayer, OtherIndexesAreCreatedAndUniqueOnesEnforced) {
    TableDefinition table;
    table.name = "Totals";
    table.columns = {{"Code", ado_type::kVarWChar, 10}, {"Amount", ado_type::kDouble, 0},
                     {"Counted", ado_type::kInteger, 0}, {"Closed", ado_type::kBoolean, 0}};
    table.indexes = {{"Totals_Code", {"Code"}, false, true}, {"Totals_Amount", {"Amount"}, false, false}};
    office_->schema.AppendTable(table);
    Statement indexes(office_->GetDatabase(),
                      "SELECT count(*) FROM sqlite_schema WHERE type='index' AND tbl_name='Totals'");
    ASSERT_TRUE(indexes.Step());
    EXPECT_EQ(indexes.Column(0).ToInt32(), 2);
    const SqlStatement insert = Builder().Insert(
        "Totals", {{"Code", "A"}, {"Amount", 1.5}, {"Counted", std::int32_t{3}}, {"Closed", true}});
    Connection().Execute(insert);
    EXPECT_THROW(Connection().Execute(insert), Error);
    ado::Recordset rs = Connection().Query(Builder().Select("Totals", {}, {}));
    EXPECT_EQ(rs["Closed"], Variant(true));
    EXPECT_EQ(rs["Amount"], Variant(1.5));
}

TEST_F(DatabaseLayer, ABadDefinitionCreatesNothing) {
    TableDefinition twoKeys = LogLikeTable("Other");
    twoKeys.indexes.push_back({"Other_PK2", {"Contents"}, true, true});
    EXPECT_THROW(office_->schema.AppendTable(twoKeys), Error);

    TableDefinition unknownColumn = LogLikeTable("Other");
    unknownColumn.indexes = {{"Other_IDX", {"Missing"}, false, false}};
    EXPECT_THROW(office_->schema.AppendTable(unknownColumn), Error);

    TableDefinition unknownType = LogLikeTable("Other");
    unknownType.columns[1].type = 128;
    EXPECT_THROW(office_->schema.AppendTable(unknownType), Error);

    TableDefinition badIndexName = LogLikeTable("Other");
    badIndexName.indexes.push_back({"Other IDX", {"Contents"}, false, false});
    EXPECT_THROW(office_->schema.AppendTable(badIndexName), Error);

    EXPECT_FALSE(office_->schema.TableExists("Other"));
}

// ---------------------------------------------------------------- compaction

TEST_F(DatabaseLayer, CompactionShrinksTheFileAfterDeletes) {
    FillTheLog(2000);
    office_->compaction.CompactDatabase();  // everything in the file itself
    const auto full = std::filesystem::file_size(office_.File());
    ASSERT_GT(full, 8'000'000u);

    Connection().Execute(SqlStatement("DELETE FROM Kitra2Log"));
    office_->compaction.CompactDatabase();
    const auto compacted = std::filesystem::file_size(office_.File());
    EXPECT_LT(compacted, full / 10);
    EXPECT_EQ(std::filesystem::file_size(office_.File().string() + "-wal"), 0u);
    // The VACUUM built its copy in a temporary file; the connection keeps its temporary data
    // as before (in files, 1: the journals stay in memory by the library's setting).
    Statement tempStore(office_->GetDatabase(), "PRAGMA temp_store");
    ASSERT_TRUE(tempStore.Step());
    EXPECT_EQ(tempStore.Column(0).ToInt32(), 1);
    // Still the same back office.
    EXPECT_TRUE(office_->tenders.Exists(1));
    EXPECT_TRUE(office_->schema.TableExists("Kitra2Log"));
}

TEST_F(DatabaseLayer, CompactionLeavesAFileWithFewFreePagesAsItIsButEmptiesTheJournal) {
    FillTheLog(500);
    office_->compaction.CompactDatabase();
    const auto full = std::filesystem::file_size(office_.File());

    // One row in five hundred gone: a page or two free, not worth rewriting the file for.
    Connection().Execute(SqlStatement("DELETE FROM Kitra2Log WHERE RestaurantID = 'R7'"));
    office_->compaction.CompactDatabase();
    EXPECT_EQ(std::filesystem::file_size(office_.File()), full);
    EXPECT_EQ(std::filesystem::file_size(office_.File().string() + "-wal"), 0u);
    Statement free(office_->GetDatabase(), "PRAGMA freelist_count");
    ASSERT_TRUE(free.Step());
    EXPECT_GT(free.Column(0).ToInt32(), 0);
}

}  // namespace
}  // namespace kitra::backoffice
