// The restaurant editor and the settings dialog driven as a user drives them: real widgets found
// by their object names, typing, picking and clicking, over a real back office; the messages are
// captured by the host's message-box service and the settings stored are read back.
#include <dlfcn.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <QTimeEdit>
#include <QToolButton>
#include <cstdlib>
#include <functional>
#include <memory>
#include <tuple>

#include "core/ScreenUnits.h"
#include "host/Com.h"
#include "host/IConnector.h"
#include "settings/DialogTexts.h"
#include "settings/qt/DropDownListCell.h"
#include "settings/qt/frmAddRestaurant.h"
#include "settings/qt/frmSettings.h"
#include "tests/gui/DoubleClick.h"
#include "tests/gui/GuiTests.h"
#include "tests/gui/ModalWatcher.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra::testing {
namespace {
namespace texts = dialog_texts;

template <class T>
T& Child(QWidget& parent, const char* name) {
    T* child = parent.findChild<T*>(QString::fromLatin1(name));
    if (child == nullptr) qFatal("no widget named %s", name);
    return *child;
}

// Types a text as a user does, one key event per character; Qt Test's own key clicks refuse
// characters outside ASCII, so those are sent as key events that carry only their text.
void Type(QWidget& widget, const QString& text) {
    for (const QChar c : text) {
        if (c.unicode() < 0x80) {
            QTest::keyClicks(&widget, QString(c));
        } else {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
            QApplication::sendEvent(&widget, &press);
            QKeyEvent release(QEvent::KeyRelease, 0, Qt::NoModifier, QString(c));
            QApplication::sendEvent(&widget, &release);
        }
    }
}
void Retype(QLineEdit& box, const QString& text) {
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_Delete);
    Type(box, text);
}
void Click(QWidget& parent, const char* button) {
    QTest::mouseClick(&Child<QPushButton>(parent, button), Qt::LeftButton);
}
// Picks the entry of a combo whose first column holds `code`, as a user picks it in the list.
void Pick(QComboBox& combo, const QString& code) {
    const int row = combo.model()->match(combo.model()->index(0, 0), Qt::DisplayRole, code, 1,
                                         Qt::MatchExactly).value(0).row();
    combo.setCurrentIndex(row);
}

// Ends a cell's edit with Enter; the grid takes the entry on its next turn of the event loop.
void Commit(QWidget& editor) {
    QTest::keyClick(&editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
// The editor a grid has open now (closed ones may linger until deleted).
template <class T>
T& OpenEditor(QTableWidget& grid) {
    const QList<T*> editors = grid.findChildren<T*>();
    for (auto editor = editors.rbegin(); editor != editors.rend(); ++editor) {
        if (!(*editor)->isHidden()) return **editor;
    }
    qFatal("the grid has no open editor");
}

// The host-code cells a grid has open now (found by name: the class has no meta-object of its
// own for findChildren to tell it apart).
std::vector<DropDownListCell*> OpenCells(QTableWidget& grid) {
    std::vector<DropDownListCell*> open;
    for (QWidget* widget : grid.findChildren<QWidget*>(QStringLiteral("cellDropDownList"))) {
        if (auto* cell = dynamic_cast<DropDownListCell*>(widget); cell != nullptr && !cell->isHidden()) {
            open.push_back(cell);
        }
    }
    return open;
}
DropDownListCell& OpenCell(QTableWidget& grid) {
    const std::vector<DropDownListCell*> open = OpenCells(grid);
    if (open.empty()) qFatal("the grid has no host-code cell open");
    return *open.back();
}
// The "..." list of a host-code cell that is open now, and its row of that code.
QTableWidget& OpenList(QTableWidget& grid) {
    auto& list = Child<QTableWidget>(OpenCell(grid), "lstHostEntries");
    if (!list.isVisible()) qFatal("the cell's list is not dropped down");
    return list;
}
int RowOf(const QTableWidget& list, const QString& code) {
    for (int row = 0; row < list.rowCount(); ++row) {
        if (list.item(row, 0)->text() == code) return row;
    }
    qFatal("the list has no entry %s", qPrintable(code));
}
// Picks an entry in a host-code cell as a user does: opens the cell, presses its "..." button and
// clicks the entry of that code in the list.
void PickInGrid(QTableWidget& grid, int row, const QString& code) {
    grid.setCurrentCell(row, frmSettings::kHostCode);
    grid.editItem(grid.item(row, frmSettings::kHostCode));
    QTest::mouseClick(&Child<QToolButton>(OpenCell(grid), "cmdDropDown"), Qt::LeftButton);
    QTableWidget& list = OpenList(grid);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {},
                      list.visualItemRect(list.item(RowOf(list, code), 1)).center());
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
// Drops the open cell's list down with a key, then picks the entry below the cell's own with Down
// and Enter, as a user at the keyboard does.
void PickTheNextEntryWithKeys(QTableWidget& grid, Qt::Key opener) {
    QTest::keyClick(&OpenCell(grid), opener);
    QTableWidget& list = OpenList(grid);
    QTest::keyClick(&list, Qt::Key_Down);
    QTest::keyClick(&list, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
// A combo's drop-down columns as their widths in pixels; a hidden column counts 0.
std::vector<int> ColumnWidths(QComboBox& combo) {
    auto* view = qobject_cast<QTableView*>(combo.view());
    if (view == nullptr) qFatal("%s drops down no columns", qPrintable(combo.objectName()));
    std::vector<int> widths;
    for (int column = 0; column < view->model()->columnCount(); ++column) {
        widths.push_back(view->isColumnHidden(column) ? 0 : view->columnWidth(column));
    }
    return widths;
}
std::vector<int> Pixels(const QWidget& widget, std::initializer_list<int> points) {
    std::vector<int> pixels;
    for (int p : points) pixels.push_back(PointsToPixels(p, widget.logicalDpiX()));
    return pixels;
}

const std::string kValidXml =
    "<KitraConnectorSetting InvoiceTransDocument=\"VB\" CreditTransDocument=\"FAC\" "
    "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" CashWithdrawalTransDocument=\"SC\" "
    "CustomerPaymentTransDocument=\"PCL\" CustomerPaymentAccountDocument=\"ADC\" "
    "SelfConsumptionTransDocument=\"AC\" DefaultTenderPayment=\"1\" DefaultTaxableGroup=\"1\">"
    "<Restaurants><Restaurant Name=\"Centro\" ServerName=\"127.0.0.1\" ServerPort=\"3306\" "
    "ServerDBName=\"centro\" ServerUser=\"u\" ServerPassword=\"p\" TransSerial=\"EXT\" "
    "DefaultSupplierID=\"1\"/></Restaurants>"
    "<TenderEquivalence><Tender POSTenderID=\"2\" KitraTenderID=\"MB\"/></TenderEquivalence>"
    "<TaxableGroupEquivalence><TaxableGroup TaxableGroupID=\"1\" KitraVAT=\"23\"/>"
    "</TaxableGroupEquivalence></KitraConnectorSetting>";

class SettingsGuiTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestBackOffice> office;

    const host::HostServices& Services() { return office->Services(); }
    std::string Text(long id) { return Services().application->Text(id); }
    std::vector<std::string> Shown() {
        std::vector<std::string> texts;
        for (const auto& box : office->boxes.shown) texts.push_back(box.text);
        return texts;
    }
    KitraConnectorSetting Setting(const std::string& xml) {
        KitraConnectorSetting setting(*Services().utility);
        setting.FromXML(xml);
        return setting;
    }
    std::string Replaced(std::string xml, const std::string& from, const std::string& to) {
        xml.replace(xml.find(from), from.size(), to);
        return xml;
    }
    // Fills every field the editor requires, by typing and picking.
    void FillRequired(QWidget& editor) {
        Retype(Child<QLineEdit>(editor, "txtName"), QStringLiteral("Praia"));
        Retype(Child<QLineEdit>(editor, "txtServerName"), QStringLiteral("127.0.0.1"));
        Retype(Child<QLineEdit>(editor, "txtServerDB"), QStringLiteral("praia"));
        Retype(Child<QLineEdit>(editor, "txtServerUser"), QStringLiteral("kitra"));
        Child<QDoubleSpinBox>(editor, "numDefaultSupplierID").setValue(1);
        Pick(Child<QComboBox>(editor, "cboTransSerial"), QStringLiteral("EXT"));
    }

    // The connector as a host has it: from its module, through its class factory.
    void WithConnector(const std::function<void(host::IConnector*)>& use) {
        void* module = ::dlopen(KITRA_CONNECTOR_MODULE, RTLD_NOW | RTLD_LOCAL);
        QVERIFY2(module != nullptr, ::dlerror());
        auto getClassObject = reinterpret_cast<host::DllGetClassObjectFn>(::dlsym(module, "DllGetClassObject"));
        {
            const host::Guid clsid{0x3F6E9A24, 0x71C8, 0x4D5B, {0xA0, 0xE2, 0x8B, 0x9C, 0x4D, 0x17, 0xF5, 0xA6}};
            host::ComPtr<host::IClassFactory> factory;
            QCOMPARE(getClassObject(clsid, host::kIID_IClassFactory, factory.Out()), host::kOk);
            host::ComPtr<host::IConnector> connector;
            QCOMPARE(factory->CreateInstance(nullptr, host::kIID_IConnector, connector.Out()), host::kOk);
            use(connector.Get());
        }
        ::dlclose(module);
    }

private slots:
    void init() {
        office = std::make_unique<TestBackOffice>();
        office->AttachAsHost(KITRA_CONNECTOR_MODULE);
    }
    void cleanup() { office.reset(); }

    // frmAddRestaurant

    void aNewRestaurantShowsPort3306TodayAndNow() {
        frmAddRestaurant editor(Services());
        editor.show();
        QCOMPARE(Child<QLineEdit>(editor, "txtServerPort").text(), QStringLiteral("3306"));
        for (const char* date : {"dtpEntityImport", "dtpTransactionsImport"}) {
            QCOMPARE(Child<QDateEdit>(editor, date).date(), QDate::currentDate());
        }
        for (const char* time : {"dtpEntityImportTime", "dtpTransactionsImportTime"}) {
            QVERIFY(std::abs(Child<QTimeEdit>(editor, time).time().secsTo(QTime::currentTime())) < 5);
        }
        QCOMPARE(Child<QComboBox>(editor, "cboTransSerial").currentIndex(), -1);
        QCOMPARE(Child<QComboBox>(editor, "cboWorkstation").itemText(0), QStringLiteral("Terminal 1"));
    }

    void aStoredDateThatIsNotADateShowsTodayAndIsSavedInTheIsoForm() {
        Restaurant record;
        record.ImportDateEntities = "";
        record.ImportDateTransactions = "2011-03-02 10:00:00";
        frmAddRestaurant editor(Services());
        QDate shownDate;
        QTime shownTime;
        ModalWatcher watcher([&](QWidget& dialog) {
            shownDate = Child<QDateEdit>(dialog, "dtpEntityImport").date();
            shownTime = Child<QTimeEdit>(dialog, "dtpEntityImportTime").time();
            FillRequired(dialog);
            Click(dialog, "cmdOk");
        }, QStringLiteral("frmAddRestaurant"));
        QVERIFY(editor.Edit(record));
        QCOMPARE(shownDate, QDate::currentDate());
        QVERIFY(std::abs(shownTime.secsTo(QTime::currentTime())) < 5);
        QVERIFY(watcher.Seen());
        QCOMPARE(QString::fromStdString(record.ImportDateEntities).left(10),
                 QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")));
        QVERIFY(IsIsoDateTime(record.ImportDateEntities));
        QCOMPARE(record.ImportDateTransactions, std::string("2011-03-02 10:00:00"));
        QCOMPARE(record.Name, std::string("Praia"));
        QCOMPARE(record.ServerPort, std::string("3306"));
        QCOMPARE(record.TransSerial, std::string("EXT"));
        QCOMPARE(record.DefaultSupplierID, 1.0);
        QCOMPARE(record.ServerPassword, std::string());  // no password: accepted
    }

    void aNameOfBlanksFailsAServerNameOfBlanksPasses() {
        frmAddRestaurant editor(Services());
        editor.show();
        FillRequired(editor);
        Retype(Child<QLineEdit>(editor, "txtName"), QStringLiteral("   "));
        Click(editor, "cmdOk");
        QCOMPARE(Shown(), std::vector<std::string>{Text(texts::kNameMissing)});
        QCOMPARE(office->boxes.shown[0].title, Text(texts::kFormTitle));
        QCOMPARE(office->boxes.shown[0].style, host::MessageStyle::Information);
        QVERIFY(editor.isVisible());
        Retype(Child<QLineEdit>(editor, "txtName"), QStringLiteral("Praia"));
        Retype(Child<QLineEdit>(editor, "txtServerName"), QStringLiteral("   "));
        Click(editor, "cmdOk");
        QCOMPARE(office->boxes.shown.size(), std::size_t{1});
        QVERIFY(!editor.isVisible());
        QCOMPARE(editor.result(), int(QDialog::Accepted));
    }

    void aSupplierOfZeroIsRefused() {
        frmAddRestaurant editor(Services());
        editor.show();
        FillRequired(editor);
        Child<QDoubleSpinBox>(editor, "numDefaultSupplierID").setValue(0);
        Click(editor, "cmdOk");
        QCOMPARE(Shown(), std::vector<std::string>{Text(texts::kSupplierMissing)});
        QVERIFY(editor.isVisible());
        // The supplier's name shows beside its number.
        Child<QDoubleSpinBox>(editor, "numDefaultSupplierID").setValue(1);
        QCOMPARE(Child<QLabel>(editor, "stfDefaultSupplierID").text().toStdString(),
                 Services().suppliers->Get(1)->OrganizationName);
    }

    void aNameLongerThan25CharactersIsRefused() {
        frmAddRestaurant editor(Services());
        editor.show();
        FillRequired(editor);
        Retype(Child<QLineEdit>(editor, "txtName"), QStringLiteral("Restaurante Praia da Vitória"));
        Click(editor, "cmdOk");
        QCOMPARE(office->boxes.shown.size(), std::size_t{1});
        QVERIFY(office->boxes.shown[0].text.find("25 caracteres") != std::string::npos);
        QVERIFY(editor.isVisible());
    }

    void enterIsSwallowedInTheNameAndMovesOnFromThePrefix() {
        frmAddRestaurant editor(Services());
        editor.show();
        QApplication::setActiveWindow(&editor);
        FillRequired(editor);
        auto& name = Child<QLineEdit>(editor, "txtName");
        name.setFocus();
        QTest::keyClick(&name, Qt::Key_Return);
        QVERIFY(editor.isVisible());  // not OK
        auto& prefix = Child<QLineEdit>(editor, "txtItemIDPrefix");
        prefix.setFocus();
        QTest::keyClick(&prefix, Qt::Key_Return);
        QVERIFY(editor.isVisible());
        QCOMPARE(QApplication::focusWidget(), &Child<QComboBox>(editor, "cboDefaultWarehouseID"));
    }

    void cancelLeavesTheRecordAsItWas() {
        Restaurant record;
        record.Name = "Centro";
        record.ImportDateEntities = "";
        const Restaurant before = record;
        frmAddRestaurant editor(Services());
        ModalWatcher watcher([&](QWidget& dialog) {
            FillRequired(dialog);
            Click(dialog, "cmdCancel");
        }, QStringLiteral("frmAddRestaurant"));
        QVERIFY(!editor.Edit(record));
        QVERIFY(watcher.Seen());
        QCOMPARE(record.Name, before.Name);
        QCOMPARE(record.ImportDateEntities, std::string());
        QCOMPARE(record.TransSerial, before.TransSerial);
        QVERIFY(office->boxes.shown.empty());
    }

    void theSupplierSearchFindsByNameAndShowsTheOrganizationName() {
        Services().suppliers->Save({2, "Frutas da Beira", "500000001"}, 2, true);
        frmAddRestaurant editor(Services());
        editor.show();
        auto& number = Child<QDoubleSpinBox>(editor, "numDefaultSupplierID");
        auto& name = Child<QLabel>(editor, "stfDefaultSupplierID");
        QCOMPARE(name.text(), QString());  // a new restaurant has no supplier yet

        QStringList listedAtFirst, listedFound;
        ModalWatcher watcher([&](QWidget& search) {
            auto& list = Child<QListWidget>(search, "lstSuppliers");
            for (int row = 0; row < list.count(); ++row) listedAtFirst << list.item(row)->text();
            Type(Child<QLineEdit>(search, "txtSearch"), QStringLiteral("BEIRA"));
            for (int row = 0; row < list.count(); ++row) listedFound << list.item(row)->text();
            QTest::mouseClick(Child<QDialogButtonBox>(search, "").button(QDialogButtonBox::Ok), Qt::LeftButton);
        }, QStringLiteral("frmSearchSupplier"));
        Click(editor, "cmdSearchSupplier");
        QVERIFY(watcher.Seen());
        QCOMPARE(listedAtFirst, (QStringList{QStringLiteral("1 - Distribuidora Alimentar do Centro, Lda."),
                                             QStringLiteral("2 - Frutas da Beira")}));
        QCOMPARE(listedFound, QStringList{QStringLiteral("2 - Frutas da Beira")});
        QCOMPARE(number.value(), 2.0);
        QCOMPARE(name.text(), QStringLiteral("Frutas da Beira"));

        // Cancel in the search keeps the supplier.
        ModalWatcher cancel([&](QWidget& search) {
            Child<QListWidget>(search, "lstSuppliers").setCurrentRow(0);
            QTest::mouseClick(Child<QDialogButtonBox>(search, "").button(QDialogButtonBox::Cancel), Qt::LeftButton);
        }, QStringLiteral("frmSearchSupplier"));
        Click(editor, "cmdSearchSupplier");
        QVERIFY(cancel.Seen());
        QCOMPARE(number.value(), 2.0);

        // A number typed into the box is looked up as it is typed; one with no supplier shows
        // no name.
        auto& typed = *number.findChild<QLineEdit*>();
        Retype(typed, QStringLiteral("1"));
        QCOMPARE(name.text().toStdString(), Services().suppliers->Get(1)->OrganizationName);
        Retype(typed, QStringLiteral("9"));
        QCOMPARE(name.text(), QString());
    }

    void theEditorsCombosHideTheirCodesAndNameTheWorkstations() {
        frmAddRestaurant editor(Services());
        editor.show();
        auto& workstation = Child<QComboBox>(editor, "cboWorkstation");
        QCOMPARE(ColumnWidths(workstation)[0], 0);  // the code column is hidden
        QVERIFY(ColumnWidths(workstation)[1] > 0);
        QStringList shown, codes;
        for (int row = 0; row < workstation.count(); ++row) {
            shown << workstation.itemText(row);
            codes << workstation.model()->index(row, 0).data().toString();
        }
        QCOMPARE(shown, (QStringList{QStringLiteral("Terminal 1"), QStringLiteral("Terminal 2"),
                                     QStringLiteral("Terminal 3")}));
        QCOMPARE(codes, (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
        for (const char* name : {"cboDefaultWarehouseID", "cboWasteWarehouseID"}) {
            auto& warehouse = Child<QComboBox>(editor, name);
            QCOMPARE(ColumnWidths(warehouse)[0], 0);
            Pick(warehouse, QStringLiteral("2"));
            QCOMPARE(warehouse.currentText(), QStringLiteral("Armazém de quebras"));
        }
        // The series are a plain list of their codes.
        auto& series = Child<QComboBox>(editor, "cboTransSerial");
        QCOMPARE(series.count(), 2);
        QCOMPARE(series.itemText(0), QStringLiteral("A"));
        QCOMPARE(series.itemText(1), QStringLiteral("EXT"));
        QCOMPARE(series.model()->columnCount(), 1);

        // What is picked goes into the record as codes.
        Restaurant record;
        FillRequired(editor);
        Pick(workstation, QStringLiteral("3"));
        QCOMPARE(workstation.currentText(), QStringLiteral("Terminal 3"));
        RestaurantEditor::Take(editor.Form(), record);
        QCOMPARE(record.WorkstationID, std::int16_t{3});
        QCOMPARE(record.DefaultWarehouseID, std::int16_t{2});
    }

    // frmSettings

    void theSettingsCombosShowTheirColumnsAtTheirWidths() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        for (const char* name : {"cboInvoiceTransDocument", "cboCreditSales", "cboStockDocument",
                                 "cboCashEntranceTransDocument", "cboCashWithdrawalTransDocument",
                                 "cboCustomerPaymentTransDocument", "cboCustomerPaymentAccountDocument"}) {
            auto& combo = Child<QComboBox>(dialog, name);
            QCOMPARE(ColumnWidths(combo), Pixels(combo, {35, 150}));
        }
        QCOMPARE(Child<QComboBox>(dialog, "cboInvoiceTransDocument").currentText(), QStringLiteral("VB"));
        auto& tender = Child<QComboBox>(dialog, "cboDefaultTenderPayment");
        QCOMPARE(ColumnWidths(tender), Pixels(tender, {0, 150}));
        QCOMPARE(tender.currentText(), QStringLiteral("Dinheiro"));  // only the description shows
        auto& group = Child<QComboBox>(dialog, "cboDefaultTaxableGroup");
        QCOMPARE(ColumnWidths(group), Pixels(group, {20, 150}));
        QCOMPARE(group.currentText(), QStringLiteral("1"));
        QCOMPARE(group.model()->index(group.currentIndex(), 1).data().toString(), QStringLiteral("Taxa normal"));
    }

    void theGridsHaveOneHeaderRowAndTheServerColumn() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        for (const char* name : {"vsfPayments", "vsfTaxableGroups", "vsfRestaurant"}) {
            auto& grid = Child<QTableWidget>(dialog, name);
            QVERIFY(grid.horizontalHeader()->isVisible());
            QVERIFY(!grid.verticalHeader()->isVisible());
            QCOMPARE(grid.rowCount(), 1);  // the header is not a row of the settings
        }
        auto& restaurants = Child<QTableWidget>(dialog, "vsfRestaurant");
        QCOMPARE(restaurants.horizontalHeaderItem(1)->text(), QStringLiteral("Servidor"));
        QCOMPARE(restaurants.item(0, 0)->text(), QStringLiteral("Centro"));
        QCOMPARE(restaurants.item(0, 1)->text(), QStringLiteral("127.0.0.1"));
    }

    void theDotsButtonOfAHostCellDropsDownTheHostsList() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfPayments");
        grid.setFocus();
        grid.setCurrentCell(0, frmSettings::kHostCode);
        // A click on the cell's "..." (its right end) opens the list at once, on the cell's tender.
        const QRect cell = grid.visualItemRect(grid.item(0, frmSettings::kHostCode));
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, QPoint(cell.right() - 2, cell.center().y()));
        QTRY_VERIFY(!OpenCells(grid).empty() && OpenCell(grid).DroppedDown());
        QTableWidget& list = OpenList(grid);
        QCOMPARE(list.rowCount(), 6);
        QCOMPARE(list.columnCount(), 2);
        QCOMPARE(list.item(4, 0)->text(), QStringLiteral("5"));
        QCOMPARE(list.item(4, 1)->text(), QStringLiteral("Vale de refeição"));
        QCOMPARE(list.columnWidth(0), PointsToPixels(35, list.logicalDpiX()));
        QCOMPARE(list.columnWidth(1), PointsToPixels(150, list.logicalDpiX()));
        QCOMPARE(list.currentRow(), 1);  // tender 2, the cell's own
        // Escape closes the list and leaves the cell.
        QTest::keyClick(&list, Qt::Key_Escape);
        QVERIFY(!list.isVisible());
        QCOMPARE(grid.item(0, frmSettings::kHostCode)->text(), QStringLiteral("2"));
        QVERIFY(office->boxes.shown.empty());

        // From the keyboard: F4 drops the list down, Down and Enter pick the next tender.
        PickTheNextEntryWithKeys(grid, Qt::Key_F4);
        QCOMPARE(grid.item(0, frmSettings::kHostCode)->text(), QStringLiteral("3"));
        QCOMPARE(grid.item(0, frmSettings::kDescription)->text(), QStringLiteral("Cartão de crédito"));
        QCOMPARE(grid.item(0, frmSettings::kRestaurantValue)->text(), QStringLiteral("MB"));
        QVERIFY(OpenCells(grid).empty());  // the edit ended

        // A click on the cell away from its button does not drop the list down.
        grid.setCurrentCell(0, frmSettings::kRestaurantValue);
        grid.setCurrentCell(0, frmSettings::kHostCode);
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, QPoint(cell.left() + 3, cell.center().y()));
        QTest::qWait(50);
        for (DropDownListCell* open : OpenCells(grid)) QVERIFY(!open->DroppedDown());
    }

    void altDownAndSpaceAlsoDropTheHostsListDown() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfTaxableGroups");
        // The cell opened without its button: the list stays up until asked for.
        grid.setCurrentCell(0, frmSettings::kHostCode);
        grid.editItem(grid.item(0, frmSettings::kHostCode));
        auto& editor = OpenCell(grid);
        QVERIFY(!editor.DroppedDown());

        // Down without Alt leaves the list closed; Alt+Down opens it.
        QTest::keyClick(&editor, Qt::Key_Down);
        QVERIFY(!editor.DroppedDown());
        QTest::keyClick(&editor, Qt::Key_Down, Qt::AltModifier);
        QVERIFY(editor.DroppedDown());
        QTest::keyClick(&OpenList(grid), Qt::Key_Escape);
        QVERIFY(!editor.DroppedDown());

        // Space opens it too, and a pick from it fills the row.
        PickTheNextEntryWithKeys(grid, Qt::Key_Space);
        QCOMPARE(grid.item(0, frmSettings::kHostCode)->text(), QStringLiteral("2"));
        QVERIFY(OpenCells(grid).empty());  // the edit ended
    }

    void pickingATaxableGroupInItsListFillsTheRow() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfTaxableGroups");
        PickInGrid(grid, 0, QStringLiteral("3"));
        QCOMPARE(grid.item(0, frmSettings::kHostCode)->text(), QStringLiteral("3"));
        QCOMPARE(grid.item(0, frmSettings::kDescription)->text(), QStringLiteral("Taxa reduzida"));
        QCOMPARE(grid.item(0, frmSettings::kRestaurantValue)->text(), QStringLiteral("23,00"));
        QCOMPARE(dialog.Form().vsfTaxableGroups, (std::vector<TaxableGroupRow>{{"23,00", "3", "Taxa reduzida"}}));
    }

    void aDoubleClickOnARestaurantOpensItInTheEditor() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfRestaurant");
        {
            // A single click only selects.
            ModalWatcher opened([](QWidget& editor) { Click(editor, "cmdCancel"); },
                                QStringLiteral("frmAddRestaurant"));
            QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, grid.visualItemRect(grid.item(0, 1)).center());
            QVERIFY(!opened.Seen());
            QCOMPARE(grid.currentRow(), 0);
        }
        QString shownName;
        ModalWatcher watcher([&](QWidget& editor) {
            shownName = Child<QLineEdit>(editor, "txtName").text();
            Retype(Child<QLineEdit>(editor, "txtName"), QStringLiteral("Centro Histórico"));
            Retype(Child<QLineEdit>(editor, "txtServerName"), QStringLiteral("10.0.0.7"));
            Click(editor, "cmdOk");
        }, QStringLiteral("frmAddRestaurant"));
        DoubleClick(grid.viewport(), grid.visualItemRect(grid.item(0, 1)).center());
        QVERIFY(watcher.Seen());
        QCOMPARE(shownName, QStringLiteral("Centro"));
        QCOMPARE(grid.item(0, 0)->text(), QStringLiteral("Centro Histórico"));
        QCOMPARE(grid.item(0, 1)->text(), QStringLiteral("10.0.0.7"));
        QCOMPARE(dialog.Form().vsfRestaurant.at(0).Name, std::string("Centro Histórico"));
        QCOMPARE(dialog.Form().vsfRestaurant.at(0).ServerDBName, std::string("centro"));  // the rest kept
        QVERIFY(grid.findChildren<QLineEdit*>().isEmpty());  // nothing edited in place
    }

    void enterOnARestaurantOpensItInTheEditor() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfRestaurant");
        grid.setCurrentCell(0, 0);
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            QString shownName;
            ModalWatcher watcher([&](QWidget& editor) {
                shownName = Child<QLineEdit>(editor, "txtName").text();
                Retype(Child<QLineEdit>(editor, "txtName"), QStringLiteral("Outro"));
                Click(editor, "cmdCancel");
            }, QStringLiteral("frmAddRestaurant"));
            QTest::keyClick(&grid, key);
            QVERIFY(watcher.Seen());
            QCOMPARE(shownName, QStringLiteral("Centro"));
            QCOMPARE(grid.item(0, 0)->text(), QStringLiteral("Centro"));  // cancelled: unchanged
        }
        QVERIFY(dialog.isVisible());  // Enter did not close the settings
    }

    void theRestaurantGridIsNeverEditedInPlace() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfRestaurant");
        grid.setFocus();
        grid.setCurrentCell(0, 0);
        QTest::keyClick(&grid, Qt::Key_F2);
        QTest::keyClicks(&grid, QStringLiteral("x"));
        grid.editItem(grid.item(0, 1));
        QVERIFY(grid.findChildren<QLineEdit*>().isEmpty());
        QCOMPARE(grid.item(0, 0)->text(), QStringLiteral("Centro"));
        QCOMPARE(grid.item(0, 1)->text(), QStringLiteral("127.0.0.1"));
    }

    void theEquivalenceGridsButtonsAddAndDeleteRows() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        for (const auto& [gridName, add, remove] :
             {std::tuple{"vsfPayments", "btnAddPayment", "btnDeletePayment"},
              std::tuple{"vsfTaxableGroups", "btnAddTaxableGroup", "btnDeleteTaxableGroup"}}) {
            auto& grid = Child<QTableWidget>(dialog, gridName);
            const QString first = grid.item(0, frmSettings::kHostCode)->text();
            Click(dialog, add);
            QCOMPARE(grid.rowCount(), 2);
            QCOMPARE(grid.item(1, frmSettings::kHostCode)->text(), QString());
            grid.setCurrentCell(0, frmSettings::kRestaurantValue);
            Click(dialog, remove);
            QCOMPARE(grid.rowCount(), 1);
            QCOMPARE(grid.item(0, frmSettings::kHostCode)->text(), QString());  // the new row stays
            Click(dialog, remove);
            QCOMPARE(grid.rowCount(), 0);
            QVERIFY(!first.isEmpty());
        }
    }

    void theRestaurantButtonsAddEditAndDelete() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfRestaurant");
        ModalWatcher add([&](QWidget& editor) {
            FillRequired(editor);
            Click(editor, "cmdOk");
        }, QStringLiteral("frmAddRestaurant"));
        Click(dialog, "btnAddRestaurant");
        QVERIFY(add.Seen());
        QCOMPARE(grid.rowCount(), 2);
        QCOMPARE(grid.item(1, 0)->text(), QStringLiteral("Praia"));

        grid.setCurrentCell(1, 0);
        ModalWatcher edit([&](QWidget& editor) {
            Retype(Child<QLineEdit>(editor, "txtServerName"), QStringLiteral("praia.local"));
            Click(editor, "cmdOk");
        }, QStringLiteral("frmAddRestaurant"));
        Click(dialog, "btnEditRestaurant");
        QVERIFY(edit.Seen());
        QCOMPARE(grid.item(1, 1)->text(), QStringLiteral("praia.local"));

        grid.selectRow(0);
        Click(dialog, "btnDeleteRestaurant");
        QCOMPARE(grid.rowCount(), 1);
        QCOMPARE(grid.item(0, 0)->text(), QStringLiteral("Praia"));
        QCOMPARE(dialog.Form().vsfRestaurant.size(), std::size_t{1});
        QCOMPARE(dialog.Form().vsfRestaurant[0].Name, std::string("Praia"));
    }

    void settingsWithNoRestaurantOpenWithTheMessageAndAnEmptyGrid() {
        frmSettings dialog(Services());
        dialog.Open(Setting(Replaced(kValidXml, kValidXml.substr(kValidXml.find("<Restaurants>"),
                                                                 kValidXml.find("</Restaurants>") + 14 -
                                                                     kValidXml.find("<Restaurants>")),
                                     "<Restaurants/>")));
        QCOMPARE(Shown(), std::vector<std::string>{Text(texts::kAtLeastOneIn) + "Restaurantes:"});
        QCOMPARE(Child<QTableWidget>(dialog, "vsfRestaurant").rowCount(), 0);
        QCOMPARE(Child<QLabel>(dialog, "lblRestaurants").text(), QStringLiteral("Restaurantes:"));
    }

    void aRestaurantWithASeriesOfAnotherKindIsReported() {
        frmSettings dialog(Services());
        dialog.Open(Setting(Replaced(kValidXml, "TransSerial=\"EXT\"", "TransSerial=\"A\"")));
        QCOMPARE(Shown(), std::vector<std::string>{texts::kSeriesNotExternalUnsigned});
        QCOMPARE(office->boxes.shown[0].style, host::MessageStyle::Information);
    }

    void anUnknownStockDocumentStopsLoadingWithTheZoneMessage() {
        frmSettings dialog(Services());
        dialog.Open(Setting(Replaced(kValidXml, "StockTransDocument=\"GT\"", "StockTransDocument=\"XX\"")));
        QCOMPARE(Shown(), std::vector<std::string>{
                              "Foi encontrado um erro na leitura da configuração na zona 'StockTransDocument'"});
        QCOMPARE(office->boxes.shown[0].style, host::MessageStyle::Plain);
        QCOMPARE(Child<QComboBox>(dialog, "cboCreditSales").currentText(), QStringLiteral("FAC"));
        QCOMPARE(Child<QComboBox>(dialog, "cboStockDocument").currentIndex(), -1);
        QCOMPARE(Child<QComboBox>(dialog, "cboDefaultTenderPayment").currentIndex(), -1);
        QCOMPARE(Child<QTableWidget>(dialog, "vsfPayments").rowCount(), 0);
    }

    void aVoucherMappedInThePaymentsGridIsRefusedOnOk() {
        frmSettings dialog(Services());
        dialog.Open(Setting(Replaced(kValidXml, "POSTenderID=\"2\"", "POSTenderID=\"5\"")));
        dialog.show();
        QVERIFY(office->boxes.shown.empty());
        Click(dialog, "cmdOk");
        QCOMPARE(Shown(), std::vector<std::string>{"Não pode mapear modalidades do tipo vale na " +
                                                   std::string(texts::lblPayments)});
        QVERIFY(dialog.isVisible());
    }

    void aVoucherAsTheDefaultTenderIsRefused() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& tender = Child<QComboBox>(dialog, "cboDefaultTenderPayment");
        Pick(tender, QStringLiteral("5"));
        QCOMPARE(tender.currentText(), QStringLiteral("Vale de refeição"));  // the code column is hidden
        Click(dialog, "cmdOk");
        QCOMPARE(office->boxes.shown.size(), std::size_t{1});
        const std::string& text = office->boxes.shown[0].text;
        QVERIFY(text.size() > 27 && text.substr(text.size() - 27) == " que nao seja do tipo vale.");
        QCOMPARE(text, Text(texts::kChooseAValueIn) + "Modalidade de Pagamento por Omissão que nao seja do tipo vale.");
        QVERIFY(dialog.isVisible());
    }

    void pickingAVoucherInThePaymentsGridIsRefusedAndClearsTheRow() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfPayments");
        Click(dialog, "btnAddPayment");
        QCOMPARE(grid.rowCount(), 2);
        grid.setCurrentCell(1, 0);
        grid.editItem(grid.item(1, 0));
        auto* kitraId = &OpenEditor<QLineEdit>(grid);
        Type(*kitraId, QStringLiteral("VALE"));
        Commit(*kitraId);
        QCOMPARE(grid.item(1, 0)->text(), QStringLiteral("VALE"));

        PickInGrid(grid, 1, QStringLiteral("5"));
        QCOMPARE(Shown(), std::vector<std::string>{"Não pode mapear modalidades do tipo vale!"});
        QCOMPARE(grid.item(1, 0)->text(), QString());
        QCOMPARE(grid.item(1, 1)->text(), QString());

        PickInGrid(grid, 1, QStringLiteral("3"));
        QCOMPARE(grid.item(1, 1)->text(), QStringLiteral("3"));
        QCOMPARE(grid.item(1, 2)->text(), QStringLiteral("Cartão de crédito"));
    }

    void aRestaurantTenderOf16CharactersIsRefused() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfPayments");
        grid.editItem(grid.item(0, 0));
        auto* box = &OpenEditor<QLineEdit>(grid);
        box->selectAll();
        Type(*box, QString(16, QLatin1Char('x')));
        Commit(*box);
        QCOMPARE(grid.item(0, 0)->text(), QStringLiteral("MB"));
    }

    void theVatColumnFiltersKeysAndRefusesValuesNotAboveMinusOne() {
        frmSettings dialog(Services());
        dialog.Open(Setting(kValidXml));
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfTaxableGroups");
        QCOMPARE(grid.model()->index(0, 0).data().toString(), QStringLiteral("23,00"));
        // Only the VAT column is shown "##0.00"; the taxable group's code is shown as it is.
        QCOMPARE(static_cast<QStyledItemDelegate*>(grid.itemDelegate())->displayText(
                     grid.item(0, 1)->data(Qt::DisplayRole), QLocale()),
                 QStringLiteral("1"));
        grid.editItem(grid.item(0, 0));
        auto* box = &OpenEditor<QLineEdit>(grid);
        box->selectAll();
        QTest::keyClick(box, Qt::Key_Delete);
        Type(*box, QStringLiteral("6a.5.x"));
        QCOMPARE(box->text(), QStringLiteral("6,5"));
        Commit(*box);
        QCOMPARE(grid.item(0, 0)->text(), QStringLiteral("6,5"));
        // Shown "##0.00".
        QCOMPARE(static_cast<QStyledItemDelegate*>(grid.itemDelegateForColumn(0))->displayText(grid.item(0, 0)->data(Qt::DisplayRole), QLocale()),
                 QStringLiteral("6,50"));

        grid.editItem(grid.item(0, 0));
        box = &OpenEditor<QLineEdit>(grid);
        box->selectAll();
        QTest::keyClick(box, Qt::Key_Delete);
        Type(*box, QStringLiteral("-1"));
        Commit(*box);
        QCOMPARE(grid.item(0, 0)->text(), QStringLiteral("6,5"));  // refused
    }

    // Config as a host calls it: typing, picking and OK in the real dialog store the settings.
    void configStoresWhatOkAccepts() {
        WithConnector([&](host::IConnector* connector) {

            std::unique_ptr<ModalWatcher> editorWatcher;
            ModalWatcher watcher([&](QWidget& dialog) {
                Click(dialog, "cmdDefaults");
                Pick(Child<QComboBox>(dialog, "cboStockDocument"), QStringLiteral("GT"));
                Pick(Child<QComboBox>(dialog, "cboDefaultTaxableGroup"), QStringLiteral("2"));
                auto& grid = Child<QTableWidget>(dialog, "vsfTaxableGroups");
                Click(dialog, "btnAddTaxableGroup");
                grid.editItem(grid.item(0, 0));
                auto& vat = OpenEditor<QLineEdit>(grid);
                Type(vat, QStringLiteral("13.0"));
                Commit(vat);
                PickInGrid(grid, 0, QStringLiteral("2"));

                // A restaurant, through the editor (a dialog in the dialog).
                editorWatcher = std::make_unique<ModalWatcher>([&](QWidget& editor) {
                    FillRequired(editor);
                    Click(editor, "cmdOk");
                }, QStringLiteral("frmAddRestaurant"));
                Click(dialog, "btnAddRestaurant");
                Click(dialog, "cmdOk");
            }, QStringLiteral("frmSettings"));
            // Nothing stored yet: the dialog opens on new settings (and says a restaurant is
            // needed).
            QVERIFY(connector->Config());
            QVERIFY(watcher.Seen());
            QVERIFY(editorWatcher && editorWatcher->Seen());
            QCOMPARE(Shown(), std::vector<std::string>{Text(texts::kAtLeastOneIn) + "Restaurantes:"});

            KitraConnectorSetting stored(*Services().utility);
            QVERIFY(Services().settingsStore->Load(stored));
            QCOMPARE(stored.InvoiceTransDocument, std::string("VB"));
            QCOMPARE(stored.CreditTransDocument, std::string("FAC"));
            QCOMPARE(stored.StockTransDocument, std::string("GT"));
            QCOMPARE(stored.CustomerPaymentTransDocument, std::string("PCL"));
            QCOMPARE(stored.DefaultTenderPayment, std::int16_t{1});
            QCOMPARE(stored.DefaultTaxableGroup, std::int16_t{2});
            QCOMPARE(stored.TaxableGroupEquivalence, (std::vector<TaxableGroupMapping>{{2, "13"}}));
            QVERIFY(stored.TenderEquivalence.empty());
            QCOMPARE(stored.Restaurants.Count(), 1);
            QCOMPARE(stored.Restaurants.Item(1).Name, std::string("Praia"));
            QCOMPARE(stored.Restaurants.Item(1).TransSerial, std::string("EXT"));
        });
    }

    void configCancelledStoresNothingAndAnswersFalse() {
        WithConnector([&](host::IConnector* connector) {
            QVERIFY(connector->LoadDefaults(kValidXml));
            KitraConnectorSetting before(*Services().utility);
            QVERIFY(Services().settingsStore->Load(before));
            ModalWatcher watcher([&](QWidget& dialog) {
                Pick(Child<QComboBox>(dialog, "cboStockDocument"), QStringLiteral("DEV"));
                Click(dialog, "btnDeletePayment");
                Click(dialog, "cmdCancel");
            }, QStringLiteral("frmSettings"));
            QVERIFY(!connector->Config());
            QVERIFY(watcher.Seen());
            KitraConnectorSetting after(*Services().utility);
            QVERIFY(Services().settingsStore->Load(after));
            QCOMPARE(after.ToXML(), before.ToXML());
            QCOMPARE(after.StockTransDocument, std::string("GT"));
        });
    }

    // The lists of both windows are the back office's records: what the administrator makes
    // with kitra-host shows in them.

    void theListsShowTheRecordsMadeWithKitraHost() {
        for (const std::string& command :
             {std::string("document-type add TKA 'Venda take-away' venda"),
              std::string("tender add 7 'MB Way' cartão"),
              std::string("taxable-group add 5 'Taxa de parque' --rate 1=6,5"),
              std::string("warehouse add 3 'Cave da Baixa'"),
              std::string("workstation add 4 Esplanada --warehouse 3"),
              std::string("supplier set 1 --name 'Peixaria Atlântica, Lda.'")}) {
            const std::string line = std::string(KITRA_HOST_PROGRAM) + " --data '" +
                                     office->Folder().string() + "' " + command + " >/dev/null";
            QCOMPARE(std::system(line.c_str()), 0);
        }
        {
            frmSettings dialog(Services());
            dialog.Open(Setting(kValidXml));
            dialog.show();
            auto& payments = Child<QTableWidget>(dialog, "vsfPayments");
            PickInGrid(payments, 0, QStringLiteral("7"));
            QCOMPARE(payments.item(0, frmSettings::kHostCode)->text(), QStringLiteral("7"));
            QCOMPARE(payments.item(0, frmSettings::kDescription)->text(), QStringLiteral("MB Way"));
            auto& groups = Child<QTableWidget>(dialog, "vsfTaxableGroups");
            PickInGrid(groups, 0, QStringLiteral("5"));
            QCOMPARE(groups.item(0, frmSettings::kDescription)->text(), QStringLiteral("Taxa de parque"));
            auto& invoice = Child<QComboBox>(dialog, "cboInvoiceTransDocument");
            Pick(invoice, QStringLiteral("TKA"));
            QCOMPARE(invoice.currentText(), QStringLiteral("TKA"));
            QCOMPARE(invoice.model()->index(invoice.currentIndex(), 1).data().toString(),
                     QStringLiteral("Venda take-away"));
        }
        frmAddRestaurant editor(Services());
        editor.show();
        // An entry of a combo, in whichever of its columns it shows.
        const auto listed = [&](const char* combo, const QString& text) {
            const QAbstractItemModel& model = *Child<QComboBox>(editor, combo).model();
            for (int row = 0; row < model.rowCount(); ++row) {
                for (int column = 0; column < model.columnCount(); ++column) {
                    if (model.index(row, column).data().toString() == text) return true;
                }
            }
            return false;
        };
        QVERIFY(listed("cboDefaultWarehouseID", QStringLiteral("Cave da Baixa")));
        QVERIFY(listed("cboWasteWarehouseID", QStringLiteral("Cave da Baixa")));
        QVERIFY(listed("cboWorkstation", QStringLiteral("Terminal 4")));
        Child<QDoubleSpinBox>(editor, "numDefaultSupplierID").setValue(1);
        QCOMPARE(Child<QLabel>(editor, "stfDefaultSupplierID").text(), QStringLiteral("Peixaria Atlântica, Lda."));
    }
};

}  // namespace

QObject* NewSettingsGuiTest() { return new SettingsGuiTest; }

}  // namespace kitra::testing

#include "SettingsGuiTest.moc"
