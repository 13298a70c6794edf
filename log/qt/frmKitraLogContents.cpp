#include "log/qt/frmKitraLogContents.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "log/KitraLogContents.h"
#include "log/KitraLogViewer.h"

namespace kitra {
namespace {

// The rules give the text with carriage return and line feed pairs; a Qt text box breaks lines
// at a line feed and would show a carriage return as a character, so the returns go.
QString ForTextBox(const std::string& text) {
    QString shown = QString::fromStdString(text);
    shown.remove(QLatin1Char('\r'));
    return shown;
}

}  // namespace

frmKitraLogContents::frmKitraLogContents(const host::HostServices& services, QWidget* parent)
    : QDialog(parent),
      services_(services),
      txtLog_(new QPlainTextEdit(this)),
      cmdOk_(new QPushButton(this)) {
    setObjectName(QStringLiteral("frmKitraLogContents"));
    txtLog_->setObjectName(QStringLiteral("txtLog"));
    cmdOk_->setObjectName(QStringLiteral("cmdOk"));
    txtLog_->setReadOnly(true);
    txtLog_->setLineWrapMode(QPlainTextEdit::NoWrap);
    // The log's columns line up only in a fixed-width font.
    txtLog_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    cmdOk_->setText(QString::fromStdString(services_.application->Text(kLogContentsOkText)));
    cmdOk_->setDefault(true);

    // The text box fills the dialog; the button stays under it on the right whatever the size.
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdOk_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(txtLog_, 1);
    layout->addLayout(buttons);
    resize(720, 480);

    connect(cmdOk_, &QPushButton::clicked, this, &QDialog::accept);
}

void frmKitraLogContents::Fill(const KitraLog& record) {
    setWindowTitle(QString::fromStdString(LogContentsCaption(services_, record)));
    txtLog_->setPlainText(ForTextBox(LogContentsText(record.Contents)));
}

void frmKitraLogContents::ShowLog(const KitraLog& record) {
    Fill(record);
    exec();
}

}  // namespace kitra
