#include "backoffice/desktop/QtMessageBoxes.h"

#include <QApplication>
#include <QAbstractButton>
#include <QMessageBox>

namespace kitra::backoffice {
namespace {

QMessageBox::Icon IconOf(host::MessageStyle style) {
    switch (style) {
        case host::MessageStyle::Information: return QMessageBox::Information;
        case host::MessageStyle::Critical: return QMessageBox::Critical;
        case host::MessageStyle::Exclamation: return QMessageBox::Warning;
        case host::MessageStyle::Question: return QMessageBox::Question;
        case host::MessageStyle::Plain: break;
    }
    return QMessageBox::NoIcon;
}

}  // namespace

host::MessageAnswer QtMessageBoxes::Show(const std::string& text, host::MessageStyle style,
                                         host::MessageButtons buttons, const std::string& title) {
    // Texts break lines with a carriage return and a line feed; Qt breaks them at the line feed.
    QString shown = QString::fromStdString(text);
    shown.remove(QLatin1Char('\r'));
    const bool question = buttons == host::MessageButtons::YesNo;
    QMessageBox box(IconOf(style), QString::fromStdString(title), shown,
                    question ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok,
                    QApplication::activeWindow());
    box.setObjectName(QStringLiteral("hostMessageBox"));
    if (question) {
        box.button(QMessageBox::Yes)->setText(QStringLiteral("Sim"));
        box.button(QMessageBox::No)->setText(QStringLiteral("Não"));
    }
    const int chosen = box.exec();
    if (!question) return host::MessageAnswer::Ok;
    return chosen == QMessageBox::Yes ? host::MessageAnswer::Yes : host::MessageAnswer::No;
}

}  // namespace kitra::backoffice
