#include "settings/qt/TwoColumnCombo.h"

#include <QHeaderView>
#include <QStandardItemModel>
#include <QTableView>

#include "core/ScreenUnits.h"

namespace kitra {

TwoColumnCombo::TwoColumnCombo(const char* objectName, std::vector<int> columnWidthsPoints,
                               QWidget* parent)
    : QComboBox(parent), widths_(std::move(columnWidthsPoints)) {
    setObjectName(QString::fromLatin1(objectName));
    auto* model = new QStandardItemModel(0, 2, this);
    setModel(model);
    auto* view = new QTableView(this);
    view->horizontalHeader()->hide();
    view->verticalHeader()->hide();
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setShowGrid(false);
    setView(view);
    // The box shows the code unless the code column is hidden.
    setModelColumn(widths_.at(0) == 0 ? 1 : 0);
    int total = 0;
    for (std::size_t column = 0; column < widths_.size(); ++column) {
        const int pixels = PointsToPixels(widths_[column], logicalDpiX());
        view->setColumnHidden(static_cast<int>(column), pixels == 0);
        view->setColumnWidth(static_cast<int>(column), pixels);
        total += pixels;
    }
    view->setMinimumWidth(total + 4);
    setCurrentIndex(-1);
}

void TwoColumnCombo::SetEntries(const std::vector<ListEntry>& entries) {
    auto* model = static_cast<QStandardItemModel*>(this->model());
    model->removeRows(0, model->rowCount());
    for (const ListEntry& entry : entries) {
        auto* code = new QStandardItem(QString::fromStdString(entry.code));
        auto* description = new QStandardItem(QString::fromStdString(entry.description));
        model->appendRow({code, description});
    }
    setCurrentIndex(-1);
}

std::string TwoColumnCombo::Code() const {
    if (currentIndex() < 0) return {};
    return model()->index(currentIndex(), 0).data().toString().toStdString();
}

void TwoColumnCombo::SelectCode(const std::string& code) {
    const QString wanted = QString::fromStdString(code);
    for (int row = 0; row < model()->rowCount(); ++row) {
        if (!code.empty() && model()->index(row, 0).data().toString() == wanted) {
            setCurrentIndex(row);
            return;
        }
    }
    setCurrentIndex(-1);
}

std::optional<std::int16_t> TwoColumnCombo::Number() const {
    if (currentIndex() < 0) return std::nullopt;
    return static_cast<std::int16_t>(model()->index(currentIndex(), 0).data().toInt());
}

void TwoColumnCombo::SelectNumber(const std::optional<std::int16_t>& number) {
    SelectCode(number ? std::to_string(*number) : std::string());
}

}  // namespace kitra
