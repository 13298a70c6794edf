// The restaurant editor's rules without a window, over a real back office: filling the controls,
// each validation rule in its order, taking the controls back, the connection test's text.
#include "settings/RestaurantEditor.h"

#include <gtest/gtest.h>

#include "settings/DialogTexts.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra {
namespace {
namespace texts = dialog_texts;

class RestaurantEditorTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Beside the new back office's warehouses 1 and 2, workstations 1 to 3 and supplier 1.
        const host::HostServices& s = office.Services();
        s.workstations->Save({7, "Posto 7"}, 7, true);
        s.suppliers->Save({2, "Frutas da Beira", "500000001"}, 2, true);
    }

    // A form that passes every rule.
    RestaurantForm Valid() {
        Restaurant record;
        record.Name = "Centro";
        record.ServerName = "127.0.0.1";
        record.ServerPort = "3307";
        record.ServerDBName = "centro";
        record.ServerUser = "kitra";
        record.DefaultSupplierID = 1;
        record.TransSerial = "EXT";
        record.ImportDateEntities = "2011-03-01 09:05:07";
        record.ImportDateTransactions = "2011-03-02 10:00:00";
        return editor.Show(record, now);
    }
    std::string Text(long id) { return office.Services().application->Text(id); }

    testing::TestBackOffice office;
    RestaurantEditor editor{office.Services()};
    const DateTime now{2026, 11, 22, 18, 30, 15};
};

TEST_F(RestaurantEditorTest, TheListsComeFromTheHost) {
    EXPECT_EQ(editor.SeriesList(), (std::vector<std::string>{"A", "EXT"}));
    EXPECT_EQ(editor.WarehouseList(),
              (std::vector<ListEntry>{{"1", "Armazém principal"}, {"2", "Armazém de quebras"}}));
    EXPECT_EQ(editor.WorkstationList(),
              (std::vector<ListEntry>{{"1", "Terminal 1"}, {"2", "Terminal 2"}, {"3", "Terminal 3"},
                                      {"7", "Terminal 7"}}));
    EXPECT_EQ(editor.SupplierName(2), "Frutas da Beira");
    EXPECT_EQ(editor.SupplierName(9), "");
    ASSERT_EQ(editor.SearchSuppliers("beira").size(), 1u);
    EXPECT_EQ(editor.SearchSuppliers("BEIRA")[0].SupplierID, 2);
    EXPECT_EQ(editor.SearchSuppliers("").size(), 2u);
}

TEST_F(RestaurantEditorTest, ANewRestaurantShowsPort3306AndNowInBothPickers) {
    const RestaurantForm form = editor.Show(Restaurant{}, now);
    EXPECT_EQ(form.txtServerPort, "3306");
    for (const DateTime& date : {form.dtpEntityImport, form.dtpTransactionsImport}) {
        EXPECT_EQ(date, (DateTime{2026, 11, 22, 0, 0, 0}));
    }
    for (const DateTime& time : {form.dtpEntityImportTime, form.dtpTransactionsImportTime}) {
        EXPECT_EQ(time.hour, 18);
        EXPECT_EQ(time.minute, 30);
        EXPECT_EQ(time.second, 15);
    }
    EXPECT_EQ(form.cboTransSerial, "");
    EXPECT_FALSE(form.cboDefaultWarehouseID);
    EXPECT_FALSE(form.cboWorkstation);
}

TEST_F(RestaurantEditorTest, ShowingSelectsWhatTheHostListsAndNothingElse) {
    Restaurant record;
    record.TransSerial = "ext";  // letter case aside
    record.DefaultWarehouseID = 2;
    record.WasteWarehouseID = 5;  // not a host warehouse
    record.WorkstationID = 7;
    record.ServerPort = "";
    const RestaurantForm form = editor.Show(record, now);
    EXPECT_EQ(form.cboTransSerial, "EXT");
    EXPECT_EQ(form.cboDefaultWarehouseID, std::optional<std::int16_t>(2));
    EXPECT_FALSE(form.cboWasteWarehouseID);
    EXPECT_EQ(form.cboWorkstation, std::optional<std::int16_t>(7));
    record.TransSerial = "Z";
    EXPECT_EQ(editor.Show(record, now).cboTransSerial, "");
}

TEST_F(RestaurantEditorTest, AStoredDateThatIsNotADateShowsNowAndIsSavedInTheIsoForm) {
    Restaurant record;
    record.ImportDateEntities = "";
    record.ImportDateTransactions = "ontem";
    RestaurantForm form = Valid();
    const RestaurantForm shown = editor.Show(record, now);
    form.dtpEntityImport = shown.dtpEntityImport;
    form.dtpEntityImportTime = shown.dtpEntityImportTime;
    form.dtpTransactionsImport = shown.dtpTransactionsImport;
    form.dtpTransactionsImportTime = shown.dtpTransactionsImportTime;
    Restaurant taken;
    ASSERT_TRUE(editor.Accept(form, taken));
    EXPECT_EQ(taken.ImportDateEntities, "2026-11-22 18:30:15");
    EXPECT_EQ(taken.ImportDateTransactions, "2026-11-22 18:30:15");
}

TEST_F(RestaurantEditorTest, AValidFormGoesIntoTheRecordWhole) {
    RestaurantForm form = Valid();
    form.txtServerPwd = "";  // the password is not required
    form.txtItemIDPrefix = "C";
    form.cboDefaultWarehouseID = 1;
    form.cboWasteWarehouseID = 2;
    form.cboWorkstation = 7;
    form.stockManagement = true;
    Restaurant taken;
    ASSERT_TRUE(editor.Accept(form, taken));
    EXPECT_TRUE(office.boxes.shown.empty());
    EXPECT_EQ(taken.Name, "Centro");
    EXPECT_EQ(taken.ServerPort, "3307");
    EXPECT_EQ(taken.ServerPassword, "");
    EXPECT_EQ(taken.ItemIDPrefix, "C");
    EXPECT_EQ(taken.TransSerial, "EXT");
    EXPECT_EQ(taken.DefaultWarehouseID, 1);
    EXPECT_EQ(taken.WasteWarehouseID, 2);
    EXPECT_EQ(taken.WorkstationID, 7);
    EXPECT_TRUE(taken.StockManagement);
    EXPECT_EQ(taken.DefaultSupplierID, 1);
    EXPECT_EQ(taken.ImportDateEntities, "2011-03-01 09:05:07");
    EXPECT_EQ(taken.ImportDateTransactions, "2011-03-02 10:00:00");
}

// Each rule, in order: the form breaks that rule (and every later one), and its message shows.
TEST_F(RestaurantEditorTest, EachRuleInOrderWithItsMessage) {
    struct Case {
        void (*breakIt)(RestaurantForm&);
        std::string message;
    };
    const std::vector<Case> cases = {
        {[](RestaurantForm& f) { f.txtName = "   "; }, Text(texts::kNameMissing)},
        {[](RestaurantForm& f) { f.txtServerName = ""; }, texts::kServerNameMissing},
        {[](RestaurantForm& f) { f.txtServerPort = ""; }, texts::kServerPortMissing},
        {[](RestaurantForm& f) { f.txtServerDB = ""; }, texts::kDatabaseMissing},
        {[](RestaurantForm& f) { f.txtServerUser = ""; }, texts::kUserMissing},
        {[](RestaurantForm& f) { f.numDefaultSupplierID = 0; }, Text(texts::kSupplierMissing)},
        {[](RestaurantForm& f) { f.cboTransSerial = ""; }, Text(texts::kSeriesMissing)},
        {[](RestaurantForm& f) { f.dtpEntityImport.day = 31; f.dtpEntityImport.month = 2; },
         texts::kEntityDateWrong},
        {[](RestaurantForm& f) { f.dtpTransactionsImportTime.hour = 25; }, texts::kTransactionsDateWrong},
    };
    // Break the rules from the last to the first: each time the newly broken one is reported.
    RestaurantForm form = Valid();
    for (auto c = cases.rbegin(); c != cases.rend(); ++c) {
        c->breakIt(form);
        office.boxes.shown.clear();
        Restaurant untouched;
        untouched.Name = "antes";
        EXPECT_FALSE(editor.Accept(form, untouched));
        ASSERT_EQ(office.boxes.shown.size(), 1u);
        EXPECT_EQ(office.boxes.shown[0].text, c->message);
        EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Information);
        EXPECT_EQ(office.boxes.shown[0].title, Text(texts::kFormTitle));
        EXPECT_EQ(untouched.Name, "antes");  // nothing written
    }
}

TEST_F(RestaurantEditorTest, OnlyTheNameIsTrimmed) {
    RestaurantForm form = Valid();
    form.txtServerName = "   ";
    EXPECT_EQ(editor.FirstFailure(form), std::nullopt);
    form.txtName = " \t ";
    EXPECT_EQ(editor.FirstFailure(form), Text(texts::kNameMissing));
}

TEST_F(RestaurantEditorTest, ANameLongerThanTheLogTableHoldsIsRefused) {
    RestaurantForm form = Valid();
    form.txtName = std::string(25, 'a');
    EXPECT_EQ(editor.FirstFailure(form), std::nullopt);
    form.txtName = "Restaurante Praia da Vitória";  // 28 characters (more bytes)
    const auto failure = editor.FirstFailure(form);
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->find("25 caracteres"), std::string::npos);
    form.txtName = "Praia da Vitória à Noite!";  // 25 characters, 27 bytes
    EXPECT_EQ(editor.FirstFailure(form), std::nullopt);
}

TEST_F(RestaurantEditorTest, SupplierZeroIsRefusedAnEmptyPasswordIsNot) {
    RestaurantForm form = Valid();
    form.txtServerPwd = "";
    EXPECT_EQ(editor.FirstFailure(form), std::nullopt);
    form.numDefaultSupplierID = 0;
    EXPECT_EQ(editor.FirstFailure(form), Text(texts::kSupplierMissing));
}

TEST_F(RestaurantEditorTest, TheTestConnectionTextIsBuiltAsTheEditorBuildsIt) {
    RestaurantForm form = Valid();
    form.txtServerPwd = "segredo";
    EXPECT_EQ(RestaurantEditor::TestConnectionText(form),
              "Driver={MySQL ODBC 5.1 Driver};Server=127.0.0.1;Database=centro; User=kitra;"
              "Password=segredo;Option=3;port=3307");
}

TEST_F(RestaurantEditorTest, AFailedConnectionTestSaysWhy) {
    RestaurantForm form = Valid();
    form.txtServerPort = "1";  // nothing listens there
    EXPECT_FALSE(editor.TestConnection(form));
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text.rfind("Erro ao estabelecer a ligação: ", 0), 0u);
    EXPECT_GT(office.boxes.shown[0].text.size(), std::string("Erro ao estabelecer a ligação: ").size());
    EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Information);
    EXPECT_EQ(office.boxes.shown[0].title, "Error");
}

}  // namespace
}  // namespace kitra
