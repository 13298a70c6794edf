#pragma once
// The import log list as a Qt dialog: the grid vsfImportLog and the buttons cmdDelete and
// cmdExit, bound to the list's rules (KitraLogViewer). Double-clicking a data row opens its log
// in frmKitraLogContents.
#include <QDialog>
#include <memory>

#include "host/HostServices.h"

class QPushButton;
class QTableWidget;

namespace kitra {

class KitraLogViewer;
class TableLogGrid;

class frmKitraLog final : public QDialog {
public:
    explicit frmKitraLog(const host::HostServices& services, QWidget* parent = nullptr);
    ~frmKitraLog() override;

    // True once rows have been deleted.
    bool Changed() const;

private:
    void OpenRow(int row);

    const host::HostServices& services_;
    QTableWidget* vsfImportLog_;
    QPushButton* cmdDelete_;
    QPushButton* cmdExit_;
    std::unique_ptr<TableLogGrid> grid_;
    std::unique_ptr<KitraLogViewer> viewer_;
};

}  // namespace kitra
