#pragma once
// A combo box that drops down a two-column list (code and description), with the columns'
// widths given in points; a width of 0 hides that column. The box itself shows the first
// visible column; the selected entry's code is its data.
#include <QComboBox>
#include <optional>
#include <string>
#include <vector>

#include "settings/RestaurantEditor.h"

namespace kitra {

class TwoColumnCombo final : public QComboBox {
public:
    TwoColumnCombo(const char* objectName, std::vector<int> columnWidthsPoints, QWidget* parent);

    void SetEntries(const std::vector<ListEntry>& entries);
    // The selected entry's code; empty when none is selected.
    std::string Code() const;
    // Selects the entry of that code; none when the code is not listed (or empty).
    void SelectCode(const std::string& code);
    // For the numeric codes of tenders, taxable groups, warehouses and workstations.
    std::optional<std::int16_t> Number() const;
    void SelectNumber(const std::optional<std::int16_t>& number);

private:
    std::vector<int> widths_;
};

}  // namespace kitra
