#pragma once
// The editor of a grid cell that takes its value from a list of the host's entries: the cell's
// code with a "..." button beside it that drops down the list (code and description, the
// columns' widths in points). Picking an entry (a click, or Enter on it) ends the edit with that
// entry's code; Escape closes the list and leaves the cell as it was.
#include <QWidget>
#include <functional>
#include <vector>

#include "settings/RestaurantEditor.h"

class QFrame;
class QLabel;
class QTableWidget;
class QToolButton;

namespace kitra {

class DropDownListCell final : public QWidget {
public:
    // `picked` runs once an entry is picked, with this editor (its Code() is the entry's).
    DropDownListCell(const std::vector<ListEntry>& entries, const std::vector<int>& columnWidthsPoints,
                     std::function<void(DropDownListCell&)> picked, QWidget* parent);

    // The code the cell holds when the edit starts.
    void SetCode(const QString& code);
    // The picked entry's code; the cell's own until an entry is picked.
    QString Code() const { return code_; }
    bool Picked() const { return picked_; }

    // Opens the list, on the cell's entry when it is listed.
    void DropDown();
    bool DroppedDown() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Pick(int row);

    std::function<void(DropDownListCell&)> onPicked_;
    QString code_;
    bool picked_ = false;
    QLabel* shown_;
    QToolButton* button_;
    QFrame* popup_;
    QTableWidget* list_;
};

}  // namespace kitra
