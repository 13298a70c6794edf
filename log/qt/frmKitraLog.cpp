#include "log/qt/frmKitraLog.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "core/ScreenUnits.h"
#include "log/KitraLogViewer.h"
#include "log/qt/frmKitraLogContents.h"

namespace kitra {

// The list's grid over a QTableWidget; its horizontal header is the grid's fixed header row.
class TableLogGrid final : public IKitraLogGrid {
public:
    explicit TableLogGrid(QTableWidget& table) : table_(table) {}

    void ClearRows() override { table_.setRowCount(0); }
    void AddRow(const std::string& restaurantId, const std::string& importDate) override {
        const int row = table_.rowCount();
        table_.insertRow(row);
        table_.setItem(row, 0, new QTableWidgetItem(QString::fromStdString(restaurantId)));
        table_.setItem(row, 1, new QTableWidgetItem(QString::fromStdString(importDate)));
        table_.setItem(row, 2, new QTableWidgetItem());
    }
    int RowCount() const override { return table_.rowCount(); }
    std::string Cell(int row, int column) const override {
        const QTableWidgetItem* item = table_.item(row, column);
        return item == nullptr ? std::string() : item->text().toStdString();
    }
    std::vector<int> SelectedRows() const override {
        std::vector<int> rows;
        for (const QModelIndex& index : table_.selectionModel()->selectedRows()) {
            rows.push_back(index.row());
        }
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    void RemoveRow(int row) override { table_.removeRow(row); }

private:
    QTableWidget& table_;
};

frmKitraLog::frmKitraLog(const host::HostServices& services, QWidget* parent)
    : QDialog(parent),
      services_(services),
      vsfImportLog_(new QTableWidget(this)),
      cmdDelete_(new QPushButton(QStringLiteral("Apagar"), this)),
      cmdExit_(new QPushButton(QStringLiteral("Sair"), this)),
      grid_(std::make_unique<TableLogGrid>(*vsfImportLog_)),
      viewer_(std::make_unique<KitraLogViewer>(services, *grid_)) {
    setObjectName(QStringLiteral("frmKitraLog"));
    vsfImportLog_->setObjectName(QStringLiteral("vsfImportLog"));
    cmdDelete_->setObjectName(QStringLiteral("cmdDelete"));
    cmdExit_->setObjectName(QStringLiteral("cmdExit"));
    setWindowTitle(QString::fromStdString(viewer_->Title()));

    // The grid: one fixed header row, three columns, whole rows selected, several at once,
    // nothing edited in place.
    vsfImportLog_->setColumnCount(static_cast<int>(KitraLogViewer::kHeadings.size()));
    QStringList headings;
    for (const char* heading : KitraLogViewer::kHeadings) headings << QString::fromUtf8(heading);
    vsfImportLog_->setHorizontalHeaderLabels(headings);
    vsfImportLog_->verticalHeader()->hide();
    vsfImportLog_->setSelectionBehavior(QAbstractItemView::SelectRows);
    vsfImportLog_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    vsfImportLog_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    vsfImportLog_->horizontalHeader()->setHighlightSections(false);
    // The margin column is narrower than Qt's default least width of a column.
    vsfImportLog_->horizontalHeader()->setMinimumSectionSize(1);
    int gridWidth = 0;
    for (std::size_t column = 0; column < KitraLogViewer::kColumnWidthsTwips.size(); ++column) {
        const int pixels = TwipsToPixels(KitraLogViewer::kColumnWidthsTwips[column], logicalDpiX());
        vsfImportLog_->setColumnWidth(static_cast<int>(column), pixels);
        gridWidth += pixels;
    }

    // The grid fills the dialog; the buttons stay under it on the right whatever the size.
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdDelete_);
    buttons->addWidget(cmdExit_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(vsfImportLog_, 1);
    layout->addLayout(buttons);
    resize(gridWidth + vsfImportLog_->frameWidth() * 2 + layout->contentsMargins().left() +
               layout->contentsMargins().right() + 20,
           360);

    connect(vsfImportLog_, &QTableWidget::cellDoubleClicked, this,
            [this](int row, int) { OpenRow(row); });
    connect(cmdDelete_, &QPushButton::clicked, this, [this] { viewer_->DeleteSelected(); });
    connect(cmdExit_, &QPushButton::clicked, this, &QDialog::accept);

    viewer_->Load();
}

frmKitraLog::~frmKitraLog() = default;

bool frmKitraLog::Changed() const { return viewer_->Changed(); }

void frmKitraLog::OpenRow(int row) {
    const std::optional<KitraLog> record = viewer_->OpenRow(row);
    if (!record) return;
    frmKitraLogContents contents(services_, this);
    contents.ShowLog(*record);
}

}  // namespace kitra
