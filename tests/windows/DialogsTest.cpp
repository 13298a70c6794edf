// The four Windows dialogs driven as a user drives them: the test's thread shows a dialog
// modally, as the host does, while a user at the screen (a second thread) finds its controls,
// types, picks, double-clicks and clicks; the messages are captured by the host's message-box
// service and the settings and the log table are read back afterwards.
#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cstdlib>

#include "log/KitraLogViewer.h"
#include "log/win32/ControlIds.h"
#include "log/win32/frmKitraLog.h"
#include "settings/DialogTexts.h"
#include "settings/win32/ControlIds.h"
#include "settings/win32/frmAddRestaurant.h"
#include "settings/win32/frmSettings.h"
#include "tests/hostsupport/TestBackOffice.h"
#include "tests/windows/UserAtTheScreen.h"

namespace kitra::testing {
namespace {
namespace texts = dialog_texts;
using namespace kitra::win32;

const std::string kValidXml =
    "<KitraConnectorSetting InvoiceTransDocument=\"VB\" CreditTransDocument=\"FAC\" "
    "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" CashWithdrawalTransDocument=\"SC\" "
    "CustomerPaymentTransDocument=\"PCL\" CustomerPaymentAccountDocument=\"ADC\" "
    "SelfConsumptionTransDocument=\"AC\" DefaultTenderPayment=\"1\" DefaultTaxableGroup=\"1\">"
    "<Restaurants><Restaurant Name=\"Centro\" ServerName=\"127.0.0.1\" ServerPort=\"3306\" "
    "ServerDBName=\"centro\" ServerUser=\"u\" ServerPassword=\"p\" TransSerial=\"EXT\" "
    "DefaultSupplierID=\"1\" ImportDateEntities=\"2011-03-02 10:00:00\" "
    "ImportDateTransactions=\"2011-03-02 10:00:00\"/></Restaurants>"
    "<TenderEquivalence><Tender POSTenderID=\"2\" KitraTenderID=\"MB\"/></TenderEquivalence>"
    "<TaxableGroupEquivalence><TaxableGroup TaxableGroupID=\"1\" KitraVAT=\"23\"/>"
    "</TaxableGroupEquivalence></KitraConnectorSetting>";

class WindowsDialogsTest : public ::testing::Test {
protected:
    const host::HostServices& Services() { return office.Services(); }
    std::string HostText(long id) { return Services().application->Text(id); }
    std::vector<std::string> Shown() {
        std::vector<std::string> shown;
        for (const auto& box : office.boxes.shown) shown.push_back(box.text);
        return shown;
    }
    KitraConnectorSetting Setting(const std::string& xml) {
        KitraConnectorSetting setting(*Services().utility);
        setting.FromXML(xml);
        return setting;
    }
    std::string EditorTitle() { return HostText(texts::kRestaurantTitle); }
    std::string SettingsTitle() { return HostText(texts::kSettingsTitle); }

    // Every field the restaurant editor requires, typed and picked.
    static void FillRequired(UserAtTheScreen& user, HWND editor, const std::string& name) {
        user.Retype(editor, IDC_txtName, name);
        user.Retype(editor, IDC_txtServerName, "127.0.0.1");
        user.Retype(editor, IDC_txtServerDB, "praia");
        user.Retype(editor, IDC_txtServerUser, "kitra");
        user.Retype(editor, IDC_numDefaultSupplierID, "1");
        if (!user.Pick(editor, IDC_cboTransSerial, "EXT")) throw std::runtime_error("no series EXT");
    }

    TestBackOffice office;
};

// frmAddRestaurant

TEST_F(WindowsDialogsTest, ANewRestaurantShowsPort3306TodayAndNowAndTheHostsLists) {
    std::string port, series;
    DateTime entities, entitiesTime, transactions;
    int workstations = 0, warehouses = 0;
    SYSTEMTIME before{};
    ::GetLocalTime(&before);
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND editor = u.WaitForDialog(EditorTitle());
        port = u.Text(editor, IDC_txtServerPort);
        series = u.Selected(editor, IDC_cboTransSerial);
        entities = u.Picker(editor, IDC_dtpEntityImport);
        entitiesTime = u.Picker(editor, IDC_dtpEntityImportTime);
        transactions = u.Picker(editor, IDC_dtpTransactionsImport);
        workstations = u.EntryCount(editor, IDC_cboWorkstation);
        warehouses = u.EntryCount(editor, IDC_cboWasteWarehouseID);
        u.Click(editor, IDC_cmdCancel);
    });
    Restaurant record;
    frmAddRestaurant dialog(Services());
    EXPECT_FALSE(dialog.Edit(record, nullptr));
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(port, "3306");
    EXPECT_EQ(series, "");
    EXPECT_EQ(entities.year, before.wYear);
    EXPECT_EQ(entities.month, before.wMonth);
    EXPECT_EQ(entities.day, before.wDay);
    EXPECT_EQ(transactions.day, before.wDay);
    EXPECT_LE(std::abs((entitiesTime.hour * 3600 + entitiesTime.minute * 60 + entitiesTime.second) -
                       (before.wHour * 3600 + before.wMinute * 60 + before.wSecond)), 5);
    EXPECT_EQ(workstations, 3);
    EXPECT_EQ(warehouses, 2);
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(WindowsDialogsTest, TheEditorRefusesEachMissingFieldInOrderWithItsMessage) {
    std::vector<std::size_t> boxesAfterEachOk;
    bool openAfterRefusals = false;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND editor = u.WaitForDialog(EditorTitle());
        const auto ok = [&] {
            u.Click(editor, IDC_cmdOk);
            boxesAfterEachOk.push_back(office.boxes.shown.size());
        };
        u.Retype(editor, IDC_txtName, "   ");
        ok();  // a name of blanks
        u.Retype(editor, IDC_txtName, "Praça");
        u.Retype(editor, IDC_txtServerName, "   ");  // blanks are a server name
        u.Retype(editor, IDC_txtServerPort, "");
        ok();
        u.Retype(editor, IDC_txtServerPort, "3307");
        ok();  // database
        u.Retype(editor, IDC_txtServerDB, "praca");
        ok();  // user
        u.Retype(editor, IDC_txtServerUser, "kitra");
        u.Retype(editor, IDC_numDefaultSupplierID, "0");
        ok();  // supplier 0
        u.Retype(editor, IDC_numDefaultSupplierID, "1");
        ok();  // series
        openAfterRefusals = u.HasDialog(EditorTitle());
        u.Pick(editor, IDC_cboTransSerial, "EXT");
        u.Pick(editor, IDC_cboWorkstation, "2");
        u.Pick(editor, IDC_cboDefaultWarehouseID, "1");
        u.Pick(editor, IDC_cboWasteWarehouseID, "2");
        u.SetChecked(editor, IDC_chkStockManagement, true);
        u.Retype(editor, IDC_txtItemIDPrefix, "PR-");
        u.SetPicker(editor, IDC_dtpEntityImport, {2012, 5, 6, 0, 0, 0});
        u.SetPicker(editor, IDC_dtpEntityImportTime, {2012, 5, 6, 7, 8, 9});
        u.Click(editor, IDC_cmdOk);  // an empty password is accepted
        u.WaitUntilClosed(editor);
    });
    Restaurant record;
    frmAddRestaurant dialog(Services());
    EXPECT_TRUE(dialog.Edit(record, nullptr));
    ASSERT_EQ(user.Failure(), "");
    const std::vector<std::string> expected{
        HostText(texts::kNameMissing),    texts::kServerPortMissing,
        texts::kDatabaseMissing,          texts::kUserMissing,
        HostText(texts::kSupplierMissing), HostText(texts::kSeriesMissing)};
    EXPECT_EQ(Shown(), expected);
    EXPECT_EQ(boxesAfterEachOk, (std::vector<std::size_t>{1, 2, 3, 4, 5, 6}));
    EXPECT_TRUE(openAfterRefusals);
    for (const auto& box : office.boxes.shown) {
        EXPECT_EQ(box.style, host::MessageStyle::Information);
        EXPECT_EQ(box.title, HostText(texts::kFormTitle));
    }
    EXPECT_EQ(record.Name, "Praça");
    EXPECT_EQ(record.ServerName, "   ");
    EXPECT_EQ(record.ServerPort, "3307");
    EXPECT_EQ(record.ServerDBName, "praca");
    EXPECT_EQ(record.ServerUser, "kitra");
    EXPECT_EQ(record.ServerPassword, "");
    EXPECT_EQ(record.TransSerial, "EXT");
    EXPECT_EQ(record.WorkstationID, 2);
    EXPECT_EQ(record.DefaultWarehouseID, 1);
    EXPECT_EQ(record.WasteWarehouseID, 2);
    EXPECT_TRUE(record.StockManagement);
    EXPECT_EQ(record.ItemIDPrefix, "PR-");
    EXPECT_EQ(record.DefaultSupplierID, 1.0);
    EXPECT_EQ(record.ImportDateEntities, "2012-05-06 07:08:09");
}

TEST_F(WindowsDialogsTest, CancelLeavesTheRecordAsItWas) {
    Restaurant record;
    record.Name = "Centro";
    record.ServerName = "10.0.0.1";
    record.TransSerial = "ext";  // found whatever the letter case
    record.ImportDateEntities = "2011-03-02 10:00:00";
    const Restaurant before = record;
    std::string shownName, shownSeries, dateText, timeText;
    DateTime shownDate;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND editor = u.WaitForDialog(EditorTitle());
        shownName = u.Text(editor, IDC_txtName);
        shownSeries = u.Selected(editor, IDC_cboTransSerial);
        shownDate = u.Picker(editor, IDC_dtpEntityImport);
        dateText = u.Text(editor, IDC_dtpEntityImport);
        timeText = u.Text(editor, IDC_dtpEntityImportTime);
        u.Retype(editor, IDC_txtName, "Outro");
        u.Click(editor, IDC_cmdCancel);
    });
    frmAddRestaurant dialog(Services());
    EXPECT_FALSE(dialog.Edit(record, nullptr));
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(shownName, "Centro");
    EXPECT_EQ(shownSeries, "EXT");
    EXPECT_EQ((std::vector<int>{shownDate.year, shownDate.month, shownDate.day}), (std::vector<int>{2011, 3, 2}));
    // As the connector writes moments everywhere, whatever the machine's regional format.
    EXPECT_EQ(dateText, "02-03-2011");
    EXPECT_EQ(timeText, "10:00:00");
    EXPECT_EQ(record, before);
}

TEST_F(WindowsDialogsTest, EnterIsSwallowedInTheNameAndMovesOnFromThePrefix) {
    bool openAfterEnter = false;
    HWND focusAfterPrefix = nullptr, warehouse = nullptr;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND editor = u.WaitForDialog(EditorTitle());
        FillRequired(u, editor, "Praia");
        u.PressKey(::GetDlgItem(editor, IDC_txtName), VK_RETURN);
        openAfterEnter = u.HasDialog(EditorTitle());
        u.PressKey(::GetDlgItem(editor, IDC_txtItemIDPrefix), VK_RETURN);
        focusAfterPrefix = u.Focus();
        warehouse = ::GetDlgItem(editor, IDC_cboDefaultWarehouseID);
        u.Click(editor, IDC_cmdCancel);
    });
    Restaurant record;
    frmAddRestaurant dialog(Services());
    EXPECT_FALSE(dialog.Edit(record, nullptr));  // Enter never pressed OK
    ASSERT_EQ(user.Failure(), "");
    EXPECT_TRUE(openAfterEnter);
    EXPECT_EQ(focusAfterPrefix, warehouse);
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(WindowsDialogsTest, TheSupplierSearchFindsByNameAndShowsTheChosenOnesName) {
    int found = -1;
    std::string number, name;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND editor = u.WaitForDialog(EditorTitle());
        u.ClickToOpen(editor, IDC_cmdSearchSupplier);
        HWND search = u.WaitForDialog(texts::restaurant_captions::kSuppliers);
        u.Retype(search, IDC_txtSearch, "alimentar");
        found = static_cast<int>(::SendMessageW(::GetDlgItem(search, IDC_lstSuppliers), LB_GETCOUNT, 0, 0));
        u.Click(search, IDC_cmdOk);
        u.WaitUntilClosed(search);
        u.Settle(editor);  // the editor takes the choice once the search's modal loop has ended
        number = u.Text(editor, IDC_numDefaultSupplierID);
        name = u.Text(editor, IDC_stfDefaultSupplierID);
        u.Click(editor, IDC_cmdCancel);
    });
    Restaurant record;
    frmAddRestaurant dialog(Services());
    dialog.Edit(record, nullptr);
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(found, 1);
    EXPECT_EQ(number, "1");
    EXPECT_EQ(name, Services().suppliers->Get(1)->OrganizationName);
}

// frmSettings

TEST_F(WindowsDialogsTest, TheSettingsShowTheStoredChoicesAndARestaurantAddedIsSaved) {
    KitraConnectorSetting setting = Setting(kValidXml);
    std::vector<std::string> documents;
    std::vector<std::string> firstRows;
    int restaurantRows = -1;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND dialog = u.WaitForDialog(SettingsTitle());
        for (int id = IDC_cboInvoiceTransDocument; id <= IDC_cboCustomerPaymentAccountDocument; ++id) {
            documents.push_back(u.Selected(dialog, id));
        }
        documents.push_back(u.Selected(dialog, IDC_cboDefaultTenderPayment));
        documents.push_back(u.Selected(dialog, IDC_cboDefaultTaxableGroup));
        firstRows = {u.Cell(dialog, IDC_vsfPayments, 0, 0), u.Cell(dialog, IDC_vsfPayments, 0, 1),
                     u.Cell(dialog, IDC_vsfTaxableGroups, 0, 0), u.Cell(dialog, IDC_vsfTaxableGroups, 0, 1),
                     u.Cell(dialog, IDC_vsfRestaurant, 0, 0), u.Cell(dialog, IDC_vsfRestaurant, 0, 1)};
        u.ClickToOpen(dialog, IDC_btnAddRestaurant);
        HWND editor = u.WaitForDialog(EditorTitle());
        FillRequired(u, editor, "Praça da Vitória");
        u.Click(editor, IDC_cmdOk);
        u.WaitUntilClosed(editor);
        u.Settle(dialog);
        restaurantRows = u.RowCount(dialog, IDC_vsfRestaurant);
        firstRows.push_back(u.Cell(dialog, IDC_vsfRestaurant, 1, 0));
        u.Click(dialog, IDC_cmdOk);
        u.WaitUntilClosed(dialog);
    });
    frmSettings dialog(Services());
    EXPECT_TRUE(dialog.Edit(setting, nullptr));
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(documents, (std::vector<std::string>{"VB", "FAC", "GT", "EC", "SC", "PCL", "ADC", "1", "1"}));
    EXPECT_EQ(firstRows, (std::vector<std::string>{"MB", "2", "23,00", "1", "Centro", "127.0.0.1",
                                                   "Praça da Vitória"}));
    EXPECT_EQ(restaurantRows, 2);
    ASSERT_EQ(setting.Restaurants.Count(), 2);
    ASSERT_TRUE(setting.Restaurants.Exists("Praça da Vitória"));
    const Restaurant& added = setting.Restaurants.Item("Praça da Vitória");
    EXPECT_EQ(added.ServerDBName, "praia");
    EXPECT_EQ(added.TransSerial, "EXT");
    EXPECT_TRUE(office.boxes.shown.empty());
}

TEST_F(WindowsDialogsTest, EditingARestaurantByDoubleClickRefreshesItsRow) {
    KitraConnectorSetting setting = Setting(kValidXml);
    std::string shownName, server;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND dialog = u.WaitForDialog(SettingsTitle());
        u.SelectRows(dialog, IDC_vsfRestaurant, {0});
        u.DoubleClickCellToOpen(dialog, IDC_vsfRestaurant, 0, 0);
        HWND editor = u.WaitForDialog(EditorTitle());
        shownName = u.Text(editor, IDC_txtName);
        u.Retype(editor, IDC_txtServerName, "10.1.2.3");
        u.Click(editor, IDC_cmdOk);
        u.WaitUntilClosed(editor);
        u.Settle(dialog);
        server = u.Cell(dialog, IDC_vsfRestaurant, 0, 1);
        u.Click(dialog, IDC_cmdOk);
    });
    frmSettings dialog(Services());
    EXPECT_TRUE(dialog.Edit(setting, nullptr));
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(shownName, "Centro");
    EXPECT_EQ(server, "10.1.2.3");
    ASSERT_TRUE(setting.Restaurants.Exists("Centro"));
    EXPECT_EQ(setting.Restaurants.Item("Centro").ServerName, "10.1.2.3");
}

TEST_F(WindowsDialogsTest, CancelChangesNothingInTheSettings) {
    KitraConnectorSetting setting = Setting(kValidXml);
    const std::string before = setting.ToXML();
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND dialog = u.WaitForDialog(SettingsTitle());
        u.Pick(dialog, IDC_cboInvoiceTransDocument, "FAC");
        u.SelectRows(dialog, IDC_vsfRestaurant, {0});
        u.Click(dialog, IDC_btnDeleteRestaurant);
        u.Click(dialog, IDC_btnAddPayment);
        u.Click(dialog, IDC_cmdCancel);
    });
    frmSettings dialog(Services());
    EXPECT_FALSE(dialog.Edit(setting, nullptr));
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(setting.ToXML(), before);
}

TEST_F(WindowsDialogsTest, TheGridsAreEditedInPlaceThroughTheRules) {
    KitraConnectorSetting setting = Setting(kValidXml);
    std::vector<std::string> seen;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND dialog = u.WaitForDialog(SettingsTitle());
        // A VAT typed with a point and a letter: the point becomes the host's comma, the letter
        // is dropped, and the cell shows the rate as "##0.00".
        u.Click(dialog, IDC_btnAddTaxableGroup);
        u.DoubleClickCell(dialog, IDC_vsfTaxableGroups, 1, frmSettings::kRestaurantValue);
        HWND box = u.WaitForControl(dialog, IDC_CellText);
        u.TypeInto(box, "6.5x");
        seen.push_back(u.Text(dialog, IDC_CellText));
        u.PressKey(box, VK_RETURN);
        u.WaitUntilNoControl(dialog, IDC_CellText);
        seen.push_back(u.Cell(dialog, IDC_vsfTaxableGroups, 1, 0));
        // The host's taxable group picked in the code column fills the description.
        u.DoubleClickCell(dialog, IDC_vsfTaxableGroups, 1, frmSettings::kHostCode);
        u.WaitForControl(dialog, IDC_CellList);
        u.Pick(dialog, IDC_CellList, "2");
        u.WaitUntilNoControl(dialog, IDC_CellList);
        seen.push_back(u.Cell(dialog, IDC_vsfTaxableGroups, 1, 1));
        seen.push_back(u.Cell(dialog, IDC_vsfTaxableGroups, 1, 2));
        // A restaurant tender of 16 characters is refused: the cell keeps what it held.
        u.DoubleClickCell(dialog, IDC_vsfPayments, 0, frmSettings::kRestaurantValue);
        box = u.WaitForControl(dialog, IDC_CellText);
        u.TypeInto(box, "ABCDEFGHIJKLMNOP");
        u.PressKey(box, VK_RETURN);
        u.WaitUntilNoControl(dialog, IDC_CellText);
        seen.push_back(u.Cell(dialog, IDC_vsfPayments, 0, 0));
        // A voucher tender picked is refused with its message, and the row's cells are cleared.
        u.DoubleClickCell(dialog, IDC_vsfPayments, 0, frmSettings::kHostCode);
        u.WaitForControl(dialog, IDC_CellList);
        u.Pick(dialog, IDC_CellList, "5");
        u.WaitUntilNoControl(dialog, IDC_CellList);
        seen.push_back(u.Cell(dialog, IDC_vsfPayments, 0, 0) + "|" + u.Cell(dialog, IDC_vsfPayments, 0, 1));
        // Another tender takes the row.
        u.DoubleClickCell(dialog, IDC_vsfPayments, 0, frmSettings::kRestaurantValue);
        box = u.WaitForControl(dialog, IDC_CellText);
        u.TypeInto(box, "CC");
        u.PressKey(box, VK_RETURN);
        u.WaitUntilNoControl(dialog, IDC_CellText);
        u.DoubleClickCell(dialog, IDC_vsfPayments, 0, frmSettings::kHostCode);
        u.WaitForControl(dialog, IDC_CellList);
        u.Pick(dialog, IDC_CellList, "3");
        u.WaitUntilNoControl(dialog, IDC_CellList);
        seen.push_back(u.Cell(dialog, IDC_vsfPayments, 0, 2));
        u.Click(dialog, IDC_cmdOk);
    });
    frmSettings dialog(Services());
    EXPECT_TRUE(dialog.Edit(setting, nullptr));
    ASSERT_EQ(user.Failure(), "");
    const auto group2 = Services().taxableGroups->Get(2);
    ASSERT_TRUE(group2.has_value());
    EXPECT_EQ(seen, (std::vector<std::string>{"6,5", "6,50", "2", group2->Description, "MB", "|",
                                              "Cartão de crédito"}));
    EXPECT_EQ(Shown(), std::vector<std::string>{texts::kVoucherPicked});
    const std::string xml = setting.ToXML();
    EXPECT_NE(xml.find("KitraVAT=\"6.5\""), std::string::npos) << xml;
    EXPECT_NE(xml.find("POSTenderID=\"3\" KitraTenderID=\"CC\""), std::string::npos) << xml;
}

TEST_F(WindowsDialogsTest, OkRefusesWhatTheRulesRefuseAndKeepsTheDialogOpen) {
    KitraConnectorSetting setting = Setting(kValidXml);
    const std::string before = setting.ToXML();
    std::size_t afterDocument = 0, afterVoucher = 0;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND dialog = u.WaitForDialog(SettingsTitle());
        // No stock document chosen.
        HWND stock = ::GetDlgItem(dialog, IDC_cboStockDocument);
        ::SendMessageW(stock, CB_SETCURSEL, static_cast<WPARAM>(-1), 0);
        u.Click(dialog, IDC_cmdOk);
        afterDocument = office.boxes.shown.size();
        u.Pick(dialog, IDC_cboStockDocument, "GT");
        // A voucher as the default tender.
        u.Pick(dialog, IDC_cboDefaultTenderPayment, "5");
        u.Click(dialog, IDC_cmdOk);
        afterVoucher = office.boxes.shown.size();
        u.Click(dialog, IDC_cmdCancel);
    });
    frmSettings dialog(Services());
    EXPECT_FALSE(dialog.Edit(setting, nullptr));
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(afterDocument, 1u);
    EXPECT_EQ(afterVoucher, 2u);
    ASSERT_EQ(office.boxes.shown.size(), 2u);
    EXPECT_EQ(office.boxes.shown[0].text, HostText(texts::kChooseAValueIn) + texts::lblStockDocument);
    EXPECT_EQ(office.boxes.shown[1].text.substr(office.boxes.shown[1].text.size() -
                                                std::string(texts::kVoucherAsDefault).size()),
              texts::kVoucherAsDefault);
    EXPECT_EQ(office.boxes.shown[1].style, host::MessageStyle::Information);
    EXPECT_EQ(setting.ToXML(), before);
}

TEST_F(WindowsDialogsTest, OpeningWithoutRestaurantsOrWithAnUnknownCodeSaysSo) {
    std::string noRestaurants = kValidXml;
    const auto from = noRestaurants.find("<Restaurants>");
    noRestaurants.erase(from, noRestaurants.find("</Restaurants>") + 14 - from);
    KitraConnectorSetting empty = Setting(noRestaurants);
    int rows = -1;
    {
        UserAtTheScreen user([&](UserAtTheScreen& u) {
            HWND dialog = u.WaitForDialog(SettingsTitle());
            rows = u.RowCount(dialog, IDC_vsfRestaurant);
            u.Click(dialog, IDC_cmdCancel);
        });
        frmSettings dialog(Services());
        dialog.Edit(empty, nullptr);
        ASSERT_EQ(user.Failure(), "");
    }
    EXPECT_EQ(rows, 0);
    ASSERT_EQ(office.boxes.shown.size(), 1u);
    EXPECT_EQ(office.boxes.shown[0].text, HostText(texts::kAtLeastOneIn) + texts::lblRestaurants);

    std::string unknown = kValidXml;
    unknown.replace(unknown.find("StockTransDocument=\"GT\""), 23, "StockTransDocument=\"ZZ\"");
    KitraConnectorSetting unknownStock = Setting(unknown);
    std::string stockShown = "?", tenderShown = "?";
    {
        UserAtTheScreen user([&](UserAtTheScreen& u) {
            HWND dialog = u.WaitForDialog(SettingsTitle());
            stockShown = u.Selected(dialog, IDC_cboStockDocument);
            tenderShown = u.Selected(dialog, IDC_cboDefaultTenderPayment);
            u.Click(dialog, IDC_cmdCancel);
        });
        frmSettings dialog(Services());
        dialog.Edit(unknownStock, nullptr);
        ASSERT_EQ(user.Failure(), "");
    }
    ASSERT_EQ(office.boxes.shown.size(), 2u);
    EXPECT_EQ(office.boxes.shown[1].text,
              "Foi encontrado um erro na leitura da configuração na zona 'StockTransDocument'");
    EXPECT_EQ(office.boxes.shown[1].style, host::MessageStyle::Plain);
    EXPECT_EQ(stockShown, "");
    EXPECT_EQ(tenderShown, "");  // later zones stay empty
}

TEST_F(WindowsDialogsTest, DefaultsResetTheListsAndEmptyTheGrids) {
    KitraConnectorSetting setting = Setting(kValidXml);
    std::vector<int> rows;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND dialog = u.WaitForDialog(SettingsTitle());
        u.Click(dialog, IDC_cmdDefaults);
        rows = {u.RowCount(dialog, IDC_vsfPayments), u.RowCount(dialog, IDC_vsfTaxableGroups),
                u.RowCount(dialog, IDC_vsfRestaurant)};
        u.Click(dialog, IDC_cmdCancel);
    });
    frmSettings dialog(Services());
    dialog.Edit(setting, nullptr);
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(rows, (std::vector<int>{0, 0, 1}));  // the restaurants stay
}

// frmKitraLog and frmKitraLogContents

class WindowsLogDialogsTest : public WindowsDialogsTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(log.CheckOrCreateKitraLogTable());
        for (int day = 1; day <= 3; ++day) {
            KitraLog record;
            record.RestaurantID = day == 2 ? "Praça" : "Centro";
            record.ImportDate = DateTime{2011, 3, day, 9, 5, 7};
            record.Contents = "dia " + std::to_string(day) + "\nlinha dois\r\nlinha três";
            ASSERT_TRUE(log.Save(record));
        }
    }
    long TableRows() {
        return Services().connection->Query(host::SqlStatement("SELECT * FROM Kitra2Log")).RecordCount();
    }
    std::string ListTitle() { return HostText(kLogListTitleText); }

    DSOKitraLog log{Services()};
};

TEST_F(WindowsLogDialogsTest, TheListShowsNewestFirstAndOpensALogsContents) {
    std::vector<std::string> cells;
    std::string caption, text, okCaption;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND list = u.WaitForDialog(ListTitle());
        for (int row = 0; row < u.RowCount(list, IDC_vsfImportLog); ++row) {
            cells.push_back(u.Cell(list, IDC_vsfImportLog, row, 0));
        }
        const std::string praca = u.Cell(list, IDC_vsfImportLog, 1, 1);
        u.DoubleClickCellToOpen(list, IDC_vsfImportLog, 1, 0);
        HWND contents = u.WaitForDialog(HostText(kLogContentsTitleText) + "Praça (" + praca + ")");
        caption = u.Caption(contents);
        text = u.Text(contents, IDC_txtLog);
        okCaption = u.Text(contents, IDC_LogContentsOk);
        u.Click(contents, IDC_LogContentsOk);
        u.WaitUntilClosed(contents);
        u.Click(list, IDC_cmdExit);
    });
    frmKitraLog dialog(Services());
    dialog.Show(nullptr);
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(cells, (std::vector<std::string>{"Centro", "Praça", "Centro"}));
    EXPECT_EQ(caption.rfind(HostText(kLogContentsTitleText) + "Praça (", 0), 0u) << caption;
    EXPECT_EQ(text, "dia 2\r\nlinha dois\r\r\nlinha três");
    EXPECT_EQ(okCaption, HostText(kLogContentsOkText));
    EXPECT_FALSE(dialog.Changed());
}

TEST_F(WindowsLogDialogsTest, DeletingAsksAndTakesOutExactlyTheSelectedRows) {
    std::vector<int> rowsAfter;
    std::string left;
    office.boxes.answers = {host::MessageAnswer::No, host::MessageAnswer::Yes};
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND list = u.WaitForDialog(ListTitle());
        u.SelectRows(list, IDC_vsfImportLog, {0, 2});
        u.Click(list, IDC_cmdDelete);  // No
        rowsAfter.push_back(u.RowCount(list, IDC_vsfImportLog));
        u.Click(list, IDC_cmdDelete);  // Yes
        rowsAfter.push_back(u.RowCount(list, IDC_vsfImportLog));
        left = u.Cell(list, IDC_vsfImportLog, 0, 0);
        u.Click(list, IDC_cmdExit);
    });
    frmKitraLog dialog(Services());
    dialog.Show(nullptr);
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(rowsAfter, (std::vector<int>{3, 1}));
    EXPECT_EQ(left, "Praça");
    EXPECT_EQ(TableRows(), 1);
    EXPECT_TRUE(dialog.Changed());
    ASSERT_EQ(office.boxes.shown.size(), 2u);
    EXPECT_EQ(office.boxes.shown[0].text, KitraLogViewer::kDeleteQuestion);
    EXPECT_EQ(office.boxes.shown[0].style, host::MessageStyle::Question);
    EXPECT_EQ(office.boxes.shown[0].buttons, host::MessageButtons::YesNo);
}

TEST_F(WindowsLogDialogsTest, AnEmptyTableShowsNoRowsAndDeleteDoesNothing) {
    Services().connection->Execute(host::SqlStatement("DELETE FROM Kitra2Log"));
    int rows = -1;
    std::vector<std::string> headings;
    UserAtTheScreen user([&](UserAtTheScreen& u) {
        HWND list = u.WaitForDialog(ListTitle());
        rows = u.RowCount(list, IDC_vsfImportLog);
        HWND header = reinterpret_cast<HWND>(
            ::SendMessageW(::GetDlgItem(list, IDC_vsfImportLog), LVM_GETHEADER, 0, 0));
        for (int column = 0; column < 3; ++column) {
            wchar_t text[64] = {};
            HDITEMW item{};
            item.mask = HDI_TEXT;
            item.pszText = text;
            item.cchTextMax = 64;
            ::SendMessageW(header, HDM_GETITEMW, column, reinterpret_cast<LPARAM>(&item));
            headings.push_back(Utf8FromWide(text));
        }
        u.Click(list, IDC_cmdDelete);
        u.Click(list, IDC_cmdExit);
    });
    frmKitraLog dialog(Services());
    dialog.Show(nullptr);
    ASSERT_EQ(user.Failure(), "");
    EXPECT_EQ(rows, 0);
    EXPECT_EQ(headings, (std::vector<std::string>{"Restaurante", "Data Importação", ""}));
    EXPECT_TRUE(office.boxes.shown.empty());
    EXPECT_FALSE(dialog.Changed());
}

}  // namespace
}  // namespace kitra::testing
