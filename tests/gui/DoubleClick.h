#pragma once
// A user's double click on a widget, as the dialogs' tests give it.
#include <QPoint>
#include <QTest>
#include <QWidget>

namespace kitra::testing {

// Press and release, then the second press that the window system reports as a double click
// (which is all QTest::mouseDClick sends to a widget).
inline void DoubleClick(QWidget* widget, QPoint position) {
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, position);
    QTest::mouseDClick(widget, Qt::LeftButton, Qt::NoModifier, position);
}

}  // namespace kitra::testing
