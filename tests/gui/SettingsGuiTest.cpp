// The restaurant editor and the settings dialog driven as a user drives them: real widgets found
// by their object names, typing, picking and clicking, over a real back office; the messages are
// captured by the host's message-box service and the settings stored are read back.
#include <dlfcn.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDoubleSpinBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QTest>
#include <QTimeEdit>
#include <memory>

#include "host/Com.h"
#include "host/IConnector.h"
#include "settings/DialogTexts.h"
#include "settings/qt/frmAddRestaurant.h"
#include "settings/qt/frmSettings.h"
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

private slots:
    void init() { office = std::make_unique<TestBackOffice>(); }
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
        ModalWatcher watcher([&](QWidget& dialog) {
            FillRequired(dialog);
            Click(dialog, "cmdOk");
        }, QStringLiteral("frmAddRestaurant"));
        QVERIFY(editor.Edit(record));
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

    // frmSettings

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

        grid.setCurrentCell(1, 1);
        grid.editItem(grid.item(1, 1));
        auto& list = OpenEditor<QComboBox>(grid);
        list.setCurrentIndex(list.findData(QStringLiteral("5")));
        Commit(list);
        QCOMPARE(Shown(), std::vector<std::string>{"Não pode mapear modalidades do tipo vale!"});
        QCOMPARE(grid.item(1, 0)->text(), QString());
        QCOMPARE(grid.item(1, 1)->text(), QString());

        grid.editItem(grid.item(1, 1));
        auto& again = OpenEditor<QComboBox>(grid);
        again.setCurrentIndex(again.findData(QStringLiteral("3")));
        Commit(again);
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
        void* module = ::dlopen(KITRA_CONNECTOR_MODULE, RTLD_NOW | RTLD_LOCAL);
        QVERIFY2(module != nullptr, ::dlerror());
        auto getClassObject = reinterpret_cast<host::DllGetClassObjectFn>(::dlsym(module, "DllGetClassObject"));
        {
            const host::Guid clsid{0x3F6E9A24, 0x71C8, 0x4D5B, {0xA0, 0xE2, 0x8B, 0x9C, 0x4D, 0x17, 0xF5, 0xA6}};
            host::ComPtr<host::IClassFactory> factory;
            QCOMPARE(getClassObject(clsid, host::kIID_IClassFactory, factory.Out()), host::kOk);
            host::ComPtr<host::IConnector> connector;
            QCOMPARE(factory->CreateInstance(nullptr, host::kIID_IConnector, connector.Out()), host::kOk);

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
                grid.editItem(grid.item(0, 1));
                auto& list = OpenEditor<QComboBox>(grid);
                list.setCurrentIndex(list.findData(QStringLiteral("2")));
                Commit(list);

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
        }
        ::dlclose(module);
    }
};

}  // namespace

QObject* NewSettingsGuiTest() { return new SettingsGuiTest; }

}  // namespace kitra::testing

#include "SettingsGuiTest.moc"
