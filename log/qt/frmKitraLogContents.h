#pragma once
// One import's whole text log as a Qt dialog: the read-only text box txtLog and the button
// cmdOk, bound to the contents rules (caption and text).
#include <QDialog>

#include "host/HostServices.h"
#include "log/KitraLog.h"

class QPlainTextEdit;
class QPushButton;

namespace kitra {

class frmKitraLogContents final : public QDialog {
public:
    explicit frmKitraLogContents(const host::HostServices& services, QWidget* parent = nullptr);

    // Fills the dialog with the record (without showing it).
    void Fill(const KitraLog& record);
    // Fills the dialog and shows it modally; cmdOk closes it.
    void ShowLog(const KitraLog& record);

private:
    const host::HostServices& services_;
    QPlainTextEdit* txtLog_;
    QPushButton* cmdOk_;
};

}  // namespace kitra
