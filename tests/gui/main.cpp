// The dialogs' tests: real Qt widgets on the offscreen platform, so that no display is needed.
#include <QApplication>
#include <QTest>

#include "tests/gui/GuiTests.h"

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    int failed = 0;
    for (QObject* suite : kitra::testing::GuiTestSuites()) {
        failed += QTest::qExec(suite, argc, argv);
        delete suite;
    }
    return failed == 0 ? 0 : 1;
}
