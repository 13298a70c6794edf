// The import log list and the contents dialog driven as a user drives them: real widgets found
// by their object names, clicks and double clicks, over a real back office; the question box is
// answered through the host's message-box service.
#include <dlfcn.h>

#include <QHeaderView>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>
#include <QTextBlock>
#include <memory>
#include <sstream>

#include "backoffice/cli/KitraHost.h"
#include "core/ScreenUnits.h"
#include "host/Com.h"
#include "host/IConnector.h"
#include "log/DSOKitraLog.h"
#include "log/KitraLogViewer.h"
#include "log/qt/frmKitraLog.h"
#include "log/qt/frmKitraLogContents.h"
#include "tests/gui/DoubleClick.h"
#include "tests/gui/GuiTests.h"
#include "tests/gui/ModalWatcher.h"
#include "tests/hostsupport/TestBackOffice.h"

namespace kitra::testing {
namespace {

template <class T>
T& Child(QWidget& parent, const char* name) {
    T* child = parent.findChild<T*>(QString::fromLatin1(name));
    if (child == nullptr) qFatal("no widget named %s", name);
    return *child;
}

// The centre of a data row's cell in the grid's viewport.
QPoint CellCentre(QTableWidget& grid, int row, int column) {
    return grid.visualRect(grid.model()->index(row, column)).center();
}

std::vector<std::string> GridRows(QTableWidget& grid) {
    std::vector<std::string> rows;
    for (int row = 0; row < grid.rowCount(); ++row) {
        rows.push_back(grid.item(row, 0)->text().toStdString() + " " +
                       grid.item(row, 1)->text().toStdString());
    }
    return rows;
}

class LogViewerGuiTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestBackOffice> office;

    const host::HostServices& Services() { return office->Services(); }

    void Save(const std::string& restaurant, DateTime when, const std::string& contents) {
        DSOKitraLog log(Services());
        KitraLog record;
        record.RestaurantID = restaurant;
        record.ImportDate = when;
        record.Contents = contents;
        QVERIFY(log.Save(record));
    }
    // Five imports on the first five days of March 2011, newest last.
    void SaveFive() {
        for (int day = 1; day <= 5; ++day) {
            Save(day % 2 ? "Centro" : "Praia", DateTime{2011, 3, day, 9, 5, 7},
                 "linha 1 do dia " + std::to_string(day) + "\nlinha 2");
        }
    }
    long TableRows() {
        return Services().connection->Query(host::SqlStatement("SELECT * FROM Kitra2Log")).RecordCount();
    }

private slots:
    void init() {
        office = std::make_unique<TestBackOffice>();
        office->AttachAsHost(KITRA_CONNECTOR_MODULE);
        QVERIFY(DSOKitraLog(Services()).CheckOrCreateKitraLogTable());
    }
    void cleanup() { office.reset(); }

    void anEmptyTableShowsTheHeaderRowOnlyAndDeleteDoesNothing() {
        frmKitraLog dialog(Services());
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");
        QCOMPARE(grid.rowCount(), 0);
        QCOMPARE(grid.columnCount(), 3);
        QVERIFY(grid.horizontalHeader()->isVisible());
        QCOMPARE(grid.horizontalHeaderItem(0)->text(), QStringLiteral("Restaurante"));
        QCOMPARE(grid.horizontalHeaderItem(1)->text(), QStringLiteral("Data Importação"));
        QCOMPARE(grid.horizontalHeaderItem(2)->text(), QString());
        QTest::mouseClick(&Child<QPushButton>(dialog, "cmdDelete"), Qt::LeftButton);
        QVERIFY(office->boxes.shown.empty());
        QVERIFY(!dialog.Changed());
    }

    void theGridHasTheColumnsWidthsAndSelectionOfTheList() {
        SaveFive();
        frmKitraLog dialog(Services());
        dialog.show();
        QCOMPARE(dialog.windowTitle().toStdString(), Services().application->Text(kLogListTitleText));
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");
        const int dpi = grid.logicalDpiX();
        QCOMPARE(grid.columnWidth(0), TwipsToPixels(3000, dpi));
        QCOMPARE(grid.columnWidth(1), TwipsToPixels(3700, dpi));
        QCOMPARE(grid.columnWidth(2), TwipsToPixels(285, dpi));
        QCOMPARE(grid.selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(grid.selectionMode(), QAbstractItemView::ExtendedSelection);
        QCOMPARE(grid.editTriggers(), QAbstractItemView::NoEditTriggers);
        // Newest first, the date as the host writes dates.
        QCOMPARE(GridRows(grid), (std::vector<std::string>{
                                     "Centro 05-03-2011 09:05:07", "Praia 04-03-2011 09:05:07",
                                     "Centro 03-03-2011 09:05:07", "Praia 02-03-2011 09:05:07",
                                     "Centro 01-03-2011 09:05:07"}));
    }

    void threeSelectedRowsConfirmedAreDeletedAndNoOthers() {
        SaveFive();
        frmKitraLog dialog(Services());
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(grid, 0, 0));
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::ControlModifier, CellCentre(grid, 2, 1));
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::ControlModifier, CellCentre(grid, 3, 0));
        QCOMPARE(grid.selectionModel()->selectedRows().size(), 3);

        office->boxes.answers = {host::MessageAnswer::Yes};
        QTest::mouseClick(&Child<QPushButton>(dialog, "cmdDelete"), Qt::LeftButton);

        QCOMPARE(office->boxes.shown.size(), std::size_t{1});
        QCOMPARE(office->boxes.shown[0].text, std::string("Deseja mesmo apagar estes registos?"));
        QCOMPARE(office->boxes.shown[0].style, host::MessageStyle::Question);
        QCOMPARE(office->boxes.shown[0].buttons, host::MessageButtons::YesNo);
        QCOMPARE(office->boxes.shown[0].title, Services().application->Text(kLogListTitleText));
        QCOMPARE(GridRows(grid), (std::vector<std::string>{"Praia 04-03-2011 09:05:07",
                                                           "Centro 01-03-2011 09:05:07"}));
        QCOMPARE(TableRows(), 2L);
        QVERIFY(dialog.Changed());

        // Opened again, the list shows exactly the two that stay.
        frmKitraLog again(Services());
        QCOMPARE(GridRows(Child<QTableWidget>(again, "vsfImportLog")), GridRows(grid));
    }

    void answeringNoDeletesNothing() {
        SaveFive();
        frmKitraLog dialog(Services());
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(grid, 1, 0));
        office->boxes.answers = {host::MessageAnswer::No};
        QTest::mouseClick(&Child<QPushButton>(dialog, "cmdDelete"), Qt::LeftButton);
        QCOMPARE(office->boxes.shown.size(), std::size_t{1});
        QCOMPARE(grid.rowCount(), 5);
        QCOMPARE(TableRows(), 5L);
        QVERIFY(!dialog.Changed());
    }

    void aFailedDeleteStillRemovesTheRowFromTheGrid() {
        SaveFive();
        frmKitraLog dialog(Services());
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");
        Services().connection->Execute(host::SqlStatement("DROP TABLE Kitra2Log"));
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(grid, 0, 0));
        office->boxes.answers = {host::MessageAnswer::Yes};
        QTest::mouseClick(&Child<QPushButton>(dialog, "cmdDelete"), Qt::LeftButton);
        QCOMPARE(grid.rowCount(), 4);
    }

    void doubleClickingARowShowsItsLogWithEveryLineOnItsOwnLine() {
        Save("Centro", DateTime{2011, 3, 1, 9, 5, 7}, "primeira\nsegunda\n\nquarta\r\nquinta");
        frmKitraLog dialog(Services());
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");

        QStringList lines;
        QString caption;
        bool readOnly = false;
        ModalWatcher watcher([&](QWidget& contents) {
            caption = contents.windowTitle();
            auto& text = Child<QPlainTextEdit>(contents, "txtLog");
            readOnly = text.isReadOnly();
            for (QTextBlock block = text.document()->begin(); block.isValid(); block = block.next()) {
                lines << block.text();
            }
            QTest::mouseClick(&Child<QPushButton>(contents, "cmdOk"), Qt::LeftButton);
        });
        DoubleClick(grid.viewport(), CellCentre(grid, 0, 1));

        QVERIFY(watcher.Seen());
        QCOMPARE(watcher.SeenName(), QStringLiteral("frmKitraLogContents"));
        QCOMPARE(caption.toStdString(), Services().application->Text(kLogContentsTitleText) +
                                            "Centro (01-03-2011 09:05:07)");
        QVERIFY(readOnly);
        QCOMPARE(lines, (QStringList{"primeira", "segunda", "", "quarta", "quinta"}));
        QCOMPARE(QApplication::activeModalWidget(), nullptr);
    }

    void doubleClickingTheHeaderOrBelowTheRowsOpensNothing() {
        SaveFive();
        frmKitraLog dialog(Services());
        dialog.resize(dialog.width(), 600);  // room below the rows
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");
        ModalWatcher watcher([](QWidget& modal) { modal.close(); });
        DoubleClick(grid.horizontalHeader()->viewport(), QPoint(20, grid.horizontalHeader()->height() / 2));
        const QRect lastRow = grid.visualRect(grid.model()->index(4, 0));
        QVERIFY(lastRow.bottom() + 20 < grid.viewport()->height());
        DoubleClick(grid.viewport(), QPoint(lastRow.center().x(), lastRow.bottom() + 15));
        QTest::qWait(50);
        QVERIFY(!watcher.Seen());
        QVERIFY(office->boxes.shown.empty());
    }

    void aFailedReadShowsTheWarningAndOpensNothing() {
        SaveFive();
        frmKitraLog dialog(Services());
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");
        Services().connection->Execute(host::SqlStatement("DROP TABLE Kitra2Log"));
        ModalWatcher watcher([](QWidget& modal) { modal.close(); });
        DoubleClick(grid.viewport(), CellCentre(grid, 0, 0));
        QTest::qWait(50);
        QVERIFY(!watcher.Seen());
        QCOMPARE(office->boxes.shown.size(), std::size_t{1});
        QVERIFY(office->boxes.shown[0].text.rfind("Ocorreu uma excepção na leitura do log\r\n\r\n", 0) == 0);
        QCOMPARE(office->boxes.shown[0].style, host::MessageStyle::Exclamation);
        QCOMPARE(office->boxes.shown[0].title, std::string("Erro"));
    }

    void resizingLaysTheGridAndButtonsOutAgain() {
        SaveFive();
        frmKitraLog dialog(Services());
        dialog.show();
        auto& grid = Child<QTableWidget>(dialog, "vsfImportLog");
        auto& exit = Child<QPushButton>(dialog, "cmdExit");
        auto& remove = Child<QPushButton>(dialog, "cmdDelete");
        dialog.resize(900, 700);
        QApplication::processEvents();
        const int gridWidthBig = grid.width();
        QVERIFY(grid.geometry().bottom() < exit.geometry().top());
        QVERIFY(dialog.width() - exit.geometry().right() < 30);
        QVERIFY(dialog.height() - exit.geometry().bottom() < 30);
        QCOMPARE(remove.geometry().top(), exit.geometry().top());
        dialog.resize(600, 400);
        QApplication::processEvents();
        QVERIFY(grid.width() < gridWidthBig);
        QVERIFY(dialog.width() - exit.geometry().right() < 30);
        QVERIFY(dialog.height() - exit.geometry().bottom() < 30);

        frmKitraLogContents contents(Services());
        contents.show();
        auto& text = Child<QPlainTextEdit>(contents, "txtLog");
        auto& ok = Child<QPushButton>(contents, "cmdOk");
        contents.resize(1000, 800);
        QApplication::processEvents();
        QVERIFY(contents.width() - text.geometry().right() < 30);
        QVERIFY(text.geometry().bottom() < ok.geometry().top());
        QVERIFY(contents.height() - ok.geometry().bottom() < 30);
    }

    void exitAndOkClose() {
        frmKitraLog dialog(Services());
        dialog.show();
        QTest::mouseClick(&Child<QPushButton>(dialog, "cmdExit"), Qt::LeftButton);
        QVERIFY(!dialog.isVisible());

        frmKitraLogContents contents(Services());
        KitraLog record;
        record.RestaurantID = "Centro";
        contents.Fill(record);
        contents.show();
        QCOMPARE(Child<QPushButton>(contents, "cmdOk").text().toStdString(),
                 Services().application->Text(kLogContentsOkText));
        QTest::mouseClick(&Child<QPushButton>(contents, "cmdOk"), Qt::LeftButton);
        QVERIFY(!contents.isVisible());
    }

    // ShowTrace as a host calls it: the component's module, its class factory, IConnector.
    void showTraceOpensTheListModally() {
        SaveFive();
        void* module = ::dlopen(KITRA_CONNECTOR_MODULE, RTLD_NOW | RTLD_LOCAL);
        QVERIFY2(module != nullptr, ::dlerror());
        auto getClassObject = reinterpret_cast<host::DllGetClassObjectFn>(::dlsym(module, "DllGetClassObject"));
        QVERIFY(getClassObject != nullptr);
        {
            const host::Guid clsid{0x3F6E9A24, 0x71C8, 0x4D5B, {0xA0, 0xE2, 0x8B, 0x9C, 0x4D, 0x17, 0xF5, 0xA6}};
            host::ComPtr<host::IClassFactory> factory;
            QCOMPARE(getClassObject(clsid, host::kIID_IClassFactory, factory.Out()), host::kOk);
            host::ComPtr<host::IConnector> connector;
            QCOMPARE(factory->CreateInstance(nullptr, host::kIID_IConnector, connector.Out()), host::kOk);

            int rows = -1;
            ModalWatcher watcher([&](QWidget& list) {
                rows = Child<QTableWidget>(list, "vsfImportLog").rowCount();
                QTest::mouseClick(&Child<QPushButton>(list, "cmdExit"), Qt::LeftButton);
            });
            connector->ShowTrace();
            QVERIFY(watcher.Seen());
            QCOMPARE(watcher.SeenName(), QStringLiteral("frmKitraLog"));
            QCOMPARE(rows, 5);
            QVERIFY(office->boxes.shown.empty());
        }
        ::dlclose(module);
    }

    // kitra-host trace, in this process, whose Qt application object it uses.
    void kitraHostTraceOpensTheList() {
        SaveFive();
        int rows = -1;
        ModalWatcher watcher([&](QWidget& list) {
            rows = Child<QTableWidget>(list, "vsfImportLog").rowCount();
            QTest::mouseClick(&Child<QPushButton>(list, "cmdExit"), Qt::LeftButton);
        });
        std::ostringstream out, err;
        const int status = backoffice::cli::RunKitraHost(
            {"--data", office->Folder().string(), "trace"}, nullptr, out, err);
        QCOMPARE(status, 0);
        QVERIFY2(err.str().empty(), err.str().c_str());
        QVERIFY(watcher.Seen());
        QCOMPARE(rows, 5);
    }
};

}  // namespace

QObject* NewLogViewerGuiTest() { return new LogViewerGuiTest; }

}  // namespace kitra::testing

#include "LogViewerGuiTest.moc"
