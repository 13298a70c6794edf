// The import log list's and contents dialog's rules, without a window: a grid in memory that
// keeps what the rules did to it, over a real back office.
#include "log/KitraLogViewer.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/ScreenUnits.h"
#include "log/KitraLogContents.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra {
namespace {

class MemoryLogGrid final : public IKitraLogGrid {
public:
    void ClearRows() override { rows.clear(); }
    void AddRow(const std::string& restaurantId, const std::string& importDate) override {
        rows.push_back({restaurantId, importDate});
    }
    int RowCount() const override { return static_cast<int>(rows.size()); }
    std::string Cell(int row, int column) const override { return rows.at(row).at(column); }
    std::vector<int> SelectedRows() const override { return selected; }
    void RemoveRow(int row) override {
        removed.push_back(row);
        rows.erase(rows.begin() + row);
    }

    std::vector<std::vector<std::string>> rows;
    std::vector<int> selected;
    std::vector<int> removed;  // in the order the rules removed them
};

class KitraLogViewerTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(log.CheckOrCreateKitraLogTable()); }

    void Save(const std::string& restaurant, DateTime when, const std::string& contents) {
        KitraLog record;
        record.RestaurantID = restaurant;
        record.ImportDate = when;
        record.Contents = contents;
        ASSERT_TRUE(log.Save(record));
    }
    // Five imports, newest last.
    void SaveFive() {
        for (int day = 1; day <= 5; ++day) {
            Save(day % 2 ? "Centro" : "Praia", DateTime{2011, 3, day, 9, 5, 7},
                 "dia " + std::to_string(day));
        }
    }
    long TableRows() {
        return office.Services()
            .connection->Query(host::SqlStatement("SELECT * FROM Kitra2Log"))
            .RecordCount();
    }
    void DropTable() {
        office.Services().connection->Execute(host::SqlStatement("DROP TABLE Kitra2Log"));
    }

    testing::TestBackOffice office;
    DSOKitraLog log{office.Services()};
    MemoryLogGrid grid;
    KitraLogViewer viewer{office.Services(), grid};
};

TEST_F(KitraLogViewerTest, AnEmptyTableFillsNoRow) {
    grid.rows = {{"velha", "linha"}};
    viewer.Load();
    EXPECT_TRUE(grid.rows.empty());
}

TEST_F(KitraLogViewerTest, FillsNewestFirstWithTheDateInTheHostsGeneralForm) {
    SaveFive();
    viewer.Load();
    ASSERT_EQ(grid.rows.size(), 5u);
    EXPECT_EQ(grid.rows[0], (std::vector<std::string>{"Centro", "05-03-2011 09:05:07"}));
    EXPECT_EQ(grid.rows[1], (std::vector<std::string>{"Praia", "04-03-2011 09:05:07"}));
    EXPECT_EQ(grid.rows[4], (std::vector<std::string>{"Centro", "01-03-2011 09:05:07"}));
}

TEST_F(KitraLogViewerTest, TheTitleIsTheHostsText) {
    EXPECT_EQ(viewer.Title(), office.Services().application->Text(kLogListTitleText));
    EXPECT_FALSE(viewer.Title().empty());
}

TEST_F(KitraLogViewerTest, OpeningARowReadsItsLogWithContents) {
    SaveFive();
    viewer.Load();
    const auto record = viewer.OpenRow(1);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->RestaurantID, "Praia");
    EXPECT_EQ(record->ImportDate, (DateTime{2011, 3, 4, 9, 5, 7}));
    EXPECT_EQ(record->Contents, "dia 4");
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(KitraLogViewerTest, OnlyDataRowsOpen) {
    SaveFive();
    viewer.Load();
    EXPECT_FALSE(viewer.OpenRow(-1));  // the header row
    EXPECT_FALSE(viewer.OpenRow(5));   // below the last row
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(KitraLogViewerTest, ARowNoLongerInTheTableOpensNothingAndSaysNothing) {
    SaveFive();
    viewer.Load();
    ASSERT_TRUE(log.Delete("Centro", DateTime{2011, 3, 5, 9, 5, 7}));
    EXPECT_FALSE(viewer.OpenRow(0));
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(KitraLogViewerTest, ABackOfficeThatNeverImportedShowsAnEmptyList) {
    DropTable();
    grid.rows = {{"velha", "linha"}};
    viewer.Load();
    EXPECT_TRUE(grid.rows.empty());
    EXPECT_TRUE(office.boxes.shown.empty());
    EXPECT_EQ(TableRows(), 0);  // the table is there now
}

TEST_F(KitraLogViewerTest, AFailedReadShowsTheWarningAndOpensNothing) {
    SaveFive();
    viewer.Load();
    DropTable();
    EXPECT_FALSE(viewer.OpenRow(0));
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    const auto& box = office.boxes.shown[0];
    EXPECT_EQ(box.text.rfind("Ocorreu uma excepção na leitura do log\r\n\r\n", 0), 0u) << box.text;
    EXPECT_GT(box.text.size(), std::string("Ocorreu uma excepção na leitura do log\r\n\r\n").size());
    EXPECT_EQ(box.style, host::MessageStyle::Exclamation);
    EXPECT_EQ(box.buttons, host::MessageButtons::Ok);
    EXPECT_EQ(box.title, "Erro");
}

TEST_F(KitraLogViewerTest, DeletingWithNothingSelectedAsksNothing) {
    SaveFive();
    viewer.Load();
    viewer.DeleteSelected();
    EXPECT_TRUE(office.boxes.shown.empty());
    EXPECT_EQ(grid.rows.size(), 5u);
    EXPECT_FALSE(viewer.Changed());
}

TEST_F(KitraLogViewerTest, AnsweringNoDeletesNothing) {
    SaveFive();
    viewer.Load();
    grid.selected = {0, 2};
    office.boxes.answers = {host::MessageAnswer::No};
    viewer.DeleteSelected();
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(grid.rows.size(), 5u);
    EXPECT_EQ(TableRows(), 5);
    EXPECT_FALSE(viewer.Changed());
}

TEST_F(KitraLogViewerTest, ThreeSelectedRowsAreDeletedLastFirstAfterTheQuestion) {
    SaveFive();
    viewer.Load();
    grid.selected = {0, 2, 3};
    office.boxes.answers = {host::MessageAnswer::Yes};
    viewer.DeleteSelected();

    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text, "Deseja mesmo apagar estes registos?");
    EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Question);
    EXPECT_EQ(office.boxes.shown[0].buttons, host::MessageButtons::YesNo);
    EXPECT_EQ(office.boxes.shown[0].title, viewer.Title());

    EXPECT_EQ(grid.removed, (std::vector<int>{3, 2, 0}));
    ASSERT_EQ(grid.rows.size(), 2u);
    EXPECT_EQ(grid.rows[0][1], "04-03-2011 09:05:07");
    EXPECT_EQ(grid.rows[1][1], "01-03-2011 09:05:07");
    EXPECT_TRUE(viewer.Changed());

    // Exactly those three left the table: loading again shows the two that stay.
    MemoryLogGrid again;
    KitraLogViewer(office.Services(), again).Load();
    EXPECT_EQ(again.rows, grid.rows);
}

TEST_F(KitraLogViewerTest, AFailedDeleteStillRemovesTheRowFromTheGrid) {
    SaveFive();
    viewer.Load();
    DropTable();
    grid.selected = {1};
    office.boxes.answers = {host::MessageAnswer::Yes};
    viewer.DeleteSelected();
    EXPECT_EQ(grid.removed, (std::vector<int>{1}));
    EXPECT_EQ(grid.rows.size(), 4u);
    EXPECT_TRUE(viewer.Changed());
}

TEST_F(KitraLogViewerTest, ARowWhoseDeleteFailsShowsAgainOnTheNextLoad) {
    SaveFive();
    viewer.Load();
    // The moment in the grid no longer names the row: the delete changes nothing in the table.
    grid.rows[0][1] = "05-03-2011 09:05:08";
    grid.selected = {0};
    office.boxes.answers = {host::MessageAnswer::Yes};
    viewer.DeleteSelected();
    EXPECT_EQ(grid.rows.size(), 4u);
    viewer.Load();
    EXPECT_EQ(grid.rows.size(), 5u);
}

TEST(KitraLogContents, EveryLineFeedBecomesACarriageReturnAndALineFeed) {
    EXPECT_EQ(LogContentsText("a\nb\n\nc"), "a\r\nb\r\n\r\nc");
    EXPECT_EQ(LogContentsText("\nx"), "\r\nx");
    // Whatever precedes it: a line feed already after a carriage return gets one more.
    EXPECT_EQ(LogContentsText("a\r\nb"), "a\r\r\nb");
    EXPECT_EQ(LogContentsText("sem quebras"), "sem quebras");
    EXPECT_EQ(LogContentsText(""), "");
}

TEST(KitraLogContents, TheCaptionIsTheTitleTheRestaurantAndTheMoment) {
    testing::TestBackOffice office;
    KitraLog record;
    record.RestaurantID = "Praia";
    record.ImportDate = DateTime{2011, 3, 4, 9, 5, 7};
    EXPECT_EQ(LogContentsCaption(office.Services(), record),
              office.Services().application->Text(kLogContentsTitleText) + "Praia (04-03-2011 09:05:07)");
}

TEST(LogGridLayout, ColumnWidthsInTwipsBecomePixelsAtTheScreensResolution) {
    EXPECT_EQ(KitraLogViewer::kColumnWidthsTwips, (std::array<int, 3>{3000, 3700, 285}));
    EXPECT_EQ(TwipsToPixels(3000, 96), 200);
    EXPECT_EQ(TwipsToPixels(3700, 96), 247);  // 246.67, to the nearest pixel
    EXPECT_EQ(TwipsToPixels(285, 96), 19);
    EXPECT_EQ(TwipsToPixels(3000, 120), 250);
    EXPECT_EQ(PointsToPixels(150, 96), 200);
    EXPECT_EQ(std::string(KitraLogViewer::kHeadings[0]), "Restaurante");
    EXPECT_EQ(std::string(KitraLogViewer::kHeadings[1]), "Data Importação");
}

}  // namespace
}  // namespace kitra
