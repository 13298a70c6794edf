#pragma once
// What the import log list's rules need of the list's grid, whatever window system draws it:
// its data rows (the fixed header row is not one of them), their two cells, and the selection.
#include <string>
#include <vector>

namespace kitra {

class IKitraLogGrid {
public:
    virtual ~IKitraLogGrid() = default;
    virtual void ClearRows() = 0;
    virtual void AddRow(const std::string& restaurantId, const std::string& importDate) = 0;
    virtual int RowCount() const = 0;
    // Column 0: the restaurant; column 1: the import date as shown.
    virtual std::string Cell(int row, int column) const = 0;
    // The selected data rows, in ascending order.
    virtual std::vector<int> SelectedRows() const = 0;
    virtual void RemoveRow(int row) = 0;
};

}  // namespace kitra
