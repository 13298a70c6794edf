#include "settings/qt/DropDownListCell.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QScrollBar>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "core/ScreenUnits.h"

namespace kitra {

DropDownListCell::DropDownListCell(const std::vector<ListEntry>& entries,
                                   const std::vector<int>& columnWidthsPoints,
                                   std::function<void(DropDownListCell&)> picked, QWidget* parent)
    : QWidget(parent),
      onPicked_(std::move(picked)),
      shown_(new QLabel(this)),
      button_(new QToolButton(this)),
      popup_(new QFrame(this, Qt::Popup)),
      list_(new QTableWidget(static_cast<int>(entries.size()), 2, popup_)) {
    setObjectName(QStringLiteral("cellDropDownList"));
    setFocusPolicy(Qt::StrongFocus);
    setAutoFillBackground(true);
    shown_->setObjectName(QStringLiteral("lblCellCode"));
    shown_->setContentsMargins(3, 0, 0, 0);
    button_->setObjectName(QStringLiteral("cmdDropDown"));
    button_->setText(QStringLiteral("..."));
    button_->setFocusPolicy(Qt::NoFocus);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(shown_, 1);
    row->addWidget(button_);
    connect(button_, &QToolButton::clicked, this, [this] { DropDown(); });

    popup_->setObjectName(QStringLiteral("frmDropDownList"));
    popup_->setFrameShape(QFrame::Box);
    list_->setObjectName(QStringLiteral("lstHostEntries"));
    list_->horizontalHeader()->hide();
    list_->verticalHeader()->hide();
    list_->setShowGrid(false);
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    for (int entry = 0; entry < static_cast<int>(entries.size()); ++entry) {
        list_->setItem(entry, 0, new QTableWidgetItem(QString::fromStdString(entries[entry].code)));
        list_->setItem(entry, 1, new QTableWidgetItem(QString::fromStdString(entries[entry].description)));
    }
    int width = 0;
    for (int column = 0; column < 2; ++column) {
        const int points = column < static_cast<int>(columnWidthsPoints.size()) ? columnWidthsPoints[column] : 0;
        const int pixels = PointsToPixels(points, logicalDpiX());
        list_->setColumnHidden(column, pixels == 0);
        list_->setColumnWidth(column, pixels);
        width += pixels;
    }
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* box = new QVBoxLayout(popup_);
    box->setContentsMargins(1, 1, 1, 1);
    box->addWidget(list_);
    const int rows = std::min(list_->rowCount(), 10);
    popup_->resize(width + list_->verticalScrollBar()->sizeHint().width() + 4,
                   std::max(rows, 1) * list_->verticalHeader()->defaultSectionSize() + 4);
    // A click picks the entry under it; Enter picks the current one.
    connect(list_, &QTableWidget::clicked, this, [this](const QModelIndex& index) { Pick(index.row()); });
    connect(list_, &QTableWidget::activated, this, [this](const QModelIndex& index) { Pick(index.row()); });
}

void DropDownListCell::SetCode(const QString& code) {
    code_ = code;
    picked_ = false;
    shown_->setText(code);
}

void DropDownListCell::DropDown() {
    list_->clearSelection();
    list_->setCurrentItem(nullptr);
    for (int row = 0; row < list_->rowCount(); ++row) {
        if (list_->item(row, 0)->text() == code_) {
            list_->setCurrentCell(row, list_->isColumnHidden(0) ? 1 : 0);
            list_->scrollToItem(list_->item(row, 0));
            break;
        }
    }
    if (list_->currentRow() < 0 && list_->rowCount() > 0) list_->setCurrentCell(0, list_->isColumnHidden(0) ? 1 : 0);
    // Below the cell, or above it when the screen ends first.
    QPoint at = mapToGlobal(QPoint(0, height()));
    if (const QScreen* screen = this->screen()) {
        const QRect area = screen->availableGeometry();
        if (at.y() + popup_->height() > area.bottom()) at.setY(mapToGlobal(QPoint(0, 0)).y() - popup_->height());
        at.setX(std::max(area.left(), std::min(at.x(), area.right() - popup_->width())));
    }
    popup_->move(at);
    popup_->show();
    list_->setFocus(Qt::PopupFocusReason);
}

bool DropDownListCell::DroppedDown() const { return popup_->isVisible(); }

void DropDownListCell::keyPressEvent(QKeyEvent* event) {
    // The keys that drop a list down: F4, Alt+Down and the space bar.
    const bool altDown = event->key() == Qt::Key_Down && (event->modifiers() & Qt::AltModifier);
    if (event->key() == Qt::Key_F4 || altDown || event->key() == Qt::Key_Space) {
        DropDown();
        return;
    }
    QWidget::keyPressEvent(event);
}

void DropDownListCell::Pick(int row) {
    if (row < 0 || row >= list_->rowCount()) return;
    code_ = list_->item(row, 0)->text();
    picked_ = true;
    shown_->setText(code_);
    popup_->hide();
    setFocus(Qt::PopupFocusReason);
    onPicked_(*this);
}

}  // namespace kitra
