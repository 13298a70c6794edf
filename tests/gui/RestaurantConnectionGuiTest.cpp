// The restaurant editor's "Testar ligação" against the test run's private MariaDB server: the
// user types the connection into the real editor and presses the button; the host's message-box
// service captures what the editor says. Offscreen, so no display is needed.
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <memory>

#include "settings/DialogTexts.h"
#include "settings/qt/frmAddRestaurant.h"
#include "tests/hostsupport/TestBackOffice.h"
#include "tests/support/ScratchDatabase.h"

namespace kitra::testing {
namespace {
namespace texts = dialog_texts;

void Retype(QWidget& editor, const char* name, const std::string& text) {
    auto* box = editor.findChild<QLineEdit*>(QString::fromLatin1(name));
    QVERIFY2(box != nullptr, name);
    box->selectAll();
    QTest::keyClick(box, Qt::Key_Delete);
    QTest::keyClicks(box, QString::fromStdString(text));
}

class RestaurantConnectionGuiTest : public QObject {
    Q_OBJECT

    std::unique_ptr<TestBackOffice> office;
    std::unique_ptr<test::ScratchDatabase> database;

    // The editor with the restaurant's connection typed in, as the test user of the server.
    void TypeConnection(QWidget& editor, const std::string& password) {
        const test::MariaDbServer& server = database->Server();
        Retype(editor, "txtServerName", server.host);
        Retype(editor, "txtServerPort", std::to_string(server.port));
        Retype(editor, "txtServerDB", database->Name());
        Retype(editor, "txtServerUser", server.user);
        Retype(editor, "txtServerPwd", password);
    }
    void PressTestConnection(QWidget& editor) {
        auto* button = editor.findChild<QPushButton*>(QStringLiteral("cmdTestConnection"));
        QVERIFY(button != nullptr);
        QTest::mouseClick(button, Qt::LeftButton);
    }

private slots:
    void init() {
        office = std::make_unique<TestBackOffice>();
        database = std::make_unique<test::ScratchDatabase>("gui_connection");
    }
    void cleanup() {
        database.reset();
        office.reset();
    }

    void aReachableDatabaseSaysTheConnectionWasMade() {
        frmAddRestaurant editor(office->Services());
        editor.show();
        TypeConnection(editor, database->Server().password);
        PressTestConnection(editor);
        QCOMPARE(office->boxes.shown.size(), std::size_t{1});
        QCOMPARE(office->boxes.shown[0].text, std::string("Ligação estabelecida com sucesso."));
        QCOMPARE(office->boxes.shown[0].style, host::MessageStyle::Information);
        QCOMPARE(office->boxes.shown[0].title, office->Services().application->Text(texts::kRestaurantTitle));
        QVERIFY(editor.isVisible());  // the test changes nothing and closes nothing
    }

    void aWrongPasswordSaysWhyTheConnectionFailed() {
        frmAddRestaurant editor(office->Services());
        editor.show();
        TypeConnection(editor, database->Server().password + "-errada");
        PressTestConnection(editor);
        QCOMPARE(office->boxes.shown.size(), std::size_t{1});
        const std::string& text = office->boxes.shown[0].text;
        const std::string prefix = "Erro ao estabelecer a ligação: ";
        QVERIFY2(text.rfind(prefix, 0) == 0, text.c_str());
        // The driver's own description follows: the server refused the user.
        QVERIFY2(text.find("Access denied") != std::string::npos, text.c_str());
        QCOMPARE(office->boxes.shown[0].style, host::MessageStyle::Information);
        QCOMPARE(office->boxes.shown[0].title, std::string("Error"));
        QVERIFY(editor.isVisible());
    }
};

}  // namespace
}  // namespace kitra::testing

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    kitra::testing::RestaurantConnectionGuiTest suite;
    return QTest::qExec(&suite, argc, argv);
}

#include "RestaurantConnectionGuiTest.moc"
